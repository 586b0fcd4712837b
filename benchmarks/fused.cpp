// What graphs of cheap nodes are held against: the same arithmetic as one loop, as one would write
// it by hand, with the options of the kernels.
#include "fused.h"

#include <utility>

namespace nodus::bench {

namespace {

// Four nodes a round.
template <std::size_t... kRounds>
[[gnu::always_inline]] inline float chain(float first, std::index_sequence<kRounds...>)
{
    float last = first, second = first, third = first;
    auto const take = [&](float value) {
        third = second;
        second = last;
        last = value;
    };
    ((static_cast<void>(kRounds), take(last + second), take(last * 0.5f), take(last - third),
      take(last < -100.0f  ? -100.0f
           : last > 100.0f ? 100.0f
                           : last)),
     ...);
    return last;
}

}  // namespace

#if defined(__clang__) || !defined(__x86_64__)
#define CLONES gnu::flatten
#else
#define CLONES gnu::flatten, gnu::target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")
#endif

[[CLONES]] void fused100(std::int32_t const* frames, float* to, std::size_t rows)
{
    for (std::size_t i = 0; i < rows; ++i)
        to[i] = chain(static_cast<float>(frames[i]), std::make_index_sequence<25>());
}

[[CLONES]] void fused1000(std::int32_t const* frames, float* to, std::size_t rows)
{
    for (std::size_t i = 0; i < rows; ++i)
        to[i] = chain(static_cast<float>(frames[i]), std::make_index_sequence<250>());
}

}  // namespace nodus::bench
