# The layers as a CMake package, which others find by
#
#     find_package(Kestrolumen 8.2 COMPONENTS text errors ...)
#
# and link as Kestrolumen::text and so on. It may be moved as a whole to any place.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

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

  set(folder "${CMAKE_INSTALL_LIBDIR}/cmake/Kestrolumen")
  install(EXPORT KestrolumenTargets NAMESPACE Kestrolumen:: DESTINATION "${folder}")
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/KestrolumenConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/KestrolumenConfig.cmake" INSTALL_DESTINATION "${folder}")
  # A new minor version may drop what an older one had.
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/KestrolumenConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/KestrolumenConfig.cmake"
    "${PROJECT_BINARY_DIR}/KestrolumenConfigVersion.cmake" DESTINATION "${folder}")
endfunction()
