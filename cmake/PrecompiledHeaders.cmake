# What most sources begin with, read once a build tree instead of once a source: more than half of the time that a
# source takes, on Windows two thirds. It hides an include that a source lacks, so builds for others go without; the
# tests build us so as a part of another project.
option(KESTROLUMEN_PRECOMPILE "Precompile the headers that most sources begin with" OFF)

set(KESTROLUMEN_COMMON_HEADERS <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <cstring> <filesystem>
  <fstream> <functional> <map> <memory> <mutex> <optional> <ostream> <span> <sstream> <stdexcept> <string>
  <string_view> <unordered_map> <vector>
  $<$<PLATFORM_ID:Windows>:<windows.h$<ANGLE-R>> $<$<PLATFORM_ID:Windows>:<oleauto.h$<ANGLE-R>>)

if(KESTROLUMEN_PRECOMPILE)
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/precompiled.cpp" CONTENT "")
  add_library(kestrolumen_precompiled OBJECT EXCLUDE_FROM_ALL "${PROJECT_BINARY_DIR}/precompiled.cpp")
  target_link_libraries(kestrolumen_precompiled PRIVATE kestrolumen_options)
  target_precompile_headers(kestrolumen_precompiled PRIVATE ${KESTROLUMEN_COMMON_HEADERS})
endif()

# kestrolumen_precompile(TARGET): a library of ours takes them.
function(kestrolumen_precompile target)
  if(KESTROLUMEN_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM kestrolumen_precompiled)
  endif()
endfunction()
