// The C++ library: its functions of one number, and its random engines.
#include "peer.h"

#include "nodus/runtime/CurrentFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <random>

namespace nodus::bench {

namespace {

constexpr char const* kName = "std";

struct FloatInputs {
    std::int32_t seed, distribution;
    float value, range;
};
struct Float4Inputs {
    std::int32_t seed, distribution;
    alignas(16) float value[4];
    float range;
};

template <typename Engine> float drawn(Engine& engine, float value, float range)
{
    return std::uniform_real_distribution<float>(value - range, value + range)(engine);
}

// The next numbers of an engine that lives in the node's workspace.
using Small = std::minstd_rand;
static_assert(sizeof(Small) <= 12 && alignof(Small) <= 16);

void start(void const* in, void* workspace)
{
    ::new (workspace) Small(static_cast<std::uint32_t>(static_cast<FloatInputs const*>(in)->seed));
}

template <typename Engine> void drawFloat(Engine& engine, void const* in, void* out)
{
    auto const& inputs = *static_cast<FloatInputs const*>(in);
    *static_cast<float*>(out) = drawn(engine, inputs.value, inputs.range);
}

template <typename Engine> void drawFloat4(Engine& engine, void const* in, void* out)
{
    auto const& inputs = *static_cast<Float4Inputs const*>(in);
    for (int lane = 0; lane < 4; ++lane)
        static_cast<float*>(out)[lane] = drawn(engine, inputs.value[lane], inputs.range);
}

// Any frame on its own: an engine started from the seed and the frame.
template <typename Engine> Engine atFrame(void const* in)
{
    auto const seed = static_cast<std::uint32_t>(static_cast<FloatInputs const*>(in)->seed);
    auto const frame = static_cast<std::uint32_t>(nodus::runtime::GetCurrentFrame());
    return Engine(seed ^ (frame * 2654435761u));
}

using Draw = void (*)(void const* in, void* workspace, void* out);

Peer random(char const* engine, char const* name, Draw draw)
{
    return {engine, name, reinterpret_cast<void*>(draw), &start, true};
}

}  // namespace

std::vector<Peer> standardPeers()
{
    return {
        peer(kName, "NodusSqrt_Float_Solve", [](float v) { return std::sqrt(v); }),
        peer(kName, "NodusSqrt_Double_Solve", [](double v) { return std::sqrt(v); }),
        peer(kName, "NodusFloor_Float_Solve", [](float v) { return std::floor(v); }),
        peer(kName, "NodusCeil_Float_Solve", [](float v) { return std::ceil(v); }),
        peer(kName, "NodusRound_Float_Solve", [](float v) { return std::nearbyint(v); }),
        peer(kName, "NodusClamp_Float_Solve",
             [](float v, float low, float high) { return std::clamp(v, low, high); }),
        peer(kName, "NodusSin_Float_Solve", [](float v) { return std::sin(v); }),
        peer(kName, "NodusExp2_Float_Solve", [](float v) { return std::exp2(v); }),
        peer(kName, "NodusLog2_Float_Solve", [](float v) { return std::log2(v); }),
        random("std::minstd_rand", "NodusRandomGenerator_Float_Solve distribution=0",
               [](void const* in, void* workspace, void* out) {
                   drawFloat(*std::launder(static_cast<Small*>(workspace)), in, out);
               }),
        random("std::minstd_rand", "NodusRandomGenerator_Float4_Solve distribution=0",
               [](void const* in, void* workspace, void* out) {
                   drawFloat4(*std::launder(static_cast<Small*>(workspace)), in, out);
               }),
        random("std::minstd_rand", "NodusRandomGenerator_Float_Solve distribution=0 jump",
               [](void const* in, void*, void* out) {
                   auto engine = atFrame<Small>(in);
                   drawFloat(engine, in, out);
               }),
        random("std::minstd_rand", "NodusRandomGenerator_Float4_Solve distribution=0 jump",
               [](void const* in, void*, void* out) {
                   auto engine = atFrame<Small>(in);
                   drawFloat4(engine, in, out);
               }),
        random("std::mt19937", "NodusRandomGenerator_Float4_Solve distribution=0 jump",
               [](void const* in, void*, void* out) {
                   auto engine = atFrame<std::mt19937>(in);
                   drawFloat4(engine, in, out);
               }),
    };
}

}  // namespace nodus::bench
