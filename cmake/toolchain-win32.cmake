set(KESTROLUMEN_TRIPLE i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR i686)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake")
# Excel and Visual Basic keep the stack aligned to four bytes only, GCC's SSE code wants sixteen.
# --kill-at: stdcall exports carry no "@20".
# No cold parts of functions: an exception that is thrown in one, or passes it, ends the program (GCC 12,
# this target alone).
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign -fno-reorder-blocks-and-partition")
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--kill-at")
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,--kill-at")
