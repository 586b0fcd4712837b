// The one std::string that host and modules exchange: the GNU library's reference-counted one. In
// WebAssembly they are linked together and use whichever there is.
#pragma once

#include <string>

#ifndef __wasm__
#if !defined(_GLIBCXX_USE_CXX11_ABI)
#error                                                                                             \
    "nodus: strings cross the module boundary as the GNU library's std::string; build with libstdc++"
#elif _GLIBCXX_USE_CXX11_ABI
#error                                                                                             \
    "nodus: build with -D_GLIBCXX_USE_CXX11_ABI=0 (linking the target nodus::compute_runtime sets it)"
#endif

static_assert(sizeof(std::string) == sizeof(void*));
#endif
