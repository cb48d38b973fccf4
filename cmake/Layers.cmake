# Layers and their includes. A layer's headers are reached as "layer/header.h", and only by targets that
# link it: each layer has an include root of its own, which holds one link to the layer's folder.

function(kestrolumen_include_root target scope folder)
  set(root "${CMAKE_BINARY_DIR}/include-roots/${folder}")
  file(MAKE_DIRECTORY "${root}")
  if(NOT EXISTS "${root}/${folder}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/${folder}" "${root}/${folder}" SYMBOLIC)
  endif()
  target_include_directories(${target} ${scope} "${root}")
endfunction()

# kestrolumen_layer(NAME [USES layer...]): a static library of all sources in the current folder.
function(kestrolumen_layer name)
  cmake_parse_arguments(ARG "" "" "USES;EXCLUDE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  foreach(excluded IN LISTS ARG_EXCLUDE)
    list(REMOVE_ITEM sources "${CMAKE_CURRENT_SOURCE_DIR}/${excluded}")
  endforeach()
  if(NOT sources)
    add_library(${name} INTERFACE)
    return()
  endif()
  add_library(${name} STATIC ${sources})
  kestrolumen_include_root(${name} PUBLIC ${name})
  target_link_libraries(${name} PUBLIC ${ARG_USES} PRIVATE kestrolumen_options)
endfunction()
