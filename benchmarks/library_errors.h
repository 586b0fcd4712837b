// The functions of the portable math library beside those of the C library: their errors in units
// of the last place, and their answers at the edges.
#pragma once

#include "mathlibrary.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace nodus::test {

namespace portable = nodusmath::library;
using Long = long double;

// Of one argument, or of two; the second is left alone by the first kind.
template <typename T> struct Function {
    constexpr Function(T (*function)(T)) : one(function) {}
    constexpr Function(T (*function)(T, T)) : two(function) {}
    T operator()(T x, T y) const { return one != nullptr ? one(x) : two(x, y); }
    T (*one)(T) = nullptr;
    T (*two)(T, T) = nullptr;
};

template <typename T> struct LibraryFunction {
    char const* name;
    Function<T> portable, cLibrary;
    Function<Long> truth;
    T lowest, highest;  // of half of the arguments; the others have any bits
    double error;       // in units of the last place, not exceeded
};

template <typename T> T extended(T x) { return static_cast<T>(portable::extendedExp(x)); }
template <typename T> T rounded(T x) { return static_cast<T>(std::exp(static_cast<Long>(x))); }

template <typename T>
inline constexpr LibraryFunction<T> kLibraryFunctions[] = {
    {"sin", portable::sin, std::sin, std::sin, -7, 7, 1},
    {"cos", portable::cos, std::cos, std::cos, -7, 7, 1},
    {"tan", portable::tan, std::tan, std::tan, -7, 7, 1},
    {"asin", portable::asin, std::asin, std::asin, -1, 1, 1},
    {"acos", portable::acos, std::acos, std::acos, -1, 1, 1},
    {"atan2", portable::atan2, std::atan2, std::atan2, -2, 2, 1.5},
    {"exp", portable::exp, std::exp, std::exp, -20, 20, 1},
    {"exp, extended", extended<T>, rounded<T>, std::exp, -745, 710, 0.51},
    {"log", portable::log, std::log, std::log, 0, 4, 1},
    {"log10", portable::log10, std::log10, std::log10, 0, 4, 1.5},
    {"pow", portable::pow, std::pow, std::pow, 0, 20, 1},
    {"fmod", portable::fmod, std::fmod, std::fmod, -20, 20, 0},
};

// In units of the last place of a T at the truth; infinite where one is infinite or NaN and the
// other is not the same.
template <typename T> double errorOf(T is, Long truth)
{
    using Limits = std::numeric_limits<T>;
    T const rounded = static_cast<T>(truth);
    if (!std::isfinite(rounded) || !std::isfinite(is))
        return (std::isnan(is) && std::isnan(rounded)) || is == rounded
                   ? 0
                   : std::numeric_limits<double>::infinity();
    int const exponent = rounded == 0 ? Limits::min_exponent - 1
                                      : std::max(std::ilogb(rounded), Limits::min_exponent - 1);
    return static_cast<double>(std::abs(is - truth) /
                               std::ldexp(1.0L, exponent - Limits::digits + 1));
}

// The largest errors of both libraries over random arguments.
struct LibraryErrors {
    double portable = 0, cLibrary = 0;
};
template <typename T> LibraryErrors errorsOf(LibraryFunction<T> const& function, int count)
{
    std::mt19937_64 random(1);
    auto const argument = [&](bool isInRange) {
        std::uint64_t const any = random();
        T value;
        std::memcpy(&value, &any, sizeof value);
        T const part = static_cast<T>(any >> 11) * static_cast<T>(0x1p-53);
        return isInRange ? function.lowest + part * (function.highest - function.lowest) : value;
    };
    LibraryErrors errors;
    for (int i = 0; i < count; ++i) {
        T const x = argument(i % 2 == 0), y = argument(i % 2 == 0);
        Long const truth = function.truth(x, y);
        errors.portable = std::max(errors.portable, errorOf(function.portable(x, y), truth));
        errors.cLibrary = std::max(errors.cLibrary, errorOf(function.cLibrary(x, y), truth));
    }
    return errors;
}

}  // namespace nodus::test
