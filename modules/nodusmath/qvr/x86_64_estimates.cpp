// The estimates of x86-64 for loops that a compiler has made vectors of: under the names by which
// it calls a function for four, eight and sixteen lanes (the vector function ABI of x86-64).
#include "x86_64.h"

#include <immintrin.h>

#define QVR_ESTIMATE(name, instruction)                                                            \
    float name(float v) noexcept { return _mm_cvtss_f32(_mm_##instruction##_ss(_mm_set_ss(v))); }  \
    __m128 _ZGVbN4v_##name(__m128 v) noexcept { return _mm_##instruction##_ps(v); }                \
    [[gnu::target("avx")]] __m256 _ZGVcN8v_##name(__m256 v) noexcept                               \
    {                                                                                              \
        return _mm256_##instruction##_ps(v);                                                       \
    }                                                                                              \
    [[gnu::target("avx2")]] __m256 _ZGVdN8v_##name(__m256 v) noexcept                              \
    {                                                                                              \
        return _mm256_##instruction##_ps(v);                                                       \
    }                                                                                              \
    /* AVX-512 has other estimates: these are those of the halves. */                              \
    [[gnu::target("avx512f")]] __m512 _ZGVeN16v_##name(__m512 v) noexcept                          \
    {                                                                                              \
        __m256 const first = __builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7);                \
        __m256 const last = __builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15);           \
        return __builtin_shufflevector(_mm256_##instruction##_ps(first),                           \
                                       _mm256_##instruction##_ps(last), 0, 1, 2, 3, 4, 5, 6, 7, 8, \
                                       9, 10, 11, 12, 13, 14, 15);                                 \
    }

extern "C" {
QVR_ESTIMATE(qvr_reciprocal, rcp)
QVR_ESTIMATE(qvr_reciprocal_root, rsqrt)
}
