# For programs that link Kestrolumen::excelhost, such as suites of tests.

# kestrolumen_excelhost_xlcall32(TARGET): puts XLCALL32.dll beside the executable, for add-ins that link it instead of
# asking their host for its callback. Does nothing on Linux, where the executable itself has what is in it.
function(kestrolumen_excelhost_xlcall32 target)
  if(TARGET Kestrolumen::xlcall32)
    add_custom_command(TARGET ${target} POST_BUILD COMMAND "${CMAKE_COMMAND}" -E copy_if_different
      "$<TARGET_FILE:Kestrolumen::xlcall32>" "$<TARGET_FILE_DIR:${target}>/XLCALL32.dll" VERBATIM)
  endif()
endfunction()
