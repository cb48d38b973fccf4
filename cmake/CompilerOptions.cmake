# One set of options for everything that is ours: C++20, every warning an error.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE}")
endif()

find_package(Threads REQUIRED)

add_library(kestrolumen_options INTERFACE)
target_compile_options(kestrolumen_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Windows' own COM interfaces have public destructors, which GCC holds against each class that implements one.
  $<$<NOT:$<PLATFORM_ID:Windows>>:-Wnon-virtual-dtor>
  # GCC 12 sees an overlap in every "literal" + std::string (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_compile_definitions(kestrolumen_options INTERFACE UNICODE _UNICODE NOMINMAX STRICT)
target_link_libraries(kestrolumen_options INTERFACE Threads::Threads)

# KESTROLUMEN_SANITIZE: a list for -fsanitize, or empty.
if(KESTROLUMEN_SANITIZE)
  add_compile_options(-fsanitize=${KESTROLUMEN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KESTROLUMEN_SANITIZE})
endif()

# What is fuzzed tells the fuzzer which ways it goes.
if(KESTROLUMEN_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
