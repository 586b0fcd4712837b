// What the ports of blocks hold and how kernels are called, in C (and in C++ all the same): for
// hosts that cannot read <nodusmath/values.h>, which says the same to C++. All angles are radians.
#ifndef NODUS_PORT_VALUES_H
#define NODUS_PORT_VALUES_H

#include <assert.h>
#include <stdalign.h>
#include <stddef.h>
#include <stdint.h>

// One byte; 0 is false, any other byte is true. Kernels that compute one write 0 or 1.
typedef uint8_t NodusBool;
typedef uint8_t NodusUInt8;
typedef int32_t NodusInt32;
typedef uint32_t NodusUInt32;
typedef float NodusFloat;
typedef double NodusDouble;

typedef struct NodusFloat2 {
    float x, y;
} NodusFloat2;

// Twelve bytes; there is no fourth lane.
typedef struct NodusFloat3 {
    float x, y, z;
} NodusFloat3;

typedef struct NodusFloat4 {
    alignas(16) float x;
    float y, z, w;
} NodusFloat4;

// Aligned like a float, unlike the other types of four lanes.
typedef struct NodusColor {
    float r, g, b, a;
} NodusColor;

// x, y, z the vector part, w the scalar part. A unit quaternion q rotates v as q v q*.
typedef struct NodusQuaternion {
    alignas(16) float x;
    float y, z, w;
} NodusQuaternion;

typedef struct NodusTranslation {
    alignas(16) float x;
    float y, z, w;
} NodusTranslation;

// Row i is the image of axis i, row 3 the translation; points are row vectors on the left.
typedef struct NodusMatrix4x4 {
    NodusFloat4 rows[4];
} NodusMatrix4x4;

// The transpose of a NodusMatrix4x4: translation in lanes 3, 7 and 11.
typedef struct NodusMat44Float {
    float lanes[16];
} NodusMat44Float;

// Scale, then rotate, then translate.
typedef struct NodusTQS {
    NodusTranslation t;
    NodusQuaternion q;
    NodusFloat4 s;
} NodusTQS;

// A shared reference to a text that nobody changes; all zero bytes are the null reference, which
// reads as the empty text. A host that never has a text needs no more than that. Others are made,
// read, copied and released by the functions of <nodus/runtime.h>, and never by copying the bytes.
typedef struct NodusString {
    void* text;
    void* owners;
} NodusString;

// NOLINTBEGIN(misc-redundant-expression): clang-tidy takes alignof for a second sizeof.
static_assert(sizeof(NodusFloat2) == 8 && alignof(NodusFloat2) == 4, "NodusFloat2");
static_assert(sizeof(NodusFloat3) == 12 && alignof(NodusFloat3) == 4, "NodusFloat3");
static_assert(sizeof(NodusFloat4) == 16 && alignof(NodusFloat4) == 16, "NodusFloat4");
static_assert(sizeof(NodusColor) == 16 && alignof(NodusColor) == 4, "NodusColor");
static_assert(sizeof(NodusQuaternion) == 16 && alignof(NodusQuaternion) == 16, "NodusQuaternion");
static_assert(sizeof(NodusTranslation) == 16 && alignof(NodusTranslation) == 16,
              "NodusTranslation");
static_assert(sizeof(NodusMatrix4x4) == 64 && alignof(NodusMatrix4x4) == 16, "NodusMatrix4x4");
static_assert(sizeof(NodusMat44Float) == 64 && alignof(NodusMat44Float) == 4, "NodusMat44Float");
static_assert(sizeof(NodusTQS) == 48 && alignof(NodusTQS) == 16, "NodusTQS");
static_assert(sizeof(NodusString) == 16 && alignof(NodusString) == 8, "NodusString");
// NOLINTEND(misc-redundant-expression)

// Entry points. Every block starts at a multiple of 16; the blocks of one call never overlap. They
// report nothing, answer every input, and may be called from any thread.
typedef void NodusSolve(void const* in, void* out);
typedef void NodusSolveWithWorkspace(void const* in, void* workspace, void* out);
// Called once on the workspace of a node, before anything else is.
typedef void NodusInit(void const* in, void* workspace);

#endif
