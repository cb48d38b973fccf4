find_package(Eigen3 REQUIRED NO_MODULE)
kestrolumen_bench(arrays USES automation Eigen3::Eigen COUNTS_HEAP)
