find_package(ICU REQUIRED COMPONENTS uc)
find_package(fmt REQUIRED)
kestrolumen_bench(text USES text ICU::uc fmt::fmt)
