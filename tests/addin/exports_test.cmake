# The add-in's file as others see it, by the binary utilities' account: what it exports and what it needs.
set(expected InitializeXlaInformationVB InitializeXlaInformationW NetOutputPrediction
  NetOutputProbabilityOfCategory NetOutputProbabilityOfPrediction UninitializeXlaInformation
  xlAutoAdd xlAutoClose xlAutoFree xlAutoOpen xlAutoRemove)

execute_process(COMMAND "${OBJDUMP}" -p "${FILE}" OUTPUT_VARIABLE headers RESULT_VARIABLE code)
if(code EQUAL 0 AND WINDOWS)
  # Undecorated names, and no export without one.
  string(REGEX MATCH "Ordinal/Name Pointer\\] Table\n.*" symbols "${headers}")
  string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [^\n]*" exports "${symbols}")
  list(TRANSFORM exports REPLACE ".*[] ]([^ ]+)$" "\\1")
  string(REGEX MATCHALL "DLL Name: [^\n]*" needed "${headers}")
  set(system "^DLL Name: (ADVAPI32|KERNEL32|msvcrt|ole32|OLEAUT32|SHELL32|USER32|VERSION)\\.dll$")
elseif(code EQUAL 0)
  execute_process(COMMAND "${NM}" -D --defined-only "${FILE}" OUTPUT_VARIABLE symbols RESULT_VARIABLE code)
  string(REGEX MATCHALL "[^ \n]+\n" exports "${symbols}")
  list(TRANSFORM exports STRIP)
  string(REGEX MATCHALL "NEEDED +[^\n]*" needed "${headers}")
  # libtsan is what the thread sanitizer adds.
  set(system "^NEEDED +(libc|libm|libgcc_s|libstdc\\+\\+|libtsan|ld-linux.*)\\.so")
endif()
if(NOT code EQUAL 0)
  message(FATAL_ERROR "${FILE} can't be read")
endif()

list(SORT exports)
if(NOT exports STREQUAL expected)
  message(FATAL_ERROR "exported: ${exports}")
endif()
if(needed STREQUAL "")
  message(FATAL_ERROR "no library is needed: ${headers}")
endif()
foreach(library IN LISTS needed)
  if(NOT library MATCHES "${system}")
    message(FATAL_ERROR "needed: ${library}")
  endif()
endforeach()
