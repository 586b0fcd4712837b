// A module beside ours: a family of its own, and one more type for a family that ours has too.
#include "nodus/runtime/NodusAutoSymbol.h"

extern "C" {
NODUS_API void NodusTwice_Float_Solve(float const* in, float* out) { *out = *in * 2; }
NODUS_API void NodusAdd_Bool_Solve(bool const* in, bool* out) { *out = in[0] != in[1]; }
}
#define RECORD(name)                                                                               \
    static nodus::runtime::NodusAutoSymbol const s_##name(#name, "(*,*)",                          \
                                                          reinterpret_cast<void const*>(&name));
RECORD(NodusTwice_Float_Solve)
RECORD(NodusAdd_Bool_Solve)
