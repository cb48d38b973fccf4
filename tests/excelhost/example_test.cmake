# Runs the scripts of examples/iris and compares what they write with what is kept.
function(reproduces script kept)
  get_filename_component(name "${kept}" NAME)
  execute_process(COMMAND "${PYTHON3}" "${SOURCE}/examples/iris/${script}" "${SOURCE}/examples/iris/iris.csv"
    OUTPUT_FILE "${SCRATCH}/${name}" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${SCRATCH}/${name}" "${SOURCE}/${kept}"
    RESULT_VARIABLE different)
  if(different)
    message(FATAL_ERROR "${kept} isn't what ${script} writes")
  endif()
endfunction()

reproduces(train.py excelhost/irisnetwork.inc)
reproduces(make_sheet.py examples/iris/sheet.csv)
