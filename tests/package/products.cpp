// A user's program over the rotation headers: prints a number for all bits that they compute.
#include <nodusmath/qvr/rotation_matrix.h>
#include <nodusmath/qvr/rotation_order.h>

#include <bit>
#include <cstdint>
#include <cstdio>

using namespace qvr;

namespace {

std::uint64_t g_hash = 0xCBF29CE484222325u;  // FNV-1a

void take(_vec4 v)
{
    alignas(16) float values[4];
    store(values, v);
    for (float const value : values)
        g_hash = (g_hash ^ std::bit_cast<std::uint32_t>(value)) * 0x100000001B3u;
}

}  // namespace

int main()
{
    std::uint32_t state = 1;
    auto const next = [&] {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(static_cast<std::int32_t>(state) >> 8) * 0x1p-23f;
    };
    for (int i = 0; i < 10000; ++i) {
        _vec4 const a = lanes(next(), next(), next(), next()), b = lanes(next(), next(), next(), 1);
        take(hamiltonProduct(a, b));
        take(cross(a, b));
        take(rotated(a, b));
        take(slerp(a, b, broadcast(0.25f)));
        take(anglesOfQuaternion(i % 13, a));
        take(quaternionOfAngles(i % 13, b));
        take(RotationRows(a).row<1>());
    }
    std::printf("%016llx\n", static_cast<unsigned long long>(g_hash));
}
