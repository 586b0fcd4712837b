// What graphs of cheap nodes are held against: the same arithmetic as one loop, as one would write
// it by hand, with the options of the kernels.
#include "fused.h"

#include <utility>

namespace nodus::bench {

namespace {

template <std::size_t kNode> float next(float last, float second, float third)
{
    if constexpr (kNode % 4 == 0)
        return last + second;
    else if constexpr (kNode % 4 == 1)
        return last * 0.5f;
    else if constexpr (kNode % 4 == 2)
        return last - third;
    else
        return last < -100.0f ? -100.0f : last > 100.0f ? 100.0f : last;
}

template <std::size_t... kNodes>
[[gnu::always_inline]] inline float chain(float first, std::index_sequence<kNodes...>)
{
    float last = first, second = first, third = first;
    (
        [&] {
            float const value = next<kNodes>(last, second, third);
            third = second;
            second = last;
            last = value;
        }(),
        ...);
    return last;
}

}  // namespace

#define CLONES gnu::flatten, gnu::target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")

[[CLONES]] void fused100(std::int32_t const* frames, float* to, std::size_t rows)
{
    for (std::size_t i = 0; i < rows; ++i)
        to[i] = chain(static_cast<float>(frames[i]), std::make_index_sequence<100>());
}

[[CLONES]] void fused1000(std::int32_t const* frames, float* to, std::size_t rows)
{
    for (std::size_t i = 0; i < rows; ++i)
        to[i] = chain(static_cast<float>(frames[i]), std::make_index_sequence<1000>());
}

}  // namespace nodus::bench
