# test_children: support/children.h and support/home.h for the suites that link it, and their main.
include_guard(GLOBAL)

if(WIN32)
  set(home windows)
else()
  set(home posix)
endif()
add_library(test_children STATIC support/children.cpp support/home.cpp support/registry_${home}.cpp support/system_${home}.cpp)
target_include_directories(test_children PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(test_children PUBLIC GTest::gmock PRIVATE kestrolumen_options)
