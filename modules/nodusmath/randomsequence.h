// The random source of the generators: a sequence that is read at any index at once.
#pragma once

#include "nodus/Export.h"

#include <cstdint>

// A multiplicative congruential sequence of period 2^30. The value at an index depends on the seed
// and the index alone; indices that differ by a multiple of 2^30 have the same value. A plain
// value; all functions may be called from any thread.
class CRandomNumberSequence {
public:
    // Sequences are windows into one cycle: index 0 of this one is index `seed` of the sequence
    // with seed 0.
    NODUS_API explicit CRandomNumberSequence(int seed) noexcept;

    // The value at index n, which may be negative: from 0 to 2^30 - 1.
    NODUS_API int operator[](int n) const noexcept;

    // The value d places after `value` in whichever sequence: before it for a negative d.
    NODUS_API static int Advance(int value, int d) noexcept;

    static constexpr CRandomNumberSequence ofState(std::uint32_t state) noexcept
    {
        CRandomNumberSequence sequence;
        sequence.m_nState = state;
        return sequence;
    }

private:
    constexpr CRandomNumberSequence() noexcept = default;

    std::uint32_t m_nState = 1;  // always 1 modulo 4: a power of the multiplier
};
static_assert(sizeof(CRandomNumberSequence) == 4);
