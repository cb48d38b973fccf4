find_package(fmt REQUIRED)
kestrolumen_bench(text USES text fmt::fmt)
