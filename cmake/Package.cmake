# The layers as a CMake package, which others find by
#
#     find_package(Kestrolumen 8.2 COMPONENTS text errors ...)
#
# and link as Kestrolumen::text and so on. It may be moved as a whole to any place. The simulated Excel is a component
# apart, excelhost, which others get by its name alone: it may need libffi.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(kestrolumen_package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Kestrolumen")

# kestrolumen_package(LAYER...): installs these layers, what stands under them, and how to find them.
function(kestrolumen_package)
  set(include "${CMAKE_INSTALL_INCLUDEDIR}/kestrolumen")
  foreach(layer IN LISTS ARGN)
    file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${layer}/*.h")
    install(FILES ${headers} DESTINATION "${include}/${layer}")
    target_include_directories(kestrolumen_${layer} INTERFACE "$<INSTALL_INTERFACE:${include}>")
  endforeach()
  list(TRANSFORM ARGN PREPEND kestrolumen_)
  install(TARGETS ${ARGN} EXPORT KestrolumenTargets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")

  set(folder "${kestrolumen_package_folder}")
  install(EXPORT KestrolumenTargets NAMESPACE Kestrolumen:: DESTINATION "${folder}")
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KestrolumenConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/KestrolumenConfig.cmake" INSTALL_DESTINATION "${folder}")
  # A new minor version may drop what an older one had.
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/KestrolumenConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/KestrolumenConfig.cmake" "${PROJECT_SOURCE_DIR}/cmake/WindowsThreads.cmake"
    "${PROJECT_BINARY_DIR}/KestrolumenConfigVersion.cmake" DESTINATION "${folder}")
endfunction()

# kestrolumen_package_excelhost(): the simulated Excel as a library, its headers as programs include them, and on
# Windows XLCALL32.
function(kestrolumen_package_excelhost)
  set(include "${CMAKE_INSTALL_INCLUDEDIR}/kestrolumen")
  set(source "${PROJECT_SOURCE_DIR}/excelhost")
  foreach(room IN ITEMS main describe automation callback xlcall32)
    list(APPEND inner PATTERN ${room} EXCLUDE)
  endforeach()
  install(DIRECTORY "${source}" DESTINATION "${include}" FILES_MATCHING PATTERN "*.h" ${inner})
  target_include_directories(kestrolumen_excelhost INTERFACE "$<INSTALL_INTERFACE:${include}>")
  set(libraries kestrolumen_excelhost)
  set(folder "${kestrolumen_package_folder}")
  if(WIN32)
    list(APPEND libraries excelhost_xlcall32)
    install(FILES "${source}/callback/callback.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}"
      RENAME kestrolumen-excelhost.def)
  endif()
  install(TARGETS ${libraries} EXPORT KestrolumenExcelhostTargets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(EXPORT KestrolumenExcelhostTargets NAMESPACE Kestrolumen:: DESTINATION "${folder}")
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/FindFFI.cmake" "${PROJECT_SOURCE_DIR}/cmake/KestrolumenExcelhost.cmake"
    DESTINATION "${folder}")
endfunction()
