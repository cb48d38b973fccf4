# test_allocations: tests/support/allocations.h for the suites that link it.
include_guard(GLOBAL)

add_library(test_allocations STATIC support/allocations.cpp)
target_include_directories(test_allocations PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(test_allocations PRIVATE kestrolumen_options)
foreach(function IN ITEMS malloc calloc realloc free)
  target_link_options(test_allocations INTERFACE "-Wl,--wrap=${function}")
endforeach()
