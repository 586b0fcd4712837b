// The functions of the portable math library beside those of the C library: their errors in units
// of the last place, and their answers at the edges.
#pragma once

#include "mathlibrary.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <span>

namespace nodus::test {

// Functions of one argument leave the second alone.
template <typename T> struct LibraryFunction {
    char const* name;
    T (*portable)(T, T);
    T (*cLibrary)(T, T);
    long double (*truth)(long double, long double);
    T lowest, highest;  // of half of the arguments; the others have any bits
    double error;       // in units of the last place, not exceeded
};

namespace portable = nodusmath::library;
using Long = long double;

template <typename T>
inline constexpr LibraryFunction<T> kLibraryFunctions[] = {
    {"sin", [](T x, T) { return portable::sin(x); }, [](T x, T) { return std::sin(x); },
     [](Long x, Long) { return std::sin(x); }, -7, 7, 1},
    {"cos", [](T x, T) { return portable::cos(x); }, [](T x, T) { return std::cos(x); },
     [](Long x, Long) { return std::cos(x); }, -7, 7, 1},
    {"tan", [](T x, T) { return portable::tan(x); }, [](T x, T) { return std::tan(x); },
     [](Long x, Long) { return std::tan(x); }, -7, 7, 1},
    {"asin", [](T x, T) { return portable::asin(x); }, [](T x, T) { return std::asin(x); },
     [](Long x, Long) { return std::asin(x); }, -1, 1, 1},
    {"acos", [](T x, T) { return portable::acos(x); }, [](T x, T) { return std::acos(x); },
     [](Long x, Long) { return std::acos(x); }, -1, 1, 1},
    {"atan2", [](T y, T x) { return portable::atan2(y, x); },
     [](T y, T x) { return std::atan2(y, x); }, [](Long y, Long x) { return std::atan2(y, x); }, -2,
     2, 1.5},
    {"exp", [](T x, T) { return portable::exp(x); }, [](T x, T) { return std::exp(x); },
     [](Long x, Long) { return std::exp(x); }, -20, 20, 1},
    {"exp, extended", [](T x, T) { return static_cast<T>(portable::exp(static_cast<Long>(x))); },
     [](T x, T) { return static_cast<T>(std::exp(static_cast<Long>(x))); },
     [](Long x, Long) { return std::exp(x); }, -745, 710, 0.51},
    {"log", [](T x, T) { return portable::log(x); }, [](T x, T) { return std::log(x); },
     [](Long x, Long) { return std::log(x); }, 0, 4, 1},
    {"log10", [](T x, T) { return portable::log10(x); }, [](T x, T) { return std::log10(x); },
     [](Long x, Long) { return std::log10(x); }, 0, 4, 1.5},
    {"pow", [](T x, T y) { return portable::pow(x, y); }, [](T x, T y) { return std::pow(x, y); },
     [](Long x, Long y) { return std::pow(x, y); }, 0, 20, 1},
    {"fmod", [](T x, T y) { return portable::fmod(x, y); },
     [](T x, T y) { return std::fmod(x, y); }, [](Long x, Long y) { return std::fmod(x, y); }, -20,
     20, 0},
};

// In units of the last place of a T at the truth; infinite where one is infinite or NaN and the
// other is not the same.
template <typename T> double errorOf(T is, Long truth)
{
    T const rounded = static_cast<T>(truth);
    if (!std::isfinite(rounded) || !std::isfinite(is))
        return (std::isnan(is) && std::isnan(rounded)) || is == rounded
                   ? 0
                   : std::numeric_limits<double>::infinity();
    using Limits = std::numeric_limits<T>;
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
