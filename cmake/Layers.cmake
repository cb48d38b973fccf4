# Layers and their includes. A layer's headers are reached as "layer/header.h", and only by targets that
# link it: each layer has an include root of its own, which holds one link to the layer's folder. A machine
# that makes no links (Windows, where they are a privilege) has the source folder for all roots.

function(kestrolumen_include_root target scope folder)
  set(root "${PROJECT_BINARY_DIR}/include-roots/${folder}")
  file(MAKE_DIRECTORY "${root}")
  if(NOT EXISTS "${root}/${folder}")
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${root}/${folder}" RESULT refused SYMBOLIC)
    if(refused)
      set(root "${PROJECT_SOURCE_DIR}")
    endif()
  endif()
  target_include_directories(${target} ${scope} "$<BUILD_INTERFACE:${root}>")
endfunction()

# kestrolumen_layer(NAME [USES layer...]): a static library of all sources in the current folder. Its target is
# kestrolumen_NAME, which others know as Kestrolumen::NAME, here as well as from the package.
function(kestrolumen_layer name)
  cmake_parse_arguments(ARG "" "" "USES;EXCLUDE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  foreach(excluded IN LISTS ARG_EXCLUDE)
    list(REMOVE_ITEM sources "${CMAKE_CURRENT_SOURCE_DIR}/${excluded}")
  endforeach()
  set(target kestrolumen_${name})
  add_library(${target} STATIC ${sources})
  kestrolumen_alias(${target} ${name})
  kestrolumen_include_root(${target} PUBLIC ${name})
  target_compile_features(${target} PUBLIC cxx_std_20)
  list(TRANSFORM ARG_USES PREPEND Kestrolumen::)
  target_link_libraries(${target} PUBLIC ${ARG_USES} PRIVATE $<BUILD_INTERFACE:kestrolumen_options>)
  kestrolumen_precompile(${target})
endfunction()

# kestrolumen_alias(TARGET NAME): the target is Kestrolumen::NAME, from the package too; and NAME alone within
# our own build, where no other project's names can be meant.
function(kestrolumen_alias target name)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  add_library(Kestrolumen::${name} ALIAS ${target})
  if(PROJECT_IS_TOP_LEVEL)
    add_library(${name} ALIAS ${target})
  endif()
endfunction()
