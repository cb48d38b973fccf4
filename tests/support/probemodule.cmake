# probe_module: ProbeModule.dll beside the test programs, under that name in both homes, with a DllMain, a
# few exports and a version resource.
include_guard(GLOBAL)

add_library(probe_module SHARED support/probemodule.cpp)
target_link_libraries(probe_module PRIVATE winapi winapi_dllmain kestrolumen_options)
set_target_properties(probe_module PROPERTIES
  OUTPUT_NAME ProbeModule PREFIX "" SUFFIX ".dll" CXX_VISIBILITY_PRESET default)
kestrolumen_version_resource(probe_module DESCRIPTION "Module for tests" INTERNAL_NAME probe)
