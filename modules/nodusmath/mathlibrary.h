// The math functions that kernels call: the C library's, or in a portable build those of a library
// that is linked into the module and computes the same bits on every processor.
#pragma once

#ifndef NODUSMATH_PORTABLE

#include <cmath>

namespace nodusmath::library {

using std::acos;
using std::asin;
using std::atan2;
using std::ceil;
using std::cos;
using std::exp;
using std::floor;
using std::fmod;
using std::log;
using std::log10;
using std::pow;
using std::sin;
using std::tan;

// An extension of the GNU C library and others.
inline void sincos(float v, float& sine, float& cosine) noexcept { ::sincosf(v, &sine, &cosine); }

// The exponential itself in extended precision.
inline double extendedExp(double v) noexcept
{
    return static_cast<double>(std::exp(static_cast<long double>(v)));
}

}  // namespace nodusmath::library

#else

#include "extended.h"

#include <bit>
#include <cstdint>

namespace nodusmath::library {

double acos(double) noexcept asm("portable_acos");
double asin(double) noexcept asm("portable_asin");
double atan2(double, double) noexcept asm("portable_atan2");
double cos(double) noexcept asm("portable_cos");
double exp(double) noexcept asm("portable_exp");
double fmod(double, double) noexcept asm("portable_fmod");
double log(double) noexcept asm("portable_log");
double log10(double) noexcept asm("portable_log10");
double pow(double, double) noexcept asm("portable_pow");
double sin(double) noexcept asm("portable_sin");
double tan(double) noexcept asm("portable_tan");

// These hand a signalling NaN on as it is. It is quieted by its bit: of a sum of NaN not every
// processor keeps the others.
double wholeAbove(double) noexcept asm("portable_ceil");
double wholeBelow(double) noexcept asm("portable_floor");
inline double quieted(double nan) noexcept
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(nan) | 0x0008000000000000u);
}
inline double ceil(double v) noexcept { return v == v ? wholeAbove(v) : quieted(v); }
inline double floor(double v) noexcept { return v == v ? wholeBelow(v) : quieted(v); }

float acos(float) noexcept asm("portable_acosf");
float asin(float) noexcept asm("portable_asinf");
float atan2(float, float) noexcept asm("portable_atan2f");
float cos(float) noexcept asm("portable_cosf");
float exp(float) noexcept asm("portable_expf");
float fmod(float, float) noexcept asm("portable_fmodf");
float log(float) noexcept asm("portable_logf");
float log10(float) noexcept asm("portable_log10f");
float pow(float, float) noexcept asm("portable_powf");
float sin(float) noexcept asm("portable_sinf");
float tan(float) noexcept asm("portable_tanf");
void sincosPointers(float, float*, float*) noexcept asm("portable_sincosf");
inline void sincos(float v, float& sine, float& cosine) noexcept
{
    sincosPointers(v, &sine, &cosine);
}

inline double extendedExp(double v) noexcept { return exponentialByExtended(v); }

}  // namespace nodusmath::library

#endif
