# portable_math on other processors: from musl's source, since its packaged library uses fused operations
# where the processor has them. cmake/setup.sh fetches Debian's source package.
find_path(MUSL_SOURCE src/math/sin.c
  PATHS ${CMAKE_SOURCE_DIR}/build/sources/musl NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  DOC "musl's source (cmake/setup.sh fetches it)")
if(NOT MUSL_SOURCE)
  message(FATAL_ERROR "A portable build on ${NODUSMATH_PROCESSOR} wants musl's source: "
    "cmake/setup.sh fetches it, for a preset; where it is elsewhere, MUSL_SOURCE says so")
endif()

# What mathlibrary.h declares, and what that calls in turn.
set(functions acos acosf asin asinf atan2 atan2f ceil cos cosf exp expf floor fmod fmodf log log10
  log10f logf pow powf sin sincosf sinf tan tanf)
set(helpers atan atanf scalbn __cos __cosdf __math_divzero __math_divzerof __math_invalid
  __math_invalidf __math_oflow __math_oflowf __math_uflow __math_uflowf __math_xflow __math_xflowf
  __rem_pio2 __rem_pio2_large __rem_pio2f __sin __sindf __tan __tandf)
set(tables exp2f exp log logf pow powf)
list(TRANSFORM tables APPEND _data)
set(files ${functions} ${helpers} ${tables})
list(TRANSFORM files PREPEND ${MUSL_SOURCE}/src/math/)
list(TRANSFORM files APPEND .c)

# Its own headers; of the processor they ask for no more than how large a long is.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(like riscv64)
else()
  set(like arm)
endif()
set(headers ${CMAKE_BINARY_DIR}/portable/include)
file(MAKE_DIRECTORY ${headers}/bits)
execute_process(
  COMMAND sed -f ${MUSL_SOURCE}/tools/mkalltypes.sed
          ${MUSL_SOURCE}/arch/${like}/bits/alltypes.h.in ${MUSL_SOURCE}/include/alltypes.h.in
  OUTPUT_FILE ${headers}/bits/alltypes.h
  COMMAND_ERROR_IS_FATAL ANY)

enable_language(C)
add_library(portable_math STATIC EXCLUDE_FROM_ALL ${files})
set_target_properties(portable_math PROPERTIES
  POSITION_INDEPENDENT_CODE ON C_STANDARD 99 C_EXTENSIONS OFF)
target_compile_options(portable_math PRIVATE
  -nostdinc -ffreestanding -ffp-contract=off -fno-math-errno -O2 -w
  -U__FP_FAST_FMA -U__FP_FAST_FMAF  # or logarithms and powers ask for fused operations by name
  $<$<C_COMPILER_ID:GNU>:-fexcess-precision=standard -frounding-math>)
target_include_directories(portable_math PRIVATE
  ${MUSL_SOURCE}/arch/generic ${MUSL_SOURCE}/arch/${like} ${MUSL_SOURCE}/src/internal
  ${MUSL_SOURCE}/src/include ${MUSL_SOURCE}/include ${headers})
# Each under a name of its own, but for what every processor has an exact instruction for.
set(data __exp2f_data __exp_data __log_data __logf_data __pow_log_data __powf_log2_data)
foreach(name IN LISTS functions helpers data)
  target_compile_definitions(portable_math PRIVATE ${name}=portable_${name})
endforeach()
foreach(name fabs fabsf sqrt sqrtf)
  target_compile_definitions(portable_math PRIVATE ${name}=__builtin_${name})
endforeach()
target_compile_definitions(portable_math PRIVATE _XOPEN_SOURCE=700 INTERFACE NODUSMATH_PORTABLE)
