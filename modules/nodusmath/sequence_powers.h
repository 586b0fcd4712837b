// Powers of the random sequence's multiplier modulo 2^32: tables which the compiler computes, and
// proves, from the multiplier alone.
#pragma once

#include "qvr/scalar.h"

#include <cstddef>
#include <cstdint>

namespace nodusmath::sequence {

using State = std::uint32_t;

// 5 modulo 8, so that its powers are all 2^30 states that are 1 modulo 4.
inline constexpr State kMultiplier = 10000005u;
inline constexpr State kInverse = 131985997u;
static_assert(kMultiplier % 8 == 5 && kMultiplier * kInverse == 1u);

// The multiplier to the powers 1, 2, 4, 8, ... 2^29: the factors of the 30 bits of an index.
inline constexpr std::size_t kIndexBits = 30;
inline constexpr State k_anSucessiveSquares[kIndexBits] = {
    10000005u,   376447257u,  1176990833u, 2070190561u, 3393632193u, 2507243393u,
    4184030977u, 3158801921u, 2593324033u, 2637559809u, 3668701185u, 911728641u,
    1890566145u, 4049567745u, 582942721u,  1165885441u, 2331770881u, 368574465u,
    737148929u,  1474297857u, 2948595713u, 1602224129u, 3204448257u, 2113929217u,
    4227858433u, 4160749569u, 4026531841u, 3758096385u, 3221225473u, 2147483649u,
};

constexpr bool eachIsTheSquareOfTheOneBefore()
{
    State expected = kMultiplier;
    for (State const square : k_anSucessiveSquares) {
        if (square != expected)
            return false;
        expected *= expected;
    }
    return expected == 1u;  // the order is 2^30: bits 30 and 31 of an index change nothing
}
static_assert(eachIsTheSquareOfTheOneBefore());

// The same for the four bytes of an index: entry [b][i] is the multiplier to the power i * 256^b,
// which makes four factors of thirty.
struct BytePowers {
    State of[4][256];
};

constexpr BytePowers bytePowers()
{
    BytePowers powers{};
    for (std::size_t byte = 0; byte < 4; ++byte) {
        for (std::size_t i = 0; i < 256; ++i) {
            State product = 1;
            for (std::size_t bit = 0; bit < 8 && 8 * byte + bit < kIndexBits; ++bit)
                product *= (i >> bit & 1) != 0 ? k_anSucessiveSquares[8 * byte + bit] : 1u;
            powers.of[byte][i] = product;
        }
    }
    return powers;
}
inline constexpr BytePowers kBytePowers = bytePowers();

// Counting up in the lowest byte, and from each byte over to the next, is one more factor.
constexpr bool bytePowersCountUp()
{
    State expected = 1, step = kMultiplier;
    for (auto const& ofByte : kBytePowers.of) {
        for (State const power : ofByte) {
            if (power != expected)
                return false;
            expected *= step;
        }
        step = expected;
        expected = 1;
    }
    return true;
}
static_assert(bytePowersCountUp());

// The multiplier to the power n modulo 2^30, which for a negative number counts back from there.
QVR_INLINE constexpr State power(std::uint32_t n) noexcept
{
    State const low = kBytePowers.of[0][n & 255] * kBytePowers.of[1][n >> 8 & 255];
    return low * kBytePowers.of[2][n >> 16 & 255] * kBytePowers.of[3][n >> 24];
}
static_assert(power(0) == 1 && power(~0u) == kInverse && power(1u << kIndexBits) == 1);

// Between neighbouring frames: entry kReach + d is the power d, from -kReach to kReach.
inline constexpr std::uint32_t kReach = 15;
struct ShortSteps {
    State by[2 * kReach + 1];
};

constexpr ShortSteps shortSteps()
{
    ShortSteps steps{};
    for (std::uint32_t i = 0; i <= 2 * kReach; ++i)
        steps.by[i] = power(i - kReach);
    return steps;
}
inline constexpr ShortSteps kShortSteps = shortSteps();
static_assert(kShortSteps.by[kReach] == 1 && kShortSteps.by[kReach - 1] == kInverse &&
              kShortSteps.by[0] * kShortSteps.by[kReach + kReach] == 1);

// A state, 1 modulo 4, and the 30-bit number which stands for it.
QVR_INLINE constexpr std::int32_t valueOf(State state) noexcept
{
    return static_cast<std::int32_t>(state >> 2);
}
QVR_INLINE constexpr State stateOf(std::int32_t value) noexcept
{
    return 4u * static_cast<State>(value) + 1u;
}

}  // namespace nodusmath::sequence
