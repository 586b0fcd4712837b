// Measures the portable math library beside the C library, errors and times, and prints them as a
// Markdown table.
#include "library_errors.h"

#include <array>
#include <chrono>
#include <cstdio>

using namespace nodus::test;

namespace {

template <typename T> using Arguments = std::array<T, 4096>;

// The fastest pass over the arguments.
template <typename T> double secondsOf(Function<T> const& function, Arguments<T> const& arguments)
{
    using Clock = std::chrono::steady_clock;
    auto fastest = Clock::duration::max();
    for (int pass = 0; pass < 200; ++pass) {
        T sum = 0;
        auto const start = Clock::now();
        for (std::size_t i = 1; i < arguments.size(); ++i)
            sum += function(arguments[i], arguments[i - 1]);
        fastest = std::min(fastest, Clock::now() - start);
        asm volatile("" : : "x"(sum));
    }
    return std::chrono::duration<double>(fastest).count();
}

template <typename T> void printColumns(LibraryFunction<T> const& function)
{
    LibraryErrors const errors = errorsOf(function, 10'000'000);
    Arguments<T> arguments;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        arguments[i] = function.lowest + (function.highest - function.lowest) *
                                             static_cast<T>(i * 2654435761u % 4096 + 1) / 4096;
    double const times =
        secondsOf(function.portable, arguments) / secondsOf(function.cLibrary, arguments);
    std::printf(" %.3f | %.3f | %.1f |", errors.portable, errors.cLibrary, times);
    std::fflush(stdout);
}

}  // namespace

int main()
{
    std::puts("| function | `Float`: portable | C library | time | `Double`: portable | C library "
              "| time |\n"
              "|---|---|---|---|---|---|---|");
    for (std::size_t i = 0; i < std::size(kLibraryFunctions<float>); ++i) {
        std::printf("| `%s` |", kLibraryFunctions<float>[i].name);
        printColumns(kLibraryFunctions<float>[i]);
        printColumns(kLibraryFunctions<double>[i]);
        std::puts("");
    }
}
