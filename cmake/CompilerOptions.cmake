# How our own sources are compiled. Callers of the libraries get nothing of it.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  find_program(CCACHE ccache)
  if(CCACHE)
    # The suites' common headers are precompiled, which ccache takes for safe only when told so.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE}")
  endif()
endif()

find_package(Threads REQUIRED)

add_library(kestrolumen_options INTERFACE)
target_compile_definitions(kestrolumen_options INTERFACE UNICODE _UNICODE NOMINMAX STRICT)
target_link_libraries(kestrolumen_options INTERFACE Threads::Threads)
if(MSVC)
  target_compile_options(kestrolumen_options INTERFACE
    /W4 /permissive- /utf-8 /Zc:__cplusplus /Zc:preprocessor $<$<BOOL:${KESTROLUMEN_WERROR}>:/WX>)
else()
  target_compile_options(kestrolumen_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${KESTROLUMEN_WERROR}>:-Werror>
    # Windows' own COM interfaces have public destructors, which GCC holds against each class that implements one.
    $<$<NOT:$<PLATFORM_ID:Windows>>:-Wnon-virtual-dtor>
    # GCC 12 sees an overlap in every "literal" + std::string (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # Two dialects that Visual Studio's compiler and GCC don't share.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wgnu> $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wmicrosoft>)
endif()

# 32-bit x86 code that Excel and Visual Basic call, whoever builds it and with whatever toolchain file: they keep
# the stack aligned to four bytes only, GCC's SSE code wants sixteen. And no cold parts of functions: an
# exception that is thrown in one, or passes it, ends the program (GCC 12, this target alone).
if(MINGW AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(kestrolumen_options INTERFACE
    -msse2 -mfpmath=sse -mstackrealign -fno-reorder-blocks-and-partition)
endif()

# KESTROLUMEN_SANITIZE: a list for -fsanitize, or empty.
if(KESTROLUMEN_SANITIZE)
  add_compile_options(-fsanitize=${KESTROLUMEN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KESTROLUMEN_SANITIZE})
endif()

# What is fuzzed tells the fuzzer which ways it goes.
if(KESTROLUMEN_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
