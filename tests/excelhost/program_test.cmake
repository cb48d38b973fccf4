# Starts the program on the example's sheet, and on what isn't there.
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${EXAMPLE}/sheet.csv" --trace
  OUTPUT_FILE "${SCRATCH}/excelhost_program.csv" ERROR_VARIABLE trace RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "exit code ${code}: ${trace}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${SCRATCH}/excelhost_program.csv"
  "${EXAMPLE}/calculated.csv" RESULT_VARIABLE different)
if(different)
  message(FATAL_ERROR "${SCRATCH}/excelhost_program.csv isn't ${EXAMPLE}/calculated.csv")
endif()
if(NOT trace MATCHES "xlUDF.*account: lent 4200, lent and altered 0; .*, leaked 0, freed twice 0, foreign 0")
  message(FATAL_ERROR "the trace lacks its calls or its account")
endif()

execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${SCRATCH}/none.csv"
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 1 OR NOT err MATCHES "none.csv: there is no such file" OR NOT out STREQUAL "")
  message(FATAL_ERROR "exit code ${code}, output '${out}', message '${err}'")
endif()
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" RESULT_VARIABLE code ERROR_VARIABLE err)
if(NOT code EQUAL 2)
  message(FATAL_ERROR "exit code ${code} for no command")
endif()

# The page of facts: three sections, each line a label and, from the 25th column on, its value.
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" describe OUTPUT_VARIABLE page ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "exit code ${code}: ${err}")
endif()
string(REPLACE "\n" ";" lines "${page}")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^(Machine|Folders|Module)?$" AND NOT line MATCHES "^  ......................[^ ].*$")
    message(FATAL_ERROR "no label and value: '${line}'")
  endif()
endforeach()
foreach(fact IN ITEMS "Machine\n  operating system      Windows" "cores                 [1-9]" "\nFolders\n"
                      "temporary             [A-Z]:" "\nModule\n" "CRC-64                [0-9A-F]+\n"
                      "file version          8\\.2\\.1\\.4\n")
  if(NOT page MATCHES "${fact}")
    message(FATAL_ERROR "the page lacks '${fact}':\n${page}")
  endif()
endforeach()
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" describe --addin "${SCRATCH}/none.xll"
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 1 OR NOT err MATCHES "none.xll: can't be read" OR NOT out STREQUAL "")
  message(FATAL_ERROR "exit code ${code}, output '${out}', message '${err}'")
endif()

# A device that takes nothing: no command may end well.
if(EXISTS "/dev/full" AND NOT EMULATOR)
  foreach(command IN ITEMS "run;${EXAMPLE}/sheet.csv" "describe" "--help")
    execute_process(COMMAND "${PROGRAM}" ${command} OUTPUT_FILE "/dev/full" ERROR_VARIABLE err RESULT_VARIABLE code)
    if(NOT code EQUAL 1 OR NOT err MATCHES "the output can't be written")
      message(FATAL_ERROR "'${command}' to a full disk: exit code ${code}, message '${err}'")
    endif()
  endforeach()
  execute_process(COMMAND "${PROGRAM}" run "${EXAMPLE}/sheet.csv" --trace
    OUTPUT_QUIET ERROR_FILE "/dev/full" RESULT_VARIABLE code)
  if(NOT code EQUAL 1)
    message(FATAL_ERROR "a trace to a full disk: exit code ${code}")
  endif()
endif()

# An exception of the library's own is told with its key, code and arguments.
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${EXAMPLE}/sheet.csv" "--addin=${VEX_ADDIN}"
  OUTPUT_QUIET ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 1 OR NOT err MATCHES
   "excelhost_vexaddin.xll' .*handshake: VexKernelObjectError, code 2619, in WinMutex::WinMutex[:,] '?5'?, '?Marker'?")
  message(FATAL_ERROR "exit code ${code}, message '${err}'")
endif()

# An add-in that ends the program is named, with an exit code of its own.
foreach(ending IN ITEMS "exit;exit was called" "abort;abort was called" "crash;a crash")
  list(GET ending 0 habit)
  list(GET ending 1 message)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env "FAULTY_OPENING=${habit}" ${EMULATOR} "${PROGRAM}" run
    "${EXAMPLE}/sheet.csv" --addin "${FAULTY}" OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
  if(NOT code EQUAL 4 OR NOT err MATCHES "${message}.* in xlAutoOpen of faulty.xll; its last calls .* xlGetName xlfRegister xlFree")
    message(FATAL_ERROR "${habit}: exit code ${code}, message '${err}'")
  endif()
endforeach()

# A call that ends the program from one of several threads, on a stack that has overflowed as well.
foreach(ending IN ITEMS Crashes Overflows)
  string(REPEAT "=${ending}(1)\n" 40 formulas)
  file(WRITE "${SCRATCH}/threads.csv" "${formulas}")
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${SCRATCH}/threads.csv" --addin "${THREADS}" --threads 4
    OUTPUT_QUIET ERROR_VARIABLE err RESULT_VARIABLE code)
  if(NOT code EQUAL 4 OR NOT err MATCHES "^excelhost: a crash [^\n]* in '${ending}' of threads.xll; its last calls [^\n]*\n$")
    message(FATAL_ERROR "${ending}: exit code ${code}, message '${err}'")
  endif()
endforeach()

# So is one that doesn't come to an end, when its time is up; on another thread too, for which the main one waits.
string(REPEAT "=HangsElsewhere(1)\n" 40 formulas)
file(WRITE "${SCRATCH}/threads.csv" "${formulas}")
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${SCRATCH}/threads.csv" --addin "${THREADS}" --threads 2 --timeout 1
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 5 OR NOT err MATCHES "the time is up in 'HangsElsewhere' of threads.xll; its last calls ")
  message(FATAL_ERROR "a hang elsewhere: exit code ${code}, message '${err}'")
endif()
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" eval "${FAULTY}" "Hangs()" --timeout 1
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 5 OR NOT err MATCHES "the time is up in 'Hangs' of faulty.xll; its last calls .* xlGetName\n")
  message(FATAL_ERROR "a hang: exit code ${code}, message '${err}'")
endif()

# One that links Excel's functions by name: version 0x0C00, and 32 from the old family.
file(WRITE "${SCRATCH}/linked.csv" "=Version()\n")
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${SCRATCH}/linked.csv" --addin "${LINKED}"
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
if(NOT code EQUAL 0 OR NOT out STREQUAL "3104\n")
  message(FATAL_ERROR "exit code ${code}, output '${out}', message '${err}'")
endif()

# Its life as the add-in manager and a user who cancels lead it; modules that can't be loaded.
file(WRITE "${SCRATCH}/text.xll" "no module")
foreach(row IN ITEMS
    "0|${LINKED}|--manage|it is \"Linked by name\".*xlAutoAdd\n[^-]*xlcNew.*calculated.*xlAutoRemove\n[^-]*xlcDeleteName.*xlAutoClose\n[^-]*xlcClose"
    "0|${LINKED}|--cancel-close|cancels: xlAutoClose\n[^-]*xlcClose.*calculated.*closes the add-in: xlAutoClose\n[^-]*xlcClose"
    "1|${SCRATCH}/text.xll|--trace|text.xll' can't be loaded: it is no module"
    "1|${SCRATCH}/none.xll|--trace|there is no add-in '.*none.xll'")
  string(REPLACE "|" ";" row "${row}")
  list(POP_FRONT row expected addin option)
  list(JOIN row "|" message)
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" run "${SCRATCH}/linked.csv" --addin "${addin}" --trace ${option}
    OUTPUT_QUIET ERROR_VARIABLE err RESULT_VARIABLE code)
  if(NOT code EQUAL expected OR NOT err MATCHES "${message}")
    message(FATAL_ERROR "${option}: exit code ${code}, message '${err}'")
  endif()
endforeach()

# What inspect writes is JSON, with whatever texts an add-in registers.
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" inspect "${LINKED}" --json OUTPUT_VARIABLE json RESULT_VARIABLE code)
foreach(row IN ITEMS "functions,1,help|Twice a \"number\"\t<&>" "functions,1,category|Say \"2\""
    "functions,1,arguments,0,help|the \\ one" "functions,1,arguments,0,words|number (B)" "functions,1,threadSafe|ON"
    "commands,0,name|RING" "commands,0,shortcut|R" "calls,0,function|xlfRegister" "calls,0,count|3" "account,leaked|0")
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 path)
  list(GET row 1 expected)
  string(REPLACE "," ";" path "${path}")
  string(JSON found ERROR_VARIABLE fault GET "${json}" ${path})
  if(NOT code EQUAL 0 OR NOT found STREQUAL expected)
    message(FATAL_ERROR "${path} is '${found}' instead of '${expected}' (${fault}): ${json}")
  endif()
endforeach()

# The report of cases is XML, also of an add-in that ends the program.
file(WRITE "${SCRATCH}/cases.csv" "formula,expected,tolerance,name\nTWICE(2),4,,\"<\"\"&'>\"\nTWICE(2),5\n")
foreach(row IN ITEMS "1;LINKED;none;tests=3 failures=1 errors=0" "4;FAULTY;crash;tests=3 failures=0 errors=2")
  list(GET row 0 expected)
  list(GET row 1 addin)
  list(GET row 2 habit)
  list(GET row 3 counts)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env "FAULTY_OPENING=${habit}" ${EMULATOR} "${PROGRAM}" test "${${addin}}"
    "${SCRATCH}/cases.csv" --junit "${SCRATCH}/report.xml" OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code)
  if(NOT code EQUAL expected)
    message(FATAL_ERROR "test: exit code ${code}, output '${out}', message '${err}'")
  endif()
  if(PYTHON3)
    execute_process(COMMAND "${PYTHON3}" -c "
import sys, xml.etree.ElementTree as tree
root = tree.parse(sys.argv[1]).getroot()
suite = root.find('testsuite')
cases = suite.findall('testcase')
print(root.tag, *(key + '=' + suite.get(key) for key in ('tests', 'failures', 'errors')), len(cases), cases[0].get('name'))"
      "${SCRATCH}/report.xml" OUTPUT_VARIABLE found ERROR_VARIABLE fault)
    if(NOT found STREQUAL "testsuites ${counts} 3 <\"&'>\n")
      message(FATAL_ERROR "the report is '${found}' instead of '${counts}': ${fault}")
    endif()
  endif()
endforeach()
