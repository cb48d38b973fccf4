find_package(Eigen3 REQUIRED NO_MODULE)
kestrolumen_bench(arrays USES automation Eigen3::Eigen)
# Peak memory is counted where it is asked for.
foreach(function IN ITEMS malloc calloc realloc free)
  target_link_options(arrays_bench PRIVATE "-Wl,--wrap=${function}")
endforeach()
