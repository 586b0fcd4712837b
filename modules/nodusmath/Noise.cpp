// Noise: classic gradient noise (Perlin, "An Image Synthesizer", 1985) in one, two and three
// dimensions, in single precision throughout. Each whole position has a random gradient; between
// them the gradients' ramps are blended. The pattern repeats every 256 units of each coordinate.
#include "kernels.h"
#include "ports.h"
#include "qvr/polynomials.h"

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <utility>

using namespace nodusmath;
using namespace qvr;

namespace {

constexpr int B = 256;         // the lattice repeats after this many cells
constexpr int BM = B - 1;      // the mask of a cell's index
constexpr float kN = 4096.0f;  // added to coordinates: truncation rounds down from there on
inline constexpr _simd_splat<0x45800000u> kNInLanes;

// Filled once, before the first noise of the process is answered, and read-only from then on.
// Entries from 256 on repeat those from 0 on, so that sums of two indices, and the cell after the
// last, need no mask.
constexpr int kEntries = B + B + 2;
Int32 p[kEntries];                      // a permutation of the cells
Float g1[kEntries];                     // slopes
Float2 g2[kEntries];                    // unit vectors in the plane
Float4 g3[kEntries];                    // unit vectors in space; the fourth lane is 0
constinit std::atomic<Int32> start{1};  // until all of these are complete

// From -1 to 255/256, by the C library's generator in whatever state the process has left it.
float drawGradient() noexcept
{
    return static_cast<float>((std::rand() & 511) - 256) * 0.00390625f;
}

// The order of the calls to rand is part of the pattern. A vector drawn as zero has no direction
// and is NaN: so is the noise next to it.
void fillTables() noexcept
{
    for (int i = 0; i < B; ++i) {
        p[i] = i;
        g1[i] = drawGradient();

        float x = drawGradient();
        float y = drawGradient();
        float length = std::sqrt(x * x + y * y);
        g2[i] = {x / length, y / length};

        x = drawGradient();
        y = drawGradient();
        float const z = drawGradient();
        length = std::sqrt((y * y + z * z) + x * x);
        g3[i] = {x / length, y / length, z / length, 0.0f};
    }
    for (int i = BM; i > 0; --i)
        std::swap(p[i], p[std::rand() & BM]);
    for (int i = 0; i < B + 2; ++i) {
        p[B + i] = p[i];
        g1[B + i] = g1[i];
        g2[B + i] = g2[i];
        g3[B + i] = g3[i];
    }
}

// Any number of threads may come here at once: one fills the tables, the others wait for it.
[[gnu::cold, gnu::noinline, maybe_unused]] void completeTables() noexcept
{
    [[maybe_unused]] static bool const filled = (fillTables(), true);
    start.store(0, std::memory_order_release);
}

// The body of a noise kernel. Its first call goes the long way round: with the filling of the
// tables out of sight, the short way needs no stack.
template <auto noise>
[[gnu::cold, gnu::noinline]] void solveFirst(void const* in, void* out) noexcept
{
    completeTables();
    solve<noise>(in, out);
}
template <auto noise> QVR_INLINE void solveWithTables(void const* in, void* out) noexcept
{
#ifdef NODUS_ROWS
    // The process has one field, and the module has it.
    solveByKernel<noise>(in, out);
#else
    if (start.load(std::memory_order_acquire) != 0) [[unlikely]]
        return solveFirst<noise>(in, out);
    solve<noise>(in, out);
#endif
}

template <typename Lanes> inline constexpr auto kThreeOf = kThree;
template <> inline constexpr auto kThreeOf<float> = 3.0f;

template <typename Lanes> QVR_INLINE Lanes s_curve(Lanes r) noexcept
{
    return (r * r) * (kThreeOf<Lanes> - (r + r));
}
template <typename Lanes> QVR_INLINE Lanes lerp(Lanes s, Lanes a, Lanes b) noexcept
{
    return a + s * (b - a);
}

// Where a position lies: its cell, and the offsets from the cell's first and last corner. Below
// -4096 truncation rounds up and the first offset is negative; from 2^24 on offsets are 0.
struct Lattice {
    IntegerLanes cell;
    _vec4 r0, r1;

    QVR_INLINE explicit Lattice(_vec4 position) noexcept
    {
        _vec4 const t = position + kNInLanes;
        cell = toIntegersTruncating(t);
        r0 = t - toFloats(cell);
        r1 = r0 - kOne;
    }
    QVR_INLINE bool isBeyond() const noexcept { return anyLaneIs(kNoInteger, cell); }
};

// Positions 2^31 and more away, whose cell has no number: 0 as on all whole positions, NaN for an
// infinite or NaN coordinate.
template <typename... Coordinates> float noiseBeyond(Coordinates... coordinates) noexcept
{
    return ((coordinates - coordinates) + ...);
}

float noise1(Float const& x) noexcept
{
    float const t = x + kN;
    Int32 const cell = toIntTruncating(t);
    if (cell == kNoInteger) [[unlikely]]
        return noiseBeyond(x);
    Int32 const bx0 = cell & BM;
    float const rx0 = t - static_cast<float>(cell);
    float const rx1 = rx0 - 1.0f;

    return lerp(s_curve(rx0), rx0 * g1[p[bx0]], rx1 * g1[p[bx0 + 1]]);
}

// The corners of a cell's square in four lanes: 00, 01, 10, 11, the digits being those of x and y.
struct Square {
    std::size_t b00, b01, b10, b11;  // their places in the gradient table, or a column's first
    _vec4 rx, ry;                    // offsets from them
    _vec4 sx, sy;                    // how far to go from the lower to the higher, in each lane

    QVR_INLINE Square(Lattice const& lattice, _vec4 s) noexcept
        : rx(shuffle<0, 0, 0, 0>(lattice.r0, lattice.r1)),
          ry(shuffle<2, 3, 2, 3>(interleaveFirst(lattice.r0, lattice.r1))), sx(broadcastLane<0>(s)),
          sy(broadcastLane<1>(s))
    {
        std::size_t const bx0 = lowByte<0>(lattice.cell), by0 = lowByte<1>(lattice.cell);
        std::size_t const i = entryOf(p[bx0]) + by0, j = entryOf(p[bx0 + 1]) + by0;
        b00 = entryOf(p[i]);
        b01 = entryOf(p[i + 1]);
        b10 = entryOf(p[j]);
        b11 = entryOf(p[j + 1]);
    }

    static constexpr std::size_t entryOf(Int32 entry) noexcept
    {
        return static_cast<std::uint32_t>(entry);
    }
};

float noise2(Float2 const& position) noexcept
{
    Lattice const lattice(loadPair(&position.x));
    if (lattice.isBeyond()) [[unlikely]]
        return noiseBeyond(position.x, position.y);
    Square const square(lattice, s_curve(lattice.r0));

    _vec4 const q0 = loadPairs(&g2[square.b00].x, &g2[square.b01].x);
    _vec4 const q1 = loadPairs(&g2[square.b10].x, &g2[square.b11].x);
    _vec4 const ramps =
        square.rx * shuffle<0, 2, 0, 2>(q0, q1) + square.ry * shuffle<1, 3, 1, 3>(q0, q1);

    _vec4 const ab = lerp(square.sx, ramps, shuffle<2, 3, 2, 3>(ramps));
    return lane0(lerp(square.sy, ab, broadcastLane<1>(ab)));
}

// The ramps of the four corners whose columns begin at the square's places, `up` gradients higher.
QVR_INLINE _vec4 rampsOfLayer(Square const& square, Float4 const* up, _vec4 rz) noexcept
{
    _vec4 const q00 = load(&up[square.b00].x), q01 = load(&up[square.b01].x);
    _vec4 const q10 = load(&up[square.b10].x), q11 = load(&up[square.b11].x);
    _vec4 const xy0 = interleaveFirst(q00, q01), xy1 = interleaveFirst(q10, q11);
    _vec4 const z0 = interleaveLast(q00, q01), z1 = interleaveLast(q10, q11);
    return (square.rx * firstPairs(xy0, xy1) + square.ry * lastPairs(xy0, xy1)) +
           rz * firstPairs(z0, z1);
}

QVR_INLINE float noise3(Float3 const& position) noexcept
{
    Lattice const lattice(loadTriple(&position.x));
    if (lattice.isBeyond()) [[unlikely]]
        return noiseBeyond(position.x, position.y, position.z);
    _vec4 const s = s_curve(lattice.r0);
    Square const square(lattice, s);

    Float4 const* const layer = g3 + lowByte<2>(lattice.cell);
    _vec4 const near = rampsOfLayer(square, layer, broadcastLane<2>(lattice.r0));
    _vec4 const far = rampsOfLayer(square, layer + 1, broadcastLane<2>(lattice.r1));

    // Along x in four lanes (near y0, near y1, far y0, far y1), along y in two, along z in one.
    _vec4 const alongX = lerp(square.sx, firstPairs(near, far), lastPairs(near, far));
    _vec4 const alongY = lerp(square.sy, shuffle<0, 2, 0, 2>(alongX), shuffle<1, 3, 1, 3>(alongX));
    return lane0(lerp(broadcastLane<2>(s), alongY, broadcastLane<1>(alongY)));
}

}  // namespace

void NodusNoise1D_Solve(void const* in, void* out) noexcept { solveWithTables<noise1>(in, out); }
void NodusNoise2D_Solve(void const* in, void* out) noexcept { solveWithTables<noise2>(in, out); }
void NodusNoise3D_Solve(void const* in, void* out) noexcept { solveWithTables<noise3>(in, out); }
