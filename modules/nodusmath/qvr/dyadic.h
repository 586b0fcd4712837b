// Numbers m 2^e with whole m of any length, added and multiplied exactly, without allocation.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace qvr::dyadic {

// sign times the sum of limbs[i] 2^(32 (i + exponent)); the lowest and the highest limb are not 0,
// and zero has no limbs. The limbs lie in a Space.
struct Number {
    std::uint32_t const* limbs = nullptr;
    int size = 0, exponent = 0, sign = 0;

    int end() const noexcept { return exponent + size; }
    std::uint32_t limbAt(int place) const noexcept
    {
        return place >= exponent && place < end() ? limbs[place - exponent] : 0;
    }
    Number times(int signOfFactor) const noexcept
    {
        return {limbs, size, exponent, sign * signOfFactor};
    }
    // Times 2^(32 places).
    Number shifted(int places) const noexcept { return {limbs, size, exponent + places, sign}; }
};

// Where limbs are written, one number behind the other. What is written last can be given back.
template <int capacity> class Space {
public:
    // Room for one number. Who makes a Space knows how long the numbers in it can become: where
    // that were wrong, results would be, and nothing else is written to.
    std::uint32_t* room(int count) noexcept
    {
        return m_limbs + (m_used + count <= capacity ? m_used : capacity - count);
    }
    // The number that was written to the last room of this size.
    Number number(std::uint32_t* limbs, int size, int exponent, int sign) noexcept
    {
        while (size > 0 && limbs[size - 1] == 0)
            --size;
        m_used = static_cast<int>(limbs - m_limbs) + size;
        while (size > 0 && *limbs == 0)
            ++limbs, ++exponent, --size;
        return size == 0 ? Number{} : Number{limbs, size, exponent, sign};
    }
    int used() const noexcept { return m_used; }
    void giveBackTo(int used) noexcept { m_used = used; }

private:
    int m_used = 0;
    std::uint32_t m_limbs[capacity];
};

// A finite double and, if halfUp, half a unit in its last place more in magnitude.
template <typename Space> Number numberOf(double v, Space& space, bool halfUp = false) noexcept
{
    auto const pattern = std::bit_cast<std::uint64_t>(v);
    int biased = static_cast<int>((pattern >> 52) & 0x7FFu);
    std::uint64_t mantissa = pattern & 0xFFFFFFFFFFFFFu;
    if (biased == 0)
        biased = 1;
    else
        mantissa |= std::uint64_t{1} << 52;
    mantissa = 2 * mantissa + (halfUp ? 1 : 0);
    int const place = biased - 1076;  // of the lowest bit: not below -1075
    int const exponent = (place + 1088) / 32 - 34, shift = place - 32 * exponent;
    std::uint64_t const low = mantissa << shift;
    std::uint32_t* const limbs = space.room(3);
    limbs[0] = static_cast<std::uint32_t>(low);
    limbs[1] = static_cast<std::uint32_t>(low >> 32);
    limbs[2] = shift == 0 ? 0u : static_cast<std::uint32_t>(mantissa >> (64 - shift));
    return space.number(limbs, 3, exponent, pattern >> 63 != 0 ? -1 : 1);
}

template <typename Space> Number product(Number const& a, Number const& b, Space& space) noexcept
{
    if (a.sign == 0 || b.sign == 0)
        return {};
    int const size = a.size + b.size;
    std::uint32_t* const limbs = space.room(size);
    for (int i = 0; i < a.size; ++i) {
        std::uint64_t carry = 0;
        for (int j = 0; j < b.size; ++j) {
            carry += std::uint64_t{a.limbs[i]} * b.limbs[j] + (i > 0 ? limbs[i + j] : 0);
            limbs[i + j] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        limbs[i + b.size] = static_cast<std::uint32_t>(carry);
    }
    return space.number(limbs, size, a.exponent + b.exponent, a.sign * b.sign);
}

// In the space also where one of the two is 0.
template <typename Space> Number sum(Number const& a, Number const& b, Space& space) noexcept
{
    int const first = a.sign == 0   ? b.exponent
                      : b.sign == 0 ? a.exponent
                                    : std::min(a.exponent, b.exponent);
    int const end = a.sign == 0 ? b.end() : b.sign == 0 ? a.end() : std::max(a.end(), b.end());
    int const size = end + 1 - first;
    std::uint32_t* const limbs = space.room(size);
    // Of different signs: a's magnitude less b's, and what that is below zero in two's complement.
    bool const isDifference = a.sign * b.sign < 0;
    std::uint32_t const flip = isDifference ? 0xFFFFFFFFu : 0u;
    std::uint64_t carry = isDifference ? 1 : 0;
    for (int i = 0; i < size; ++i) {
        carry += std::uint64_t{a.limbAt(first + i)} + (b.limbAt(first + i) ^ flip);
        limbs[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    if (!isDifference || carry != 0)
        return space.number(limbs, size, first, a.sign == 0 ? b.sign : a.sign);
    carry = 1;
    for (int i = 0; i < size; ++i) {
        carry += std::uint32_t{~limbs[i]};
        limbs[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    return space.number(limbs, size, first, b.sign);
}

// The nearest double or one beside it.
inline double approximation(Number const& v) noexcept
{
    double value = 0;
    for (int i = v.size - 1; i >= 0 && i >= v.size - 4; --i)
        value = value * 0x1p32 + v.limbs[i];
    int exponent = 32 * (v.exponent + (v.size > 4 ? v.size - 4 : 0));
    for (; exponent > 0 && value < 0x1p1000; exponent -= 32)
        value *= 0x1p32;
    for (; exponent < 0 && value > 0; exponent += 32)
        value *= 0x1p-32;
    return v.sign < 0 ? -value : value;
}

}  // namespace qvr::dyadic
