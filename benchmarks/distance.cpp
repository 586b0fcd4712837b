// Compares results lane by lane.
#include "distance.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace nodus::bench {

namespace {

constexpr std::size_t kInputs = 4096;

// Floating-point numbers as integers in the same order, neighbours one apart.
template <typename Integer, typename Float> double ordered(Float value)
{
    auto const bits = std::bit_cast<Integer>(value);
    return static_cast<double>(bits < 0 ? std::numeric_limits<Integer>::min() - bits : bits);
}

template <typename Integer, typename Float> Distance between(Float a, Float b)
{
    if (std::isnan(a) && std::isnan(b))
        return {0, 0};
    double const absolute = std::fabs(static_cast<double>(a) - static_cast<double>(b));
    if (a == b)
        return {0, 0};
    if (!std::isfinite(absolute))
        return {kIncomparable, kIncomparable};
    return {absolute, std::fabs(ordered<Integer>(a) - ordered<Integer>(b))};
}

template <typename T> T laneAt(std::byte const* port, std::size_t lane)
{
    T value;
    std::memcpy(&value, port + lane * sizeof(T), sizeof(T));
    return value;
}

Distance larger(Distance a, Distance b)
{
    return {std::max(a.absolute, b.absolute), std::max(a.ulps, b.ulps)};
}

Distance betweenFloats(std::byte const* a, std::byte const* b, std::size_t size, float sign)
{
    Distance result{0, 0};
    for (std::size_t lane = 0; lane < size / sizeof(float); ++lane)
        result = larger(
            result, between<std::int32_t>(laneAt<float>(a, lane), sign * laneAt<float>(b, lane)));
    return result;
}

Distance betweenPorts(PortShape const& shape, std::byte const* a, std::byte const* b)
{
    switch (shape.lane) {
    case Lane::single: {
        Distance const same = betweenFloats(a, b, shape.size, 1.0f);
        if (shape.name != "Quaternion")
            return same;
        Distance const opposite = betweenFloats(a, b, shape.size, -1.0f);
        return same.absolute < opposite.absolute ? same : opposite;
    }
    case Lane::doublePrecision:
        return between<std::int64_t>(laneAt<double>(a, 0), laneAt<double>(b, 0));
    default: {
        double apart = 0;
        for (std::size_t byte = 0; byte < shape.size; ++byte)
            apart += a[byte] != b[byte] ? 1 : 0;
        return {apart, apart};
    }
    }
}

}  // namespace

Distance distanceBetween(Case const& what, void* kernel, void* peer)
{
    Nodes const ours(what, kInputs), theirs(what, kInputs);
    Distance result{0, 0};
    for (std::size_t node = 0; node < kInputs; ++node) {
        Entry{kernel, false}.call(ours, node);
        Entry{peer, false}.call(theirs, node);
        for (Port const& port : what.outputs)
            result = larger(result, betweenPorts(port.shape, ours.output(node) + port.offset,
                                                 theirs.output(node) + port.offset));
    }
    return result;
}

}  // namespace nodus::bench
