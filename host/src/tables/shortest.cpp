// The digits by Dragonbox (Junekey Jeon, 2020), as the fmt library has it; laid out as
// std::to_chars lays them out: fixed unless scientific notation is shorter.
#include "nodus/host/shortest.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nodus::host {

namespace {

// "e+07", at least two digits.
char* writeExponent(char* to, int exponent)
{
    *to++ = 'e';
    *to++ = exponent < 0 ? '-' : '+';
    int const size = exponent < 0 ? -exponent : exponent;
    if (size < 10)
        *to++ = '0';
    return std::to_chars(to, to + 4, size).ptr;
}

// Whole numbers of more digits than are needed to tell them are written exactly.
template <typename Real> char* writeWhole(char* to, Real value)
{
    constexpr Real kTooLarge = 18446744073709551616.0;  // 2 to the power 64
    if (value < kTooLarge)
        return std::to_chars(to, to + 32, static_cast<std::uint64_t>(value)).ptr;
    return std::to_chars(to, to + 32, value, std::chars_format::fixed).ptr;
}

template <typename Real> char* write(char* to, Real value)
{
    if (std::signbit(value)) {
        *to++ = '-';
        value = -value;
    }
    if (value == 0) {
        *to++ = '0';
        return to;
    }
    if (!std::isfinite(value)) {
        std::string_view const word = std::isnan(value) ? "nan" : "inf";
        return to + word.copy(to, word.size());
    }
    auto const decimal = fmt::detail::dragonbox::to_decimal(value);
    char digits[24] = {};
    char* const end = std::to_chars(digits, std::end(digits), decimal.significand).ptr;
    auto const count = static_cast<int>(end - digits);
    auto const copy = [&](int from, int upTo) {
        std::memcpy(to, digits + from, static_cast<std::size_t>(upTo - from));
        to += upTo - from;
    };
    // Where both notations are equally long; a single digit has no point in the scientific one.
    int const alone = count == 1 ? 1 : 0;
    if (decimal.exponent < -(count + 3) + alone || decimal.exponent > 5 - alone) {
        copy(0, 1);
        if (count > 1) {
            *to++ = '.';
            copy(1, count);
        }
        return writeExponent(to, decimal.exponent + count - 1);
    }
    if (decimal.exponent > 0)
        return writeWhole(to, value);
    int const whole = count + decimal.exponent;
    if (whole <= 0) {
        std::string_view("0.000000").copy(to, 8);
        to += 2 - whole;
        copy(0, count);
        return to;
    }
    copy(0, whole);
    if (whole < count) {
        *to++ = '.';
        copy(whole, count);
    }
    return to;
}

}  // namespace

char* writeShortest(char* to, float value) { return write(to, value); }
char* writeShortest(char* to, double value) { return write(to, value); }

}  // namespace nodus::host
