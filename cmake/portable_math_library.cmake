# portable_math on x86-64: musl's packaged library, which is compiled for the baseline.
find_file(MUSL_LIBRARY libc.a
  PATHS /usr/lib/x86_64-linux-musl /usr/lib/musl/lib /usr/x86_64-linux-musl/lib NO_DEFAULT_PATH
  DOC "musl's static library (Debian: musl-dev)")
if(NOT MUSL_LIBRARY)
  if(NODUSMATH_PORTABLE)
    message(FATAL_ERROR "NODUSMATH_PORTABLE wants musl's libc.a (Debian: musl-dev); where it is "
      "elsewhere, MUSL_LIBRARY says so")
  endif()
  return()
endif()

# What guards their stacks is the C library's of the process, which is why musl's member for it goes.
set(portable_math ${CMAKE_BINARY_DIR}/portable/libportable_math.a)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/portable)
add_custom_command(
  OUTPUT ${portable_math}
  COMMAND ${CMAKE_OBJCOPY} --prefix-symbols=portable_ ${MUSL_LIBRARY} ${portable_math}.new
  COMMAND ${CMAKE_AR} d ${portable_math}.new __stack_chk_fail.lo
  COMMAND ${CMAKE_OBJCOPY} --redefine-sym portable___stack_chk_fail=__stack_chk_fail
          ${portable_math}.new
  COMMAND ${CMAKE_COMMAND} -E rename ${portable_math}.new ${portable_math}
  DEPENDS ${MUSL_LIBRARY}
  COMMENT "Giving the portable math functions names of their own"
  VERBATIM)
add_custom_target(portable_math_archive DEPENDS ${portable_math})
add_library(portable_math STATIC IMPORTED GLOBAL)
set_target_properties(portable_math PROPERTIES
  IMPORTED_LOCATION ${portable_math}
  INTERFACE_COMPILE_DEFINITIONS NODUSMATH_PORTABLE)
add_dependencies(portable_math portable_math_archive)
