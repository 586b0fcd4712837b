// Decimal numbers as most tables have them, "-12.0625": a whole number below 2 to the power 53 over
// a power of ten that is exact, too, so that one division rounds right (William Clinger, "How to
// read floating point numbers accurately", 1990). Half the time of std::from_chars, and of
// fast_float, which take every number.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace nodus::host {

// Reads up to the end or a comma, where it returns. Null when something else stands there, or
// reading it takes more than this.
template <typename Real> char const* readDecimal(char const* from, char const* end, Real& value)
{
    static constexpr std::array kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                           1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                           1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    constexpr std::ptrdiff_t kMostDigits = 19;  // what 64 bits have room for
    bool const isNegative = from != end && *from == '-';
    char const* at = from + (isNegative ? 1 : 0);
    std::uint64_t digits = 0;
    auto const readDigits = [&] {
        char const* const first = at;
        for (; at != end && *at >= '0' && *at <= '9'; ++at)
            digits = 10 * digits + static_cast<std::uint64_t>(*at - '0');
        return at - first;
    };
    std::ptrdiff_t const whole = readDigits();
    std::ptrdiff_t places = 0;
    if (at != end && *at == '.') {
        ++at;
        places = readDigits();
    }
    if (whole == 0 || whole + places > kMostDigits || digits >> 53 != 0 ||
        (at != end && *at != ','))
        return nullptr;
    double const number = static_cast<double>(digits) / kPowers[static_cast<std::size_t>(places)];
    // Rounding twice is rounding once, but where the first time ends half-way between two floats.
    if (std::is_same_v<Real, float> &&
        (std::bit_cast<std::uint64_t>(number) & 0x1FFFFFFF) == 0x10000000)
        return nullptr;
    value = static_cast<Real>(isNegative ? -number : number);
    return at;
}

}  // namespace nodus::host
