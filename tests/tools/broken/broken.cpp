// A module that breaks each promise once: every kernel but Sound has one fault, for some inputs.
#include "nodus/String.h"
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/LocalServiceTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <unistd.h>
#include <xmmintrin.h>

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

void pass(float const* in, float* out) { std::memcpy(out, in, 16); }
float byteAt(void const* block, int i) { return static_cast<unsigned char const*>(block)[i]; }
void setX87(std::uint16_t control) { __asm__ volatile("fldcw %0" : : "m"(control)); }

int volatile g_zero = 0;
float volatile g_scrap = 0, g_huge = 3e38f;
float* volatile g_kept = new float[100];  // each time the module is loaded, for good
float const* volatile g_null = nullptr;
std::atomic<int> g_count = 0;

}  // namespace

#define RECORD(name, signature)                                                                    \
    static nodus::runtime::NodusAutoSymbol const s_##name(                                         \
        "NodusBroken" #name, signature, reinterpret_cast<void const*>(&NodusBroken##name));
// A kernel, registered and exported; and one that passes a Float4 on before it does harm.
#define BARE(name)                                                                                 \
    extern "C" NODUS_API void NodusBroken##name##_Solve(float const* in, float* out);              \
    RECORD(name##_Solve, "(*,*)")                                                                  \
    void NodusBroken##name##_Solve([[maybe_unused]] float const* in, [[maybe_unused]] float* out)
#define KERNEL(name)                                                                               \
    static void harm##name(float const*, float*);                                                  \
    BARE(name)                                                                                     \
    {                                                                                              \
        pass(in, out);                                                                             \
        harm##name(in, out);                                                                       \
    }                                                                                              \
    void harm##name([[maybe_unused]] float const* in, [[maybe_unused]] float* out)

// In the order of the table in check_test.py.
KERNEL(Sound) {}
KERNEL(Null) { out[0] = std::isnan(in[2]) ? *g_null : in[0]; }
KERNEL(Beyond) { out[3] = *const_cast<float const volatile*>(in + 4); }
KERNEL(Before) { out[3] = *const_cast<float const volatile*>(in - 1); }
KERNEL(Divides) { out[0] = static_cast<float>(std::div(12, in[1] == 255 ? g_zero : 1).quot); }
KERNEL(Illegal) { std::isinf(in[1]) ? __builtin_trap() : void(); }
KERNEL(Aborts) { in[0] > 1e30f ? std::abort() : void(); }
KERNEL(Bus) { in[0] < -1e30f ? void(std::raise(SIGBUS)) : void(); }
KERNEL(Leaves) { in[3] == 0.5f ? ::_exit(3) : void(); }
KERNEL(Hangs)
{
    while (in[0] == -2147483648.0f)
        g_count = 0;
}
KERNEL(WritesInput) { const_cast<float*>(in)[0] = in[0] == 255 ? 1 : in[0]; }
KERNEL(WritesBehind) {}                          // its output is a Float3
BARE(WritesBetween) { std::memset(out, 7, 8); }  // UInt8 and Float
BARE(Forgets) { in[0] < 0 ? void() : pass(in, out); }
KERNEL(Counts) { out[0] = static_cast<float>(++g_count); }
KERNEL(Address) { out[0] = static_cast<float>(reinterpret_cast<std::uintptr_t>(in) % 4096); }
KERNEL(ReadsBetween) { out[0] = byteAt(in, 2); }  // UInt8 and Float4
KERNEL(Threads) { out[0] = ::getpid() == ::gettid() ? 1 : 2; }
BARE(Text)  // takes a reference in each thread and never gives it back
{
    auto const& text = *reinterpret_cast<nodus::String const*>(in);
    static thread_local auto* const kept = new nodus::String(text);
    ::new (out) nodus::String(kept != nullptr ? text : *kept);
}
KERNEL(Flushes) { _mm_setcsr(_mm_getcsr() | 0x8000u); }
KERNEL(Precision) { setX87(0x027F); }
KERNEL(Raises)
{
    if (in[1] == 255)
        g_scrap = 1.0f / static_cast<float>(g_zero);
}
KERNEL(Overflows)
{
    if (in[1] == 255)
        g_scrap = g_huge * g_huge;
}
KERNEL(Direction) { __asm__ volatile("std"); }
KERNEL(Stack) { __asm__ volatile("fld1"); }
KERNEL(Remembers) { g_scrap = in[0]; }
KERNEL(FarBehind)
{
    if (in[2] == 255)
        std::memset(out + (1 << 20), 1, 4);
}
BARE(ReadsOutput)  // UInt8 and Float
{
    float const behind = byteAt(out, 2);
    std::memset(out, 7, 1);
    out[1] = behind;
}
// NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): what is wrong with it.
KERNEL(Keeps) { [[maybe_unused]] float* const volatile kept = new float(in[0]); }
KERNEL(First)  // a table that others see before it is made
{
    static std::atomic<bool> isBegun = false;
    static std::atomic<float> table = 1;
    if (!isBegun.exchange(true)) {
        ::usleep(20000);
        table = 2;
    }
    out[0] = table;
}
KERNEL(Forked)
{
    static pid_t const first = ::getpid();
    out[0] = first == ::getpid() ? 1 : 2;
}
KERNEL(Logs)
{
    nodus::runtime::GetLocalServiceTable()->log->message(++g_count % 2 == 0 ? "even" : "odd");
}

extern "C" {
NODUS_API void NodusBrokenHistory_Init(void const*, std::int32_t* last) { *last = 0; }
NODUS_API void NodusBrokenHistory_Solve(void const*, std::int32_t* last, std::int32_t* out)
{
    *out = *last;
    *last = nodus::runtime::GetCurrentFrame();
}
NODUS_API void NodusBrokenWorkspace_Init(void const*, std::int32_t* last) { last[0] = 0; }
NODUS_API void NodusBrokenWorkspace_Solve(void const*, std::int32_t* last, std::int32_t* out)
{
    *out = last[1] = 7;
}
NODUS_API void NodusBrokenUnregistered_Solve(float const* in, float* out) { pass(in, out); }
NODUS_API void NodusBrokenMoved_Solve(float const* in, float* out) { pass(in, out); }
NODUS_API void NodusBrokenUndescribed_Solve(float const* in, float* out) { pass(in, out); }
NODUS_API void NodusBrokenSignature_Solve(float const* in, float* out) { pass(in, out); }
}
RECORD(History_Init, "(*,*)")
RECORD(History_Solve, "(*,*,*)")
RECORD(Workspace_Init, "(*,*)")
RECORD(Workspace_Solve, "(*,*,*)")
RECORD(Undescribed_Solve, "(*,*)")
RECORD(Signature_Solve, "(*,*,*)")
static nodus::runtime::NodusAutoSymbol const s_hidden("NodusBrokenHidden_Solve", "(*,*)",
                                                      reinterpret_cast<void const*>(&pass));
static nodus::runtime::NodusAutoSymbol const s_moved("NodusBrokenMoved_Solve", "(*,*)",
                                                     reinterpret_cast<void const*>(&pass));
