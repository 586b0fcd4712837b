# What is installed where, by components: runtime (the runtime library), module (the kernels and their
# catalogue), devel (headers, CMake packages, pkg-config files), qvr (the transform library, for whoever
# wants nothing else), tools (the command and its manual), python (the Python package, see there).
# The installed tree finds its parts by relative paths and works wherever it is moved.
include(CMakePackageConfigHelpers)

set(modules_dir ${CMAKE_INSTALL_LIBDIR}/nodus/modules)

install(TARGETS compute_runtime EXPORT compute_runtime-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
install(TARGETS nodusmath nodus_module EXPORT nodusmath-targets
  LIBRARY DESTINATION ${modules_dir} COMPONENT module
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
# What modules of one's own are built with.
install(DIRECTORY cmake/module DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/nodusmath COMPONENT devel)
install(TARGETS nodusmath_rows LIBRARY DESTINATION ${modules_dir} COMPONENT module)
install(TARGETS qvr EXPORT qvr-targets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT qvr
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT qvr)
# Programs that know the transform library's headers as the module's find them.
get_target_property(qvr_headers qvr HEADER_SET)
foreach(header IN LISTS qvr_headers)
  cmake_path(GET header FILENAME header)
  file(WRITE ${CMAKE_BINARY_DIR}/packages/nodusmath/qvr/${header}
    "#pragma once\n#include <qvr/${header}>\n")
endforeach()
install(DIRECTORY ${CMAKE_BINARY_DIR}/packages/nodusmath/qvr
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nodusmath COMPONENT devel)
install(FILES modules/nodusmath/nodusmath.json DESTINATION ${modules_dir} COMPONENT module)
# musl's code is in a portable module, and its licence asks to be passed on with it.
set(musl_notice /usr/share/doc/musl-dev/copyright)
if(MUSL_SOURCE)
  set(musl_notice ${MUSL_SOURCE}/COPYRIGHT)
endif()
if(NODUSMATH_PORTABLE AND EXISTS ${musl_notice})
  install(FILES ${musl_notice} DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright.musl
    COMPONENT module)
endif()
install(FILES ${CMAKE_BINARY_DIR}/modules/nodusmath/kernel_list/kernels.def
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nodusmath COMPONENT devel)

# find_package() and pkg-config know the libraries by the same names.
file(RELATIVE_PATH pc_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(portable_definition "")
if(NODUSMATH_PORTABLE)
  set(portable_definition " -DNODUSMATH_PORTABLE")
endif()
foreach(package compute_runtime nodusmath qvr)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  set(component devel)
  set(namespace nodus::)
  if(package STREQUAL "qvr")
    set(component qvr)
    set(namespace qvr::)
  endif()
  install(EXPORT ${package}-targets NAMESPACE ${namespace}
    DESTINATION ${package_dir} COMPONENT ${component})
  configure_package_config_file(
    cmake/${package}-config.cmake.in ${CMAKE_BINARY_DIR}/packages/${package}-config.cmake
    INSTALL_DESTINATION ${package_dir} PATH_VARS
      modules_dir CMAKE_INSTALL_BINDIR CMAKE_INSTALL_DATADIR CMAKE_INSTALL_LIBEXECDIR
    NO_CHECK_REQUIRED_COMPONENTS_MACRO)
  write_basic_package_version_file(
    ${CMAKE_BINARY_DIR}/packages/${package}-config-version.cmake COMPATIBILITY SameMajorVersion)
  configure_file(cmake/${package}.pc.in ${CMAKE_BINARY_DIR}/packages/${package}.pc @ONLY)
  install(FILES
    ${CMAKE_BINARY_DIR}/packages/${package}-config.cmake
    ${CMAKE_BINARY_DIR}/packages/${package}-config-version.cmake
    DESTINATION ${package_dir} COMPONENT ${component})
  install(FILES ${CMAKE_BINARY_DIR}/packages/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endforeach()

if(NOT TARGET nodus)
  return()
endif()
install(TARGETS nodus RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/nodus/examples COMPONENT tools
  USE_SOURCE_PERMISSIONS)
install(DIRECTORY tools/nodus/new_module DESTINATION ${CMAKE_INSTALL_DATADIR}/nodus COMPONENT tools
  USE_SOURCE_PERMISSIONS)
# The page of another module is written by the same program.
file(RELATIVE_PATH helpers_to_lib ${CMAKE_INSTALL_FULL_LIBEXECDIR}/nodus ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(nodus_reference PROPERTIES INSTALL_RPATH "$ORIGIN/${helpers_to_lib}")
install(TARGETS nodus_reference RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/nodus COMPONENT tools)
install(FILES docs/reference/page.html docs/reference/page.css docs/reference/page.js
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nodus/reference COMPONENT tools)

install(FILES ${CMAKE_BINARY_DIR}/reference/index.html
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference COMPONENT tools)

# The command itself writes its manual, completions and the schema of graph files.
find_program(GZIP gzip)
set(manual_page nodus.1)
set(manual_commands COMMAND nodus manual man > nodus.1)
if(GZIP)
  set(manual_page nodus.1.gz)
  list(APPEND manual_commands COMMAND ${GZIP} -9nf nodus.1)
endif()
set(manual_dir ${CMAKE_BINARY_DIR}/manual)
file(MAKE_DIRECTORY ${manual_dir})
add_custom_command(
  OUTPUT ${manual_dir}/${manual_page} ${manual_dir}/nodus.bash ${manual_dir}/_nodus
    ${manual_dir}/graph.schema.json
  ${manual_commands}
  COMMAND nodus manual bash > nodus.bash
  COMMAND nodus manual zsh > _nodus
  COMMAND nodus manual schema > graph.schema.json
  WORKING_DIRECTORY ${manual_dir}
  DEPENDS nodusmath
  COMMENT "Writing the manual page, the completions and the schema")
add_custom_target(nodus_manual ALL DEPENDS ${manual_dir}/${manual_page})
install(FILES ${manual_dir}/${manual_page}
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES ${manual_dir}/nodus.bash RENAME nodus
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(FILES ${manual_dir}/_nodus
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
install(FILES ${manual_dir}/graph.schema.json
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nodus COMPONENT tools)
