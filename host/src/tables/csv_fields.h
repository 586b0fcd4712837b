// Taking a CSV row apart. By hand: libcsv, which keeps the same rules, takes three times as long,
// since it copies every field.
#pragma once

#include "decimal.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace nodus::host {

inline std::string_view withoutBlanks(std::string_view field)
{
    while (!field.empty() && (field.front() == ' ' || field.front() == '\t'))
        field.remove_prefix(1);
    while (!field.empty() && (field.back() == ' ' || field.back() == '\t'))
        field.remove_suffix(1);
    return field;
}

// A bit for each of 16 characters that is c.
inline std::uint32_t whichAre(char c, char const* sixteen)
{
#ifdef __SSE2__
    __m128i const text = _mm_loadu_si128(reinterpret_cast<__m128i const*>(sixteen));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(text, _mm_set1_epi8(c))));
#else
    std::uint32_t bits = 0;
    for (int i = 0; i < 16; ++i)
        bits |= std::uint32_t{sixteen[i] == c} << i;
    return bits;
#endif
}

// From field to field. Blanks around a field without quotes do not belong to it.
class FieldWalk {
public:
    explicit FieldWalk(std::string_view row) : m_next(row.data()), m_end(row.data() + row.size()) {}

    // False behind the last field. scratch keeps a field whose quotes had to be taken out.
    bool next(std::string& scratch)
    {
        if (m_next == nullptr)
            return false;
        char const* const begin = m_next;
        char const* const comma = commaOrQuote(begin);
        if (comma != m_end && *comma == '"') {
            nextQuoted(scratch);
            return true;
        }
        m_field = withoutBlanks({begin, static_cast<std::size_t>(comma - begin)});
        m_next = comma == m_end ? nullptr : comma + 1;
        return true;
    }

    // Moves on without looking at what the field is; the same result as next.
    bool skip(std::string& scratch)
    {
        if (m_next == nullptr)
            return false;
        char const* const comma = commaOrQuote(m_next);
        if (comma != m_end && *comma == '"')
            return next(scratch);
        m_next = comma == m_end ? nullptr : comma + 1;
        return true;
    }

    // That, up to so many times; how many.
    std::size_t skip(std::size_t count, std::string& scratch)
    {
        std::size_t passed = 0;
        char const* at = m_next;
        while (passed != count && m_next != nullptr) {
            if (m_end - at < 16 || whichAre('"', at) != 0) {
                passed += skip(scratch) ? 1 : 0;
                at = m_next;
                continue;
            }
            for (std::uint32_t commas = whichAre(',', at); commas != 0 && passed != count;
                 commas &= commas - 1) {
                m_next = at + std::countr_zero(commas) + 1;
                ++passed;
            }
            at += 16;
        }
        return passed;
    }

    // The next field, when it is a plain number: nothing else stands in it, and the type has it.
    // Otherwise nothing changes.
    template <typename Real> bool nextNumber(Real& value)
    {
        if (m_next == nullptr)
            return false;
        char const* end = readDecimal(m_next, m_end, value);
        if (end == nullptr) {
            auto const [read, error] = std::from_chars(m_next, m_end, value);
            if (error != std::errc{} || (read != m_end && *read != ','))
                return false;
            end = read;
        }
        m_next = end == m_end ? nullptr : end + 1;
        return true;
    }

    std::string_view field() const { return m_field; }
    bool isBroken() const { return m_isBroken; }

private:
    // The first one, or the end of the row: eight characters at a time.
    char const* commaOrQuote(char const* at) const
    {
        constexpr std::uint64_t kOnes = 0x0101010101010101, kHighBits = 0x80 * kOnes;
        // The lowest bit that is set is that of the first zero byte.
        auto const zeroBytes = [](std::uint64_t bytes) {
            return (bytes - kOnes) & ~bytes & kHighBits;
        };
        for (; m_end - at >= 8; at += 8) {
            std::uint64_t eight;
            std::memcpy(&eight, at, sizeof eight);
            std::uint64_t const found =
                zeroBytes(eight ^ ',' * kOnes) | zeroBytes(eight ^ '"' * kOnes);
            if (found != 0)
                return at + std::countr_zero(found) / 8;
        }
        while (at != m_end && *at != ',' && *at != '"')
            ++at;
        return at;
    }

    void nextQuoted(std::string& scratch)
    {
        while (*m_next == ' ' || *m_next == '\t')
            ++m_next;
        scratch.clear();
        bool closed = false;
        if (*m_next != '"') {
            // A quote in the midst of a field is a character like any other.
            while (m_next != m_end && *m_next != ',')
                scratch += *m_next++;
            m_field = withoutBlanks(scratch);
            m_next = m_next == m_end ? nullptr : m_next + 1;
            return;
        }
        ++m_next;
        while (m_next != m_end && !closed) {
            if (*m_next != '"') {
                scratch += *m_next++;
            } else if (m_next + 1 != m_end && m_next[1] == '"') {
                scratch += '"';
                m_next += 2;
            } else {
                ++m_next;
                closed = true;
            }
        }
        while (m_next != m_end && (*m_next == ' ' || *m_next == '\t'))
            ++m_next;
        m_isBroken = m_isBroken || !closed || (m_next != m_end && *m_next != ',');
        m_field = scratch;
        m_next = m_next == m_end || m_isBroken ? nullptr : m_next + 1;
    }

    char const* m_next;  // null behind the last field
    char const* m_end;
    std::string_view m_field;
    bool m_isBroken = false;
};

}  // namespace nodus::host
