# kestrolumen_version_resource(TARGET DESCRIPTION text [INTERNAL_NAME name]): the version resource of a module
# or program, from one set of facts. On Windows the resource compiler makes it; elsewhere the same block
# stands in the ELF section ".version_resource", where the stand-in's version calls find it.
#
# The number is the project's, for the file and the product; the original file name is what the target builds.
# Texts are ASCII without quotes and backslashes.
function(kestrolumen_version_resource target)
  cmake_parse_arguments(ARG "" "DESCRIPTION;INTERNAL_NAME" "" ${ARGN})
  if(NOT ARG_DESCRIPTION)
    message(FATAL_ERROR "kestrolumen_version_resource(${target}): a DESCRIPTION is wanted")
  endif()
  if(NOT ARG_INTERNAL_NAME)
    set(ARG_INTERNAL_NAME ${target})
  endif()

  set(VERSION_PRODUCT "Kestrolumen")
  set(VERSION_COMPANY "Quillmar")
  set(VERSION_COPYRIGHT "Copyright (c) Quillmar")
  set(VERSION_DESCRIPTION "${ARG_DESCRIPTION}")
  set(VERSION_INTERNAL_NAME "${ARG_INTERNAL_NAME}")
  set(VERSION_FILE_NAME "$<TARGET_FILE_NAME:${target}>")
  string(REPLACE "." "," VERSION_NUMBERS "${PROJECT_VERSION}")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(VERSION_FILE_TYPE 1) # VFT_APP
  else()
    set(VERSION_FILE_TYPE 2) # VFT_DLL
  endif()

  if(WIN32)
    set(language rc)
  else()
    set(language cpp)
  endif()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.${language}")
  configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/VersionResource.${language}.in" "${source}.in" @ONLY)
  file(GENERATE OUTPUT "${source}" INPUT "${source}.in")

  # In a library of its own: what holds for the target's sources would confuse the resource compiler.
  add_library(${target}_version OBJECT "${source}")
  if(NOT WIN32)
    target_link_libraries(${target}_version PRIVATE Kestrolumen::winapi kestrolumen_options)
  endif()
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()
