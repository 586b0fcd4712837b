# What is installed where, by components: runtime (the runtime library), module (the kernels and their
# catalogue), devel (headers, CMake packages, pkg-config files), tools (the command and its manual).
# The installed tree finds its parts by relative paths and works wherever it is moved.
include(CMakePackageConfigHelpers)

set(modules_dir ${CMAKE_INSTALL_LIBDIR}/nodus/modules)

install(TARGETS compute_runtime EXPORT compute_runtime-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
install(TARGETS nodusmath EXPORT nodusmath-targets
  LIBRARY DESTINATION ${modules_dir} COMPONENT module
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
install(FILES modules/nodusmath/nodusmath.json DESTINATION ${modules_dir} COMPONENT module)
install(FILES modules/nodusmath/kernels.def
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nodusmath COMPONENT devel)

# find_package() and pkg-config know both libraries by the same names.
file(RELATIVE_PATH pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(package compute_runtime nodusmath)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  install(EXPORT ${package}-targets NAMESPACE nodus:: DESTINATION ${package_dir} COMPONENT devel)
  configure_package_config_file(
    cmake/${package}-config.cmake.in ${CMAKE_BINARY_DIR}/packages/${package}-config.cmake
    INSTALL_DESTINATION ${package_dir} PATH_VARS modules_dir NO_CHECK_REQUIRED_COMPONENTS_MACRO)
  write_basic_package_version_file(
    ${CMAKE_BINARY_DIR}/packages/${package}-config-version.cmake COMPATIBILITY SameMajorVersion)
  configure_file(cmake/${package}.pc.in ${CMAKE_BINARY_DIR}/packages/${package}.pc @ONLY)
  install(FILES
    ${CMAKE_BINARY_DIR}/packages/${package}-config.cmake
    ${CMAKE_BINARY_DIR}/packages/${package}-config-version.cmake
    DESTINATION ${package_dir} COMPONENT devel)
  install(FILES ${CMAKE_BINARY_DIR}/packages/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)
endforeach()
