# portable_math: math functions that are the same code on every processor, which is what a portable
# build links into the module, under names of their own: the process has another C library. They are
# musl's, plain C that is chosen by no property of the processor, and linked statically, so that the
# bits go wherever the module goes.
if(NODUSMATH_PROCESSOR STREQUAL "x86_64")
  include(cmake/portable_math_library.cmake)
else()
  include(cmake/portable_math_source.cmake)
endif()
