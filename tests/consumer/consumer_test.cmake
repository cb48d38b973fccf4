# Builds and runs the consumer's project outside all trees of ours.
#
#   BUILD      the build tree, whose compilers and options are taken
#   SOURCE     our sources
#   KIND       package: against what the build tree installs, moved from where it was put
#              headers: the same without the program, each header of the package alone
#              subdirectory: with our sources as a part of the project
load_cache("${BUILD}" READ_WITH_PREFIX "" CMAKE_GENERATOR CMAKE_CXX_COMPILER CMAKE_C_COMPILER CMAKE_TOOLCHAIN_FILE
  CMAKE_CROSSCOMPILING_EMULATOR CCACHE)
# Always the same place, so that ccache knows what it has compiled there.
string(MD5 name "${BUILD} ${KIND}")
set(temporary "$ENV{TMPDIR}")
if(NOT temporary)
  set(temporary /tmp)
endif()
set(place "${temporary}/kestrolumen-consumer-${name}")

function(run step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT code EQUAL 0)
    file(REMOVE_RECURSE "${place}")
    message(FATAL_ERROR "${step}: ${code}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${place}")
file(COPY "${SOURCE}/tests/consumer/" DESTINATION "${place}/project")
if(KIND STREQUAL subdirectory)
  set(from "-DKESTROLUMEN_SOURCE=${SOURCE}")
else()
  run("install" "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${place}/first")
  file(RENAME "${place}/first" "${place}/second")
  set(from "-DCMAKE_PREFIX_PATH=${place}/second" "-DCMAKE_FIND_ROOT_PATH=${place}/second")
  foreach(inner IN ITEMS "${BUILD}" "${SOURCE}" "${place}/first")
    execute_process(COMMAND grep -rlF "${inner}/" "${place}/second/lib/cmake" OUTPUT_VARIABLE found)
    if(found)
      message(FATAL_ERROR "the package names ${inner}: ${found}")
    endif()
  endforeach()
endif()
foreach(variable IN ITEMS CMAKE_TOOLCHAIN_FILE CMAKE_CXX_COMPILER CMAKE_C_COMPILER)
  if(${variable})
    list(APPEND from "-D${variable}=${${variable}}")
  endif()
endforeach()
run("configure" "${CMAKE_COMMAND}" -G "${CMAKE_GENERATOR}" -S "${place}/project" -B "${place}/build" ${from}
  "-DCMAKE_CXX_COMPILER_LAUNCHER=${CCACHE}" -Werror=dev)
if(NOT KIND STREQUAL subdirectory)
  run("build of headers" "${CMAKE_COMMAND}" --build "${place}/build" --target headers)
endif()
if(NOT KIND STREQUAL headers)
  run("build" "${CMAKE_COMMAND}" --build "${place}/build" --target consumer)
  if(NOT DEFINED ENV{KESTROLUMEN_WINEPREFIX})
    set(ENV{KESTROLUMEN_WINEPREFIX} "${BUILD}/wineprefix")
  endif()
  file(GLOB program "${place}/build/consumer" "${place}/build/consumer.exe")
  run("run" ${EMULATOR} "${program}")
  string(REPLACE "\r" "" out "${out}")
  if(NOT out STREQUAL "text € 1099511627776\nautomation 1\nerrors 1\nplatform 62EC59E3F1A4F00A\n\
objectmodel 80004003\nexcelvalues 2.5\naddin 1\n")
    message(FATAL_ERROR "the consumer said:\n${out}")
  endif()
endif()
file(REMOVE_RECURSE "${place}")
