# NODUSMATH_PROCESSOR: x86_64, or another one, on which there is the portable build alone.
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" NODUSMATH_PROCESSOR)
if(EMSCRIPTEN)
  set(NODUSMATH_PROCESSOR WebAssembly)  # emscripten says x86
endif()
if(NODUSMATH_PROCESSOR MATCHES "^(amd64|x86_64)$")
  set(NODUSMATH_PROCESSOR x86_64)
elseif(NOT NODUSMATH_PORTABLE)
  message(STATUS "On ${NODUSMATH_PROCESSOR} the portable build is the only one: NODUSMATH_PORTABLE is on")
  set(NODUSMATH_PORTABLE ON)
endif()
