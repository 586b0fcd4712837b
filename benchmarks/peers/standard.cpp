// The C++ library: its functions of one number, and its random engines.
#include "peer.h"

#include "nodus/runtime/CurrentFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <random>

using namespace nodus::bench;

namespace {

std::vector<Peer> functions()
{
    return {
        peer("Sqrt_Float", [](float v) { return std::sqrt(v); }),
        peer("Sqrt_Double", [](double v) { return std::sqrt(v); }),
        peer("Floor_Float", [](float v) { return std::floor(v); }),
        peer("Ceil_Float", [](float v) { return std::ceil(v); }),
        peer("Round_Float", [](float v) { return std::nearbyint(v); }),
        peer("Clamp_Float",
             [](float v, float low, float high) { return std::clamp(v, low, high); }),
        peer("Sin_Float", [](float v) { return std::sin(v); }),
        peer("Exp2_Float", [](float v) { return std::exp2(v); }),
        peer("Log2_Float", [](float v) { return std::log2(v); }),
    };
}

// The input block of a RandomGenerator, whose value has so many lanes.
template <std::size_t lanes> struct Inputs {
    std::uint32_t seed;
    std::int32_t distribution;
    alignas(lanes * sizeof(float)) float value[lanes];
    float range;
};

template <std::size_t lanes, typename Engine> void draw(void const* in, Engine& engine, void* out)
{
    auto const& [seed, distribution, value, range] = *static_cast<Inputs<lanes> const*>(in);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        std::uniform_real_distribution<float> spread(value[lane] - range, value[lane] + range);
        static_cast<float*>(out)[lane] = spread(engine);
    }
}

using Small = std::minstd_rand;
static_assert(sizeof(Small) <= 12 && alignof(Small) <= 16);

// The next numbers of an engine that lives in the node's workspace.
void start(void const* in, void* workspace)
{
    ::new (workspace) Small(static_cast<Inputs<1> const*>(in)->seed);
}
template <std::size_t lanes> void drawNext(void const* in, void* workspace, void* out)
{
    draw<lanes>(in, *std::launder(static_cast<Small*>(workspace)), out);
}

// Those of any frame on its own: an engine started from the seed and the frame.
template <std::size_t lanes, typename Engine> void drawAny(void const* in, void*, void* out)
{
    auto const frame = static_cast<std::uint32_t>(nodus::runtime::GetCurrentFrame());
    Engine engine(static_cast<Inputs<lanes> const*>(in)->seed ^ (frame * 2654435761u));
    draw<lanes>(in, engine, out);
}

Peer random(char const* node, nodus::host::SolveWithWorkspace function)
{
    return {caseName(node), reinterpret_cast<void*>(function), &start, true};
}

Library const kStandard("std", functions());
Library const kMinstd("std::minstd_rand",
                      {random("RandomGenerator_Float distribution=0", drawNext<1>),
                       random("RandomGenerator_Float4 distribution=0", drawNext<4>),
                       random("RandomGenerator_Float distribution=0 jump", drawAny<1, Small>),
                       random("RandomGenerator_Float4 distribution=0 jump", drawAny<4, Small>)});
Library const kMersenneTwister("std::mt19937", {random("RandomGenerator_Float4 distribution=0 jump",
                                                       drawAny<4, std::mt19937>)});

}  // namespace
