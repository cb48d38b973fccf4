# test_allocations: tests/support/allocations.h for the suites that link it.
include_guard(GLOBAL)

add_library(test_allocations STATIC support/allocations.cpp)
target_include_directories(test_allocations PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(test_allocations PRIVATE winapi kestrolumen_options)
foreach(function IN ITEMS malloc calloc realloc free)
  target_link_options(test_allocations INTERFACE "-Wl,--wrap=${function}")
endforeach()
# The runtime of ThreadSanitizer brings operators new and delete of its own, which count: the tests see
# malloc and its kin alone.
if("${KESTROLUMEN_SANITIZE}" MATCHES "thread")
  target_link_options(test_allocations INTERFACE "-Wl,--allow-multiple-definition")
endif()
