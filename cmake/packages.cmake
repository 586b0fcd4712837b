# The archive and the Debian packages that `cpack` makes of the installed components.
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_VENDOR "nodusmath authors")
set(CPACK_PACKAGE_CONTACT "nodusmath authors <maintainers@nodusmath.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL runtime module devel qvr)
if(TARGET nodus)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET nodusmath_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# debian_package(component package section dependencies... DESCRIPTION first-line text)
function(debian_package component package section)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "DEPENDS;DESCRIPTION")
  list(JOIN arg_DEPENDS " (= ${PROJECT_VERSION}), " depends)
  if(depends)
    string(APPEND depends " (= ${PROJECT_VERSION})")
  endif()
  list(JOIN arg_DESCRIPTION "\n" description)
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${name}_DESCRIPTION "${description}" PARENT_SCOPE)
endfunction()

debian_package(runtime libcompute-runtime libs
  DESCRIPTION
    "runtime library shared by nodus modules and hosts"
    "Registration of node kernels, the frame that is being evaluated, the services"
    "that a host lends to kernels, and the string type that both sides exchange.")
debian_package(module libnodusmath libs
  DEPENDS libcompute-runtime
  DESCRIPTION
    "math node kernels for nodus hosts"
    "A loadable module of math node kernels: arithmetic, functions, comparisons,"
    "vectors, rotations, transforms, seeded random values, gradient noise, logging;"
    "with the catalogue that describes every node to an editor or a script.")
debian_package(devel libnodusmath-dev libdevel
  DEPENDS libcompute-runtime libnodusmath libqvr-dev
  DESCRIPTION
    "math node kernels for nodus hosts - development files"
    "Headers, CMake packages and pkg-config files to build a host of the module or"
    "a module of one's own.")
debian_package(qvr libqvr-dev libdevel
  DESCRIPTION
    "rotations, real roots and eigenvalues - development files"
    "A small library for animation: quaternions, angles in thirteen orders, real"
    "roots of polynomials up to the fourth degree, eigenvalues and eigenvectors of"
    "symmetric 3x3 matrices; with the same bits on every machine.")
debian_package(tools nodus-tools utils
  DEPENDS libcompute-runtime libnodusmath
  DESCRIPTION
    "command line for node graphs"
    "The command nodus lists, describes and calls node kernels and evaluates graph"
    "files over frames; with its manual page, shell completion and sample graphs.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "graphviz, librsvg2-bin")  # draw for nodus show and plot
if(TARGET nodus)
  set(CPACK_DEBIAN_DEVEL_PACKAGE_RECOMMENDS nodus-tools)  # begins and tests modules of one's own
endif()
if(TARGET nodusmath_python)
  debian_package(python python3-nodusmath python
    DEPENDS libcompute-runtime libnodusmath
    DESCRIPTION
      "math node kernels and graphs over NumPy arrays"
      "The package nodusmath: every kernel as a function that broadcasts like NumPy's,"
      "graph files over data frames, frames and images; with type stubs.")
  # An extension is for one version of Python and for one binary interface of NumPy.
  math(EXPR next "${Python_VERSION_MINOR} + 1")
  string(APPEND CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    ", python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}), python3 (<< ${Python_VERSION_MAJOR}.${next})"
    ", python3-numpy (>= 1:1.24), python3-numpy-abi9")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-pandas, graphviz")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-tqdm, python3-dask")
endif()

# Each Debian package carries a copyright statement and a changelog of its own.
configure_file(cmake/debian_documents.cmake.in ${CMAKE_BINARY_DIR}/packages/debian_documents.cmake
  @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/packages/debian_documents.cmake)
file(WRITE ${CMAKE_BINARY_DIR}/packages/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/packages/triggers)

include(CPack)
