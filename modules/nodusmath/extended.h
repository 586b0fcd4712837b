// Extended: numbers of 64 places, rounded to nearest after each operation: the x87's, where long
// double is that type, else the same in integers.
#pragma once

#include <bit>
#include <cfloat>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace nodusmath {

// Finite numbers with the bits that the x87 gives. The exponent has no ends; where the x87's has
// them is far beyond the range of double. About nine times as slow.
class SoftExtended {
public:
    constexpr SoftExtended() = default;
    // Exact: whole has at most 64 places.
    constexpr SoftExtended(bool isNegative, std::uint64_t whole, int exponent)
        : SoftExtended(rounded(isNegative, whole, exponent, false))
    {
    }
    template <std::integral T>
    constexpr SoftExtended(T value)
        : SoftExtended(value < 0, value < 0 ? 0 - std::uint64_t(value) : std::uint64_t(value), 0)
    {
    }
    constexpr SoftExtended(double value)
    {
        auto const bits = std::bit_cast<std::uint64_t>(value);
        auto const exponent = static_cast<int>(bits >> 52 & 0x7FF);
        std::uint64_t const fraction = bits & kFraction;
        *this = SoftExtended(bits >> 63 != 0, exponent == 0 ? fraction : fraction | (kFraction + 1),
                             (exponent == 0 ? 1 : exponent) - 1075);
    }

    // Rounded to nearest, subnormals and overflow among it.
    constexpr explicit operator double() const
    {
        if (m_places == 0)
            return m_isNegative ? -0.0 : 0.0;
        // Of the 64 places a double has the first 53, fewer below its normal range.
        int const top = m_exponent + 63;
        int const dropped = top >= -1022 ? 11 : top >= -1075 ? -1011 - top : 65;
        std::uint64_t kept = 0;
        if (dropped < 64) {
            std::uint64_t const rest = m_places << (64 - dropped), half = std::uint64_t{1} << 63;
            kept = m_places >> dropped;
            kept += rest > half || (rest == half && kept % 2 != 0);
        } else if (dropped == 64) {
            kept = m_places > std::uint64_t{1} << 63;
        }
        if (top > 1023)
            kept = kInfinity;
        else if (top >= -1022)  // the first place stands for one in the exponent; a carry too
            kept += static_cast<std::uint64_t>(top + 1022) << 52;
        return std::bit_cast<double>(kept | std::uint64_t{m_isNegative} << 63);
    }
    // Towards zero; for values within int.
    constexpr explicit operator int() const
    {
        if (m_exponent <= -64)
            return 0;
        auto const whole = static_cast<int>(m_places >> -m_exponent);
        return m_isNegative ? -whole : whole;
    }

    friend constexpr SoftExtended operator*(SoftExtended a, SoftExtended b)
    {
        return rounded(a.m_isNegative != b.m_isNegative, Wide{a.m_places} * b.m_places,
                       a.m_exponent + b.m_exponent, false);
    }
    friend constexpr SoftExtended operator/(SoftExtended a, int divisor)
    {
        Wide const dividend = Wide{a.m_places} << 64;
        auto const by = static_cast<unsigned>(divisor);
        return rounded(a.m_isNegative, dividend / by, a.m_exponent - 64, dividend % by != 0);
    }
    friend constexpr SoftExtended operator+(SoftExtended a, SoftExtended b)
    {
        if (a.m_places == 0 || b.m_places == 0)
            return a.m_places == 0 ? b : a;
        if (a.m_exponent < b.m_exponent ||
            (a.m_exponent == b.m_exponent && a.m_places < b.m_places)) {
            SoftExtended const other = a;
            a = b;
            b = other;
        }
        // a is the larger one; b's places behind the 128 are told by one at their end.
        int const distance = a.m_exponent - b.m_exponent;
        Wide const larger = Wide{a.m_places} << 63;
        Wide smaller = Wide{b.m_places} << 63;
        if (distance > 126)
            smaller = 1;
        else if (distance > 0)
            smaller = smaller >> distance | ((smaller & ((Wide{1} << distance) - 1)) != 0);
        bool const isSum = a.m_isNegative == b.m_isNegative;
        return rounded(a.m_isNegative, isSum ? larger + smaller : larger - smaller,
                       a.m_exponent - 63, false);
    }
    friend constexpr SoftExtended operator-(SoftExtended a, SoftExtended b)
    {
        b.m_isNegative = !b.m_isNegative;
        return a + b;
    }

private:
    __extension__ using Wide = unsigned __int128;
    static constexpr std::uint64_t kFraction = 0xFFFFFFFFFFFFFu;
    static constexpr std::uint64_t kInfinity = 0x7FF0000000000000u;

    // places * 2^exponent, and a little more where hasRest; ties to even.
    static constexpr SoftExtended rounded(bool isNegative, Wide places, int exponent, bool hasRest)
    {
        SoftExtended result;
        result.m_isNegative = isNegative;
        if (places == 0)
            return result;
        auto const high = static_cast<std::uint64_t>(places >> 64);
        int const shift = high != 0 ? std::countl_zero(high)
                                    : 64 + std::countl_zero(static_cast<std::uint64_t>(places));
        places <<= shift;
        result.m_places = static_cast<std::uint64_t>(places >> 64);
        result.m_exponent = exponent - shift + 64;
        auto const low = static_cast<std::uint64_t>(places);
        std::uint64_t const half = std::uint64_t{1} << 63;
        if (low > half || (low == half && (hasRest || result.m_places % 2 != 0)))
            if (++result.m_places == 0) {
                result.m_places = half;
                ++result.m_exponent;
            }
        return result;
    }

    bool m_isNegative = false;
    int m_exponent = 0;          // of the last place
    std::uint64_t m_places = 0;  // the first of them is one, unless the number is zero
};

using Extended = std::conditional_t<LDBL_MANT_DIG == 64, long double, SoftExtended>;

// e^v to the 64 places, about one unit in the last of them, and rounded once more: the arithmetic
// is the same everywhere, while the instructions for exponentials, which libraries use, are not.
template <typename Number = Extended> double exponentialByExtended(double v) noexcept
{
    if (!(v < 710))
        return v * __builtin_inf();  // NaN stays NaN
    if (v < -746)
        return 0;

    // v = n ln 2 + r with |r| at most ln 2 / 2. The first part of ln 2 has 42 places, so that its
    // product with n is exact; the second is the rest of ln 2, rounded.
    constexpr auto constant = [](std::uint64_t places, int exponent) {
        if constexpr (std::is_same_v<Number, long double>) {
            long double value = places;
            for (; exponent < 0; ++exponent)
                value /= 2;
            return value;
        } else {
            return Number(false, places, exponent);
        }
    };
    constexpr Number kPerLn2 = constant(0xB8AA3B295C17F0BCu, -63);
    constexpr Number kLn2 = 0x1.62e42fefa2p-1;
    constexpr Number kLn2Rest = constant(0xCF79ABC9E3B39804u, -104);
    Number const value = v;
    int const n = static_cast<int>(value * kPerLn2 + Number(v < 0 ? -0.5 : 0.5));
    Number const r = (value - Number(n) * kLn2) - Number(n) * kLn2Rest;

    // The series of the exponential: the term of degree 18 is below 2^-80.
    constexpr int kDegree = 17;
    struct Terms {
        Number reciprocalFactorial[kDegree + 1] = {1};
        constexpr Terms()
        {
            for (int i = 1; i <= kDegree; ++i)
                reciprocalFactorial[i] = reciprocalFactorial[i - 1] / i;
        }
    };
    static constexpr Terms kTerms;
    Number sum = kTerms.reciprocalFactorial[kDegree];
    for (int i = kDegree - 1; i >= 0; --i)
        sum = sum * r + kTerms.reciprocalFactorial[i];

    // By powers of two in two steps, each of them a double.
    auto const power = [](int exponent) {
        return Number(std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52));
    };
    return static_cast<double>(sum * power(n / 2) * power(n - n / 2));
}

}  // namespace nodusmath
