# kestrolumen_link_with_windows_threads(): DLLs of the calling folder are linked by the flavour of MinGW's compiler
# whose run-time libraries stand on Windows' own threads, with the same objects. The other flavour's libraries,
# which programs take for std::thread, leave handles, an index of thread-local storage and memory behind each
# time a DLL is unloaded, need a free index to be loaded, and end the process after a thousand loads. A compiler
# without flavours links as it is.
macro(kestrolumen_link_with_windows_threads)
  if(WIN32 AND CMAKE_CXX_COMPILER MATCHES "-posix$")
    string(REGEX REPLACE "-posix$" "-win32" KESTROLUMEN_DLL_LINKER "${CMAKE_CXX_COMPILER}")
    if(EXISTS "${KESTROLUMEN_DLL_LINKER}")
      string(REPLACE "<CMAKE_CXX_COMPILER>" "${KESTROLUMEN_DLL_LINKER}"
        CMAKE_CXX_CREATE_SHARED_LIBRARY "${CMAKE_CXX_CREATE_SHARED_LIBRARY}")
    endif()
  endif()
endmacro()
