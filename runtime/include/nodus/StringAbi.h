// The one std::string that host and modules exchange: the GNU library's reference-counted one.
#pragma once

#include <string>

#if !defined(_GLIBCXX_USE_CXX11_ABI)
#error                                                                                             \
    "nodus: strings cross the module boundary as the GNU library's std::string; build with libstdc++"
#elif _GLIBCXX_USE_CXX11_ABI
#error                                                                                             \
    "nodus: build with -D_GLIBCXX_USE_CXX11_ABI=0 (linking the target nodus::compute_runtime sets it)"
#endif

static_assert(sizeof(std::string) == sizeof(void*));
