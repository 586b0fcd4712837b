// Measures how far the polynomials and the conversions of angles are from the truth, and prints it
// as a Markdown table. The truth is long double.
#include "qvr/arctangent.h"
#include "qvr/polynomials.h"
#include "qvr/quaternion.h"
#include "qvr/qvrtransform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>

using namespace qvr;

namespace {

constexpr long double kExactPi = std::numbers::pi_v<long double>;

// Visits every step-th float of both signs up to limit, and the limits themselves.
template <typename Visit> void forFloats(float limit, std::uint32_t step, Visit visit)
{
    auto const last = std::bit_cast<std::uint32_t>(limit);
    for (std::uint32_t pattern = 0; pattern < last; pattern += step) {
        visit(std::bit_cast<float>(pattern));
        visit(-std::bit_cast<float>(pattern));
    }
    visit(limit);
    visit(-limit);
}

template <typename Approximation, typename Truth>
double largestError(float limit, Approximation approximation, Truth truth)
{
    long double largest = 0;
    forFloats(limit, 61, [&](float x) {
        long double const is = lane0(approximation(broadcast(x)));
        largest = std::max(largest, std::abs(is - truth(static_cast<long double>(x))));
    });
    return static_cast<double>(largest);
}

double largestErrorOfArctangent(std::mt19937& random)
{
    std::uniform_real_distribution<float> lane(-1, 1);
    long double largest = 0;
    for (int i = 0; i < 20'000'000; ++i) {
        float const num = lane(random), den = lane(random);
        long double const is = lane0(arctangent2(broadcast(num), broadcast(den)));
        long double const truth =
            std::atan2(static_cast<long double>(num), static_cast<long double>(den));
        largest = std::max(largest, std::abs(is - truth));
    }
    return static_cast<double>(largest);
}

double largestErrorOfLength(std::mt19937& random)
{
    std::uniform_real_distribution<float> lane(-1, 1);
    long double largest = 0;
    for (int i = 0; i < 5'000'000; ++i) {
        _vec4 const v = lanes(lane(random), lane(random), lane(random), lane(random));
        _vec4 const u = normalizeFast(v);
        long double squares = 0;
        for (long double const x : {laneOf<0>(u), laneOf<1>(u), laneOf<2>(u), laneOf<3>(u)})
            squares += x * x;
        largest = std::max(largest, std::abs(std::sqrt(squares) - 1));
    }
    return static_cast<double>(largest);
}

// Of all three angles. Orders 0 to 11: outer angles anywhere, the middle one within 1.4 rad. Twist
// and swing: swings of 0.1 to 2.5 rad of either sign.
double largestErrorOfRoundTrip(std::int32_t order, std::mt19937& random)
{
    std::uniform_real_distribution<float> outer(-3.14f, 3.14f), middle(-1.4f, 1.4f),
        swing(0.1f, 2.5f);
    CGRotationOrder const rotationOrder{order};
    double largest = 0;
    for (int i = 0; i < 2'000'000; ++i) {
        float angles[4] = {outer(random), outer(random), outer(random), 0};
        if (order < 12) {
            angles[QvEulerAxis[order][1]] = middle(random);
        } else {
            angles[1] = std::copysign(swing(random), angles[1]);
            angles[2] = std::copysign(swing(random), angles[2]);
        }
        float back[4];
        storeUnaligned(back, rotationOrder.Q2V(rotationOrder.V2Q(loadUnaligned(angles))));
        for (int axis = 0; axis < 3; ++axis)
            largest = std::max(largest, std::abs(static_cast<double>(back[axis]) -
                                                 static_cast<double>(angles[axis])));
    }
    return largest;
}

void row(char const* what, char const* range, double error)
{
    std::printf("| %s | %s | %.2e |\n", what, range, error);
}

}  // namespace

int main()
{
    auto const pi = static_cast<float>(kExactPi);
    std::mt19937 random(20240229);
    std::puts("| function | range | largest absolute error |\n|---|---|---|");
    row("`sinPoly`", "[-pi, pi]", largestError(pi, sinPoly, [](auto x) { return std::sin(x); }));
    row("`cosPoly`", "[-pi, pi]", largestError(pi, cosPoly, [](auto x) { return std::cos(x); }));
    row("`cosOfTurns`", "[-1, 1] turns",
        largestError(1, cosOfTurns, [](auto x) { return std::cos(2 * kExactPi * x); }));
    row("`acosPoly`", "[-1, 1]", largestError(1, acosPoly, [](auto x) { return std::acos(x); }));
    row("`asinPoly`", "[-1, 1]", largestError(1, asinPoly, [](auto x) { return std::asin(x); }));
    row("`arctangent2`", "all directions", largestErrorOfArctangent(random));
    row("length after `normalizeFast`", "lanes in [-1, 1]", largestErrorOfLength(random));
    constexpr char const* kOrders[] = {"X, Y, Z", "X, Z, Y", "Y, Z, X",        "Y, X, Z",
                                       "Z, X, Y", "Z, Y, X", "twist and swing"};
    for (std::int32_t order = 0; order <= 12; ++order) {
        char what[64];
        std::snprintf(what, sizeof what, "order %d, %s, there and back", order, kOrders[order / 2]);
        row(what, order < 12 ? "middle angle in [-1.4, 1.4]" : "swings of 0.1 to 2.5 rad",
            largestErrorOfRoundTrip(order, random));
    }
}
