// The processor's floating-point unit as calls must leave it: how it is set, and which exceptions
// it has seen.
#pragma once

#include <cfenv>
#include <cstdint>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace nodus::host {

#ifdef __x86_64__

// Rounding, traps, flushing of subnormals; the x87 unit's precision and rounding; the direction of
// string instructions.
struct ControlState {
    unsigned mxcsr;
    std::uint16_t x87;
    std::uint64_t flags;
    bool operator==(ControlState const&) const = default;
};

inline ControlState controlState()
{
    constexpr unsigned kSseExceptionFlags = 0x3F;
    constexpr std::uint64_t kDirection = 0x400, kAlignmentCheck = 0x40000;
    ControlState state{_mm_getcsr() & ~kSseExceptionFlags, 0,
                       __builtin_ia32_readeflags_u64() & (kDirection | kAlignmentCheck)};
    __asm__ volatile("fnstcw %0" : "=m"(state.x87));
    return state;
}

inline void restore(ControlState const& state)
{
    _mm_setcsr(state.mxcsr);
    __asm__ volatile("fldcw %0\n\tcld" : : "m"(state.x87));
}

inline void clearExceptions() { _MM_SET_EXCEPTION_STATE(0); }
inline bool raisedInvalid() { return (_MM_GET_EXCEPTION_STATE() & _MM_EXCEPT_INVALID) != 0; }
inline bool raisedDivisionByZero()
{
    return (_MM_GET_EXCEPTION_STATE() & _MM_EXCEPT_DIV_ZERO) != 0;
}

#else

// Rounding, and where C++ can be told no more than that, nothing else; of AArch64 the whole control
// register, with traps and the flushing of subnormals.
struct ControlState {
    int rounding;
    std::uint64_t control;
    bool operator==(ControlState const&) const = default;
};

inline ControlState controlState()
{
    ControlState state{std::fegetround(), 0};
#ifdef __aarch64__
    __asm__ volatile("mrs %0, fpcr" : "=r"(state.control));
#endif
    return state;
}

inline void restore(ControlState const& state)
{
#ifdef __aarch64__
    __asm__ volatile("msr fpcr, %0" : : "r"(state.control));
#endif
    std::fesetround(state.rounding);
}

inline void clearExceptions() { std::feclearexcept(FE_ALL_EXCEPT); }
inline bool raisedInvalid() { return std::fetestexcept(FE_INVALID) != 0; }
inline bool raisedDivisionByZero() { return std::fetestexcept(FE_DIVBYZERO) != 0; }

#endif

}  // namespace nodus::host
