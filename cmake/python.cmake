# What the Python package needs. What is missing ends the configuration where everything is required, and
# else leaves the package out: who wants the command alone needs no Python.
if(NOT NODUSMATH_PYTHON OR NOT TARGET nodus_host)
  return()
endif()
set(wanted QUIET)
if(NODUSMATH_REQUIRE_ALL AND BUILD_TESTING)
  set(wanted REQUIRED)
endif()

# Debian's interpreter has Debian's NumPy and pybind11; one that stands before it in the path has not.
find_program(Python_EXECUTABLE python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT Python_EXECUTABLE)
  unset(Python_EXECUTABLE CACHE)
endif()
find_package(Python 3.11 ${wanted} COMPONENTS Interpreter Development.Module NumPy)
find_package(pybind11 2.10 ${wanted})
set(NODUSMATH_PYTHON_DIR lib/python3/dist-packages CACHE STRING
  "Where the Python package is installed, below the prefix")
if(Python_FOUND AND pybind11_FOUND)
  add_subdirectory(python)
else()
  message(STATUS "Python, NumPy or pybind11 is missing: building without the Python package")
endif()
