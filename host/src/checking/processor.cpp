// The processor's state: of x86-64 all of it, of AArch64 the floating-point control register,
// elsewhere what the C library knows.
#include "processor.h"

#if defined(__x86_64__)
#include <immintrin.h>
#else
#include <cfenv>
#endif

namespace nodus::host {

#if defined(__x86_64__)

ProcessorState processorState()
{
    constexpr unsigned kExceptions = 0x3F;
    constexpr std::uint64_t kDirection = 0x400, kAlignmentCheck = 0x40000;
    // As fnstenv writes it in 64-bit mode; in the tags, two bits a register, 3 is empty.
    struct {
        std::uint16_t control, unused0, status, unused1, tags, unused2;
        std::uint32_t pointers[4];
    } x87;
    std::uint64_t const flags = __builtin_ia32_readeflags_u64() & (kDirection | kAlignmentCheck);
    // fnstenv masks all traps behind itself.
    __asm__ volatile("cld\n\tfnstenv %0\n\tfldcw %0" : "=m"(x87));
    unsigned const mxcsr = _mm_getcsr();
    ProcessorState state{{mxcsr & ~kExceptions, x87.control, flags}, x87.tags == 0xFFFF};
    state.invalid = (mxcsr & _MM_EXCEPT_INVALID) != 0;
    state.dividesByZero = (mxcsr & _MM_EXCEPT_DIV_ZERO) != 0;
    state.overflows = (mxcsr & _MM_EXCEPT_OVERFLOW) != 0;
    return state;
}

void restoreProcessor(ProcessorState const& state)
{
    constexpr std::uint64_t kAlignmentCheck = 0x40000;
    auto const control = static_cast<std::uint16_t>(state.control[1]);
    __asm__ volatile("fninit\n\tfldcw %0" : : "m"(control));
    _mm_setcsr(static_cast<unsigned>(state.control[0]));
    __builtin_ia32_writeeflags_u64(__builtin_ia32_readeflags_u64() & ~kAlignmentCheck);
}

void clearExceptions() { _MM_SET_EXCEPTION_STATE(0); }

#else

ProcessorState processorState()
{
    ProcessorState state{{static_cast<std::uint64_t>(std::fegetround())}};
#ifdef __aarch64__
    __asm__ volatile("mrs %0, fpcr" : "=r"(state.control[1]));
#endif
    state.invalid = std::fetestexcept(FE_INVALID) != 0;
    state.dividesByZero = std::fetestexcept(FE_DIVBYZERO) != 0;
    state.overflows = std::fetestexcept(FE_OVERFLOW) != 0;
    return state;
}

void restoreProcessor(ProcessorState const& state)
{
#ifdef __aarch64__
    __asm__ volatile("msr fpcr, %0" : : "r"(state.control[1]));
#endif
    std::fesetround(static_cast<int>(state.control[0]));
}

void clearExceptions() { std::feclearexcept(FE_ALL_EXCEPT); }

#endif

}  // namespace nodus::host
