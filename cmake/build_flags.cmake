# nodus_build: what every target of the project is compiled with.
add_library(nodus_build INTERFACE)

# Results are the same bits at every level and with every compiler: no contraction, no reassociation.
target_compile_options(nodus_build INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
  $<$<BOOL:${NODUSMATH_WERROR}>:-Werror>)

# Where addresses have 32 bits: 64-bit counts of what is in memory become sizes, 32-bit ones distances.
if(EMSCRIPTEN)
  target_compile_options(nodus_build INTERFACE -Wno-shorten-64-to-32 -Wno-sign-conversion -Wno-c++11-narrowing)
endif()

# GNU unique symbols would keep a library from ever being unloaded.
target_compile_options(nodus_build INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)

if(NODUSMATH_SANITIZE)
  # Without vptr: the services that a host lends are objects of its own classes.
  add_compile_options(-fsanitize=${NODUSMATH_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${NODUSMATH_SANITIZE})
endif()
