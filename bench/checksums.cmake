find_package(ZLIB REQUIRED)
find_package(LibLZMA REQUIRED)
kestrolumen_bench(checksums USES excelvalues ZLIB::ZLIB LibLZMA::LibLZMA)
