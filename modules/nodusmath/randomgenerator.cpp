// RandomGenerator: a random value for each frame, within `value` plus and minus `range`, uniform or
// normal. The value depends on the seed, the inputs and the frame alone, whatever was evaluated
// before.
#include "randomgenerator.h"

#include "kernels.h"
#include "mathlibrary.h"
#include "ports.h"
#include "qvr/quaternion.h"
#include "qvr/vec4.h"
#include "randomsequence.h"
#include "sequence_powers.h"

#include "nodus/runtime/CurrentFrame.h"

#include <cmath>
#include <limits>
#include <type_traits>

using namespace nodusmath;
using namespace nodusmath::sequence;
using namespace qvr;
using Workspace = binary::Math::RandomGenerator_Workspace;

CRandomNumberSequence::CRandomNumberSequence(int seed) noexcept
    : m_nState(power(static_cast<UInt32>(seed)))
{
}

int CRandomNumberSequence::operator[](int n) const noexcept
{
    return valueOf(m_nState * power(static_cast<UInt32>(n)));
}

int CRandomNumberSequence::Advance(int value, int d) noexcept
{
    // A place away from nowhere is the value itself, also if it is none of the sequence's numbers.
    return d == 0 ? value : valueOf(stateOf(value) * power(static_cast<UInt32>(d)));
}

namespace {

// The state at an index of a node's sequence, from the node's seed. Neighbouring seeds would be
// neighbouring places of one cycle: a random number in between spreads them.
QVR_INLINE State stateFromSeed(Int32 seed, UInt32 index) noexcept
{
    constexpr State kSeedState = power(1911660);
    constexpr UInt32 kSeedOffset = 12345;
    static_assert(kSeedState == 3617209041u);
    // Complete before the first thread asks: its state is known to the compiler.
    static constexpr auto m_sGlobalRNSForSeed = CRandomNumberSequence::ofState(kSeedState);

    UInt32 const start = static_cast<UInt32>(m_sGlobalRNSForSeed[seed]) + kSeedOffset;
    return power(start + index);
}

// How many numbers of its sequence a node of each type draws per frame.
constexpr Int32 kUniform = 0, kNormal = 1;
struct PerFrame {
    int uniform, normal;
};
template <typename T> inline constexpr PerFrame kPerFrame = {1, 2};
template <> inline constexpr PerFrame kPerFrame<Float4> = {4, 8};
template <> inline constexpr PerFrame kPerFrame<Color> = {3, 6};
template <> inline constexpr PerFrame kPerFrame<Quaternion> = {2, 3};

// Draws the n numbers of the current frame. Ports are passed by reference all the way, so that none
// is held in a register while the host is asked for the frame. Frames and indices wrap around.
QVR_INLINE void NodusRandomGenerator_BaseSolve(int n, Int32 const& seed, Workspace& workspace,
                                               Int32* r) noexcept
{
    auto const count = static_cast<UInt32>(n);
    UInt32 const first = static_cast<UInt32>(nodus::runtime::GetCurrentFrame()) * count;
    UInt32 const step = first - static_cast<UInt32>(workspace.m_nLastIndex) + kReach;

    State state;
    if (seed == workspace.m_nSeed && step <= 2 * kReach) {
        state = stateOf(workspace.m_nLastValue) * kShortSteps.by[step];
        // The same place again keeps the number, even one that is none of the sequence's: a host
        // may have left the workspace unfilled.
        r[0] = step == kReach ? workspace.m_nLastValue : valueOf(state);
    } else {
        workspace.m_nSeed = seed;
        state = stateFromSeed(seed, first);
        r[0] = valueOf(state);
    }
    for (int j = 1; j < n; ++j)
        r[j] = valueOf(state *= kMultiplier);
    workspace.m_nLastIndex = static_cast<Int32>(first + count - 1);
    workspace.m_nLastValue = r[n - 1];
}

// Leaves the workspace as a Solve at the same frame would, so that the first one steps already.
QVR_INLINE void startAt(int n, Int32 const& seed, Workspace& workspace) noexcept
{
    auto const count = static_cast<UInt32>(n);
    UInt32 const last = static_cast<UInt32>(nodus::runtime::GetCurrentFrame()) * count + count - 1;
    workspace.m_nSeed = seed;
    workspace.m_nLastIndex = static_cast<Int32>(last);
    workspace.m_nLastValue = valueOf(stateFromSeed(seed, last));
}

template <typename T>
void start(Int32 const& seed, Int32 const& distribution, T const&, Float const&,
           Workspace& workspace) noexcept
{
    startAt(distribution == kNormal ? kPerFrame<T>.normal : kPerFrame<T>.uniform, seed, workspace);
}

void startBool(Int32 const& seed, Workspace& workspace) noexcept { startAt(1, seed, workspace); }

// From 0 to 1, both included: the largest numbers round up to 2^30.
constexpr float kUnit = 0x1p-30f;
inline constexpr _simd_splat<0x30800000u> kUnitInLanes;
QVR_INLINE float unitNumber(Int32 number) noexcept { return static_cast<float>(number) * kUnit; }

constexpr float kTurn = 6.2831855f;  // 0x40C90FDB: 2 pi
constexpr float kLargest = std::numeric_limits<float>::max();
inline constexpr _simd_splat<0x7F7FFFFFu> kLargestInLanes;
inline constexpr _simd_splat<0xFF7FFFFFu> kLowestInLanes;

// Where numbers are drawn from.
template <typename Lanes> struct Interval {
    Lanes middle, half;
};

template <typename Lanes> inline constexpr auto kHalfOf = kHalf;
template <> inline constexpr auto kHalfOf<float> = 0.5f;

// value plus and minus range, cut off at the limits of the type. A negative range is none. Each
// minimum and maximum has its limit first, so that NaN comes through.
template <typename Lanes>
QVR_INLINE Interval<Lanes> intervalAround(Lanes value, float range,
                                          std::type_identity_t<Lanes> lowest,
                                          std::type_identity_t<Lanes> highest) noexcept
{
    Lanes const reach = splat<Lanes>(maximum(0.0f, range));
    Lanes const low = maximum(lowest, value - reach);
    Lanes const high = minimum(highest, value + reach);
    return {(low + high) * kHalfOf<Lanes>, (high - low) * kHalfOf<Lanes>};
}

template <typename Lanes>
QVR_INLINE Lanes uniformDraw(Interval<Lanes> const& interval, Lanes unit) noexcept
{
    Lanes const fromMiddle = unit - kHalfOf<Lanes>;
    Lanes const part = fromMiddle * interval.half;
    return interval.middle + (part + part);
}

// One of the two normal numbers that Box and Muller (1958) make of two uniform ones, in double
// precision. Four standard deviations reach the ends of the interval; what falls beyond stays
// there. Infinite or NaN for a unit of 0, once in 2^30 numbers.
QVR_INLINE float normalDraw(float middle, float half, float unit, float turns) noexcept
{
    float const deviation = half * 0.25f;
    double const cosine = library::cos(static_cast<double>(turns * kTurn));
    double const distance = std::sqrt(library::log(static_cast<double>(unit)) * -2.0);
    return static_cast<float>(static_cast<double>(middle) +
                              (static_cast<double>(deviation) * distance) * cosine);
}

// One component. Distributions other than the two give 0.
template <typename T>
QVR_INLINE float draw(Int32 const& seed, Int32 const& distribution, T const& value,
                      Float const& range, Workspace& workspace, float lowest,
                      float highest) noexcept
{
    auto const interval = [&] {
        return intervalAround(static_cast<float>(value), range, lowest, highest);
    };
    if (distribution == kNormal) {
        Int32 r[kPerFrame<T>.normal];
        NodusRandomGenerator_BaseSolve(kPerFrame<T>.normal, seed, workspace, r);
        auto const [middle, half] = interval();
        return normalDraw(middle, half, unitNumber(r[0]), unitNumber(r[1]));
    }
    Int32 r[kPerFrame<T>.uniform];
    NodusRandomGenerator_BaseSolve(kPerFrame<T>.uniform, seed, workspace, r);
    return distribution == kUniform ? uniformDraw(interval(), unitNumber(r[0])) : 0.0f;
}

QVR_INLINE _vec4 components(Float4 const& value) noexcept { return load(&value.x); }
QVR_INLINE _vec4 components(Color const& value) noexcept { return loadTriple(&value.r); }

// Each component from numbers of its own, or pairs of them: four, or three and a fourth of no
// meaning.
template <typename T>
QVR_INLINE _vec4 drawComponents(Int32 const& seed, Int32 const& distribution, T const& value,
                                Float const& range, Workspace& workspace, _vec4 lowest,
                                _vec4 highest) noexcept
{
    auto const interval = [&] { return intervalAround(components(value), range, lowest, highest); };
    if (distribution == kNormal) {
        Int32 r[kPerFrame<T>.normal];
        NodusRandomGenerator_BaseSolve(kPerFrame<T>.normal, seed, workspace, r);
        auto const [middles, halves] = interval();
        alignas(16) float middle[4], half[4];
        store(middle, middles);
        store(half, halves);
        float drawn[4] = {};
        for (int j = 0; j < kPerFrame<T>.uniform; ++j)
            drawn[j] =
                normalDraw(middle[j], half[j], unitNumber(r[2 * j]), unitNumber(r[2 * j + 1]));
        return lanes(drawn[0], drawn[1], drawn[2], drawn[3]);
    }
    Int32 r[4] = {};
    NodusRandomGenerator_BaseSolve(kPerFrame<T>.uniform, seed, workspace, r);
    if (distribution != kUniform)
        return zero();
    return uniformDraw(interval(), toFloats(integerLanes(r[0], r[1], r[2], r[3])) * kUnitInLanes);
}

// The lowest bits of consecutive numbers alternate.
Bool drawBool(Int32 const& seed, Workspace& workspace) noexcept
{
    Int32 r[1];
    NodusRandomGenerator_BaseSolve(1, seed, workspace, r);
    return {static_cast<std::uint8_t>(r[0] & 1)};
}

// A normal draw beyond the limits wraps around.
UInt8 drawUInt8(Int32 const& seed, Int32 const& distribution, UInt8 const& value,
                Float const& range, Workspace& workspace) noexcept
{
    float const drawn = draw(seed, distribution, value, range, workspace, 0.0f, 255.0f);
    return static_cast<UInt8>(toIntTruncating(drawn + 0.5f));
}

// Halves away from zero. Above 2^23 single precision has no halves to add: 8388609 gives 8388610.
Int32 drawInt32(Int32 const& seed, Int32 const& distribution, Int32 const& value,
                Float const& range, Workspace& workspace) noexcept
{
    float const drawn = draw(seed, distribution, value, range, workspace, -0x1p31f, 0x1p31f);
    return toIntTruncating(drawn >= 0.0f ? drawn + 0.5f : drawn - 0.5f);
}

Float drawFloat(Int32 const& seed, Int32 const& distribution, Float const& value,
                Float const& range, Workspace& workspace) noexcept
{
    return draw(seed, distribution, value, range, workspace, -kLargest, kLargest);
}

void drawFloat4(Int32 const& seed, Int32 const& distribution, Float4 const& value,
                Float const& range, Workspace& workspace, Float4& result) noexcept
{
    store(&result.x, drawComponents(seed, distribution, value, range, workspace, kLowestInLanes,
                                    kLargestInLanes));
}

// Alpha is not drawn: the input's own bits.
void drawColor(Int32 const& seed, Int32 const& distribution, Color const& value, Float const& range,
               Workspace& workspace, Color& result) noexcept
{
    storeTriple(&result.r,
                drawComponents(seed, distribution, value, range, workspace, zero(), kOne));
    result.a = value.a;
}

inline constexpr _simd_const<0u, 0xBE800000u, 0xBE800000u, 0u> kBackForSines;  // 0 or -0.25
inline constexpr _simd_const<0u, 0xFFFFFFFFu, 0xFFFFFFFFu, 0u> kYZ;

// value, turned first by a random rotation which takes the x axis anywhere within `range`, as a
// part of the sphere's diameter: evenly, since slices of a sphere have areas as their thicknesses.
// A normal draw beyond the sphere gives NaN.
void drawRotation(Int32 const& seed, Int32 const& distribution, Quaternion const& value,
                  Float const& range, Workspace& workspace, Quaternion& result) noexcept
{
    auto const interval = [&] { return intervalAround(0.0f, range, -1.0f, 1.0f); };
    Int32 r[kPerFrame<Quaternion>.normal] = {};
    float slice = 0.0f;
    if (distribution == kNormal) {
        NodusRandomGenerator_BaseSolve(kPerFrame<Quaternion>.normal, seed, workspace, r);
        auto const [middle, half] = interval();
        slice = normalDraw(middle, half, unitNumber(r[1]), unitNumber(r[2]));
    } else {
        NodusRandomGenerator_BaseSolve(kPerFrame<Quaternion>.uniform, seed, workspace, r);
        if (distribution == kUniform)
            slice = uniformDraw(interval(), unitNumber(r[1]));
    }

    // The axis is perpendicular to x, at a random place around it. One evaluation serves all four
    // waves: a sine is the cosine a quarter turn back, and a cosine goes back by 0.
    float const around = unitNumber(r[0]) * kTurn;
    float const half = lane0(acosPoly(broadcast(1.0f - magnitude(slice + slice)))) * 0.5f;
    _vec4 const turns = firstPairs(broadcast(around), broadcast(half)) * kTurnsPerRadian;
    _vec4 const waves = cosOfTurns(turns + kBackForSines);  // cos, sin around; sin, cos half
    _vec4 const axis = bitOr(bitAnd(shuffle<0, 0, 1, 1>(waves), kYZ), kIdentity);
    _vec4 const rotation = axis * shuffle<2, 2, 2, 3>(waves);
    store(&result.x, hamiltonProduct(load(&value.x), rotation));
}

}  // namespace

void NodusRandomGenerator_Bool_Init(void const* in, void* workspace) noexcept
{
    initialize<startBool>(in, workspace);
}
void NodusRandomGenerator_Bool_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawBool>(in, workspace, out);
}
void NodusRandomGenerator_UInt8_Init(void const* in, void* workspace) noexcept
{
    initialize<start<UInt8>>(in, workspace);
}
void NodusRandomGenerator_UInt8_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawUInt8>(in, workspace, out);
}
void NodusRandomGenerator_Int32_Init(void const* in, void* workspace) noexcept
{
    initialize<start<Int32>>(in, workspace);
}
void NodusRandomGenerator_Int32_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawInt32>(in, workspace, out);
}
void NodusRandomGenerator_Float_Init(void const* in, void* workspace) noexcept
{
    initialize<start<Float>>(in, workspace);
}
void NodusRandomGenerator_Float_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawFloat>(in, workspace, out);
}
void NodusRandomGenerator_Float4_Init(void const* in, void* workspace) noexcept
{
    initialize<start<Float4>>(in, workspace);
}
void NodusRandomGenerator_Float4_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawFloat4>(in, workspace, out);
}
void NodusRandomGenerator_Color_Init(void const* in, void* workspace) noexcept
{
    initialize<start<Color>>(in, workspace);
}
void NodusRandomGenerator_Color_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawColor>(in, workspace, out);
}
void NodusRandomGenerator_Quaternion_Init(void const* in, void* workspace) noexcept
{
    initialize<start<Quaternion>>(in, workspace);
}
void NodusRandomGenerator_Quaternion_Solve(void const* in, void* workspace, void* out) noexcept
{
    solve<drawRotation>(in, workspace, out);
}
