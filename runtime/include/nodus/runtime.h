// The runtime for hosts in C, and in every language that can call C: the frame and the services of
// a thread, the kernels that loaded modules have, and texts. No function throws.
#ifndef NODUS_RUNTIME_H
#define NODUS_RUNTIME_H

#include "nodus/Export.h"
#include "nodus/port_values.h"

#ifdef __cplusplus
#define NODUS_NOEXCEPT noexcept
extern "C" {
#else
#define NODUS_NOEXCEPT
#endif

// What a host lends to kernels. Read by any number of threads at a time.
typedef struct NodusServices NodusServices;

// Called for each message of a logging kernel, on the thread that evaluates it and before the
// kernel returns; there nodusCurrentFrame() is its frame. The text, at most 511 characters and a
// NUL, lives only during the call.
typedef void NodusLog(void* context, char const* text);

// Services whose messages go to log, with that context. Null when there is no memory.
NODUS_API NodusServices* nodusMakeServices(NodusLog* log, void* context) NODUS_NOEXCEPT;
// No thread may have them any more. Null is nothing.
NODUS_API void nodusReleaseServices(NodusServices* services) NODUS_NOEXCEPT;

// From now on, kernels called on this thread see this frame and these services; null are none. It
// holds until the next call of this thread; an EvaluationScope in C++ that is opened later ends
// with what held before it. A new thread has frame 0 and no services.
NODUS_API void nodusSetEvaluation(int32_t frame, NodusServices const* services) NODUS_NOEXCEPT;
NODUS_API int32_t nodusCurrentFrame(void) NODUS_NOEXCEPT;

// One registered kernel; all of it lives as long as its module stays loaded.
typedef struct NodusKernel {
    char const* name;       // "NodusAdd_Float3_Solve"
    char const* signature;  // one '*' for each block: "(*,*)"
    void (*entry)(void);    // to be cast to NodusSolve*, NodusSolveWithWorkspace* or NodusInit*
} NodusKernel;

// Any thread may call both, also while a module loads elsewhere.

// Writes the kernel of that name and returns 1; without one, returns 0 and writes nothing.
NODUS_API int nodusFindKernel(char const* name, NodusKernel* kernel) NODUS_NOEXCEPT;
// Calls visit for every kernel in the order of registration, until it does not return 0. Returns
// how many it was called for; 0, too, when there is no memory.
NODUS_API size_t nodusWalkKernels(int (*visit)(void* context, NodusKernel const* kernel),
                                  void* context) NODUS_NOEXCEPT;

// Texts. A NodusString in memory that has just been made is all zero bytes, the null reference;
// whatever a function writes to one releases what it referred to before. Any threads may read the
// same reference; each has references of its own to write.

// Makes string refer to a copy of that many bytes. 1, or 0 when there is no memory: nothing
// changed.
NODUS_API int nodusMakeString(NodusString* string, char const* text, size_t length) NODUS_NOEXCEPT;
// Makes to refer to the same text as from.
NODUS_API void nodusShareString(NodusString* to, NodusString const* from) NODUS_NOEXCEPT;
// Makes string the null reference. Whoever made or received a reference calls this in the end.
NODUS_API void nodusReleaseString(NodusString* string) NODUS_NOEXCEPT;
// The text, never null, with a NUL behind it; its length goes to length unless that is null. It
// lives as long as some reference to it does.
NODUS_API char const* nodusTextOf(NodusString const* string, size_t* length) NODUS_NOEXCEPT;

#ifdef __cplusplus
}
#endif
#undef NODUS_NOEXCEPT

#endif
