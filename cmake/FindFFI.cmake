# libffi, which the simulated Excel (excelhost) calls functions through on 64-bit Linux: FFI::ffi.
find_path(FFI_INCLUDE_DIR ffi.h)
find_library(FFI_LIBRARY ffi)
mark_as_advanced(FFI_INCLUDE_DIR FFI_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FFI REQUIRED_VARS FFI_LIBRARY FFI_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "on Debian: libffi-dev")

if(FFI_FOUND AND NOT TARGET FFI::ffi)
  add_library(FFI::ffi UNKNOWN IMPORTED)
  set_target_properties(FFI::ffi PROPERTIES IMPORTED_LOCATION "${FFI_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${FFI_INCLUDE_DIR}")
endif()
