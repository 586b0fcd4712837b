# What the tests run or build with, beside the compiler. What is missing leaves out the tests that want
# it, or ends the configuration where everything is required.
set(required "")
if(NODUSMATH_REQUIRE_ALL)
  set(required REQUIRED)
endif()

find_path(GOOGLETEST_SOURCE CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH ${required}
  DOC "The packaged source of GoogleTest")
if(CMAKE_CROSSCOMPILING)
  find_library(GMP gmp)
else()
  find_library(GMP gmp ${required})
endif()
find_path(CALLGRIND_INCLUDE valgrind/callgrind.h ${required})
foreach(program dot mpirun parallel python3 qemu-x86_64 valgrind)
  string(TOUPPER ${program} variable)
  string(REPLACE "-" "_" variable ${variable})
  find_program(${variable} ${program} ${required})
endforeach()

# The scripts under tests/package and the browser test look for these by themselves.
if(NODUSMATH_PACKAGE_TESTS)
  foreach(program chromium chromedriver doxygen dpkg-shlibdeps file gzip lintian man pkg-config zsh)
    find_program(${program}_PROGRAM ${program} REQUIRED)
  endforeach()
endif()
