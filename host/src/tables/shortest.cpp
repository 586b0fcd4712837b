// The digits by Dragonbox (Junekey Jeon, 2020), as the fmt library has it; laid out as
// std::to_chars lays them out: fixed unless scientific notation is shorter.
#include "nodus/host/shortest.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

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

__extension__ using Sixteen =
    unsigned __int128;  // characters, of which the first is the lowest byte

// The digits of a number below 10 to the power 8: fours, pairs and digits of all at once.
std::uint64_t eightDigits(std::uint64_t number)
{
    std::uint64_t const fours = number / 10000 | number % 10000 << 32;
    std::uint64_t const hundreds = (fours * 5243 >> 19) & 0x0000007F'0000007F;  // over 100
    std::uint64_t const twos = hundreds | (fours - 100 * hundreds) << 16;
    std::uint64_t const tens = (twos * 103 >> 10) & 0x000F'000F'000F'000F;  // over 10
    return (tens | (twos - 10 * tens) << 8) + '0' * std::uint64_t{0x01010101'01010101};
}

// The digits that tell a number, with zeros behind them up to the most that there are.
template <typename Real> class Digits {
public:
    explicit Digits(std::uint64_t number) : m_count(fmt::detail::count_digits(number))
    {
        constexpr std::uint64_t kEight = 100000000;
        static constexpr auto kPowers = [] {
            std::array<std::uint64_t, kMost> powers{1};
            for (std::size_t i = 1; i < powers.size(); ++i)
                powers[i] = 10 * powers[i - 1];
            return powers;
        }();
        number *= kPowers[static_cast<std::size_t>(kMost - m_count)];
        m_last = static_cast<char>('0' + number % 10);
        number /= 10;
        if constexpr (kMost == 9)
            m_others = eightDigits(number) | Sixteen{static_cast<unsigned char>(m_last)} << 64;
        else
            m_others = eightDigits(number / kEight) | Sixteen{eightDigits(number % kEight)} << 64;
    }

    int count() const { return m_count; }
    Sixteen begin() const { return m_others; }
    // All from one of the first 16 on, and more behind them: 17 characters.
    void writeFrom(int first, char* to) const
    {
        Sixteen const text = m_others >> 4 * first >> 4 * first;
        std::memcpy(to, &text, sizeof text);
        if constexpr (kMost == 17)
            to[16 - first] = m_last;
    }

private:
    static constexpr int kMost = sizeof(Real) == 4 ? 9 : 17;
    int m_count;
    char m_last;
    Sixteen m_others;
};

// Signs, and whether there are digits before the point, are as good as random: there are no
// branches for them.
template <typename Real> char* write(char* to, Real value)
{
    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    value = std::abs(value);
    if (value == 0) {
        *to++ = '0';
        return to;
    }
    if (!std::isfinite(value)) {
        std::string_view const word = std::isnan(value) ? "nan" : "inf";
        return to + word.copy(to, word.size());
    }
    auto const decimal = fmt::detail::dragonbox::to_decimal(value);
    Digits<Real> const digits(decimal.significand);
    int const count = digits.count();
    // Where both notations are equally long; a single digit has no point in the scientific one.
    int const alone = count == 1 ? 1 : 0;
    if (decimal.exponent < -(count + 3) + alone || decimal.exponent > 5 - alone) {
        digits.writeFrom(0, to);
        if (count > 1) {
            to[1] = '.';
            digits.writeFrom(1, to + 2);
        }
        to += count > 1 ? count + 1 : 1;
        return writeExponent(to, decimal.exponent + count - 1);
    }
    if (decimal.exponent > 0)
        return writeWhole(to, value);
    int const whole = count + decimal.exponent;
    if (whole == count) {
        digits.writeFrom(0, to);
        return to + count;
    }
    // "0.000000", to be written over from the first digit on.
    constexpr std::uint64_t kNothing = 0x30303030'30302E30;
    bool const isBelowOne = whole <= 0;
    Sixteen const begin = isBelowOne ? kNothing : digits.begin();
    std::memcpy(to, &begin, sizeof begin);
    to[isBelowOne ? 1 : whole] = '.';
    to += isBelowOne ? 2 - whole : whole + 1;
    digits.writeFrom(isBelowOne ? 0 : whole, to);
    return to + count - (isBelowOne ? 0 : whole);
}

}  // namespace

char* writeShortest(char* to, float value) { return write(to, value); }
char* writeShortest(char* to, double value) { return write(to, value); }

}  // namespace nodus::host
