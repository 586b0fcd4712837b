// The first noise and the first random numbers of a process, from eight threads at once. Its one
// argument seeds rand, from which noise draws its tables. Exit status 0: all threads saw what later
// calls see. Prints how many cells of Noise2D have NaN, and a value of Noise1D.
#include "kernels.h"
#include "randomgenerator.h"

#include <barrier>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 8;
using Values = std::vector<std::uint32_t>;

template <typename Kernel> std::uint32_t noise(Kernel* kernel, float x, float y, float z)
{
    alignas(16) float const in[4] = {x, y, z, 0};
    alignas(16) float out[4];
    kernel(in, out);
    return std::isnan(out[0]) ? ~0u : std::bit_cast<std::uint32_t>(out[0]);
}

std::uint32_t firstNumber(std::int32_t seedOfNode)
{
    alignas(16) std::int32_t const seed[4] = {seedOfNode};
    binary::Math::RandomGenerator_Workspace workspace;
    NodusRandomGenerator_Bool_Init(seed, &workspace);
    return static_cast<std::uint32_t>(workspace.m_nLastValue);
}

// Each thread begins with another kernel and another corner of the lattice.
Values valuesOf(int thread)
{
    Values values;
    if (thread % 2 == 1)
        values.push_back(firstNumber(thread));
    for (int i = thread; i < thread + 400; ++i) {
        auto* const kernel = i % 3 == 0   ? NodusNoise1D_Solve
                             : i % 3 == 1 ? NodusNoise2D_Solve
                                          : NodusNoise3D_Solve;
        values.push_back(noise(kernel, static_cast<float>(i * 37 % 256) + 0.25f,
                               static_cast<float>(i * 91) - 300.5f, static_cast<float>(i / 4)));
    }
    if (thread % 2 == 0)
        values.push_back(firstNumber(thread));
    return values;
}

}  // namespace

int main(int, char** arguments)
{
    std::srand(static_cast<unsigned>(std::atoi(arguments[1])));
    std::barrier line(kThreads);
    Values seen[kThreads];
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&line, &seen, thread] {
            line.arrive_and_wait();
            seen[thread] = valuesOf(thread);
        });
    for (std::thread& thread : threads)
        thread.join();

    // These positions lie next to every gradient of the table.
    int none = 0;
    for (int cell = 0; cell < 256; ++cell)
        none += noise(NodusNoise2D_Solve, static_cast<float>(cell) + 0.5f, 0.5f, 0) == ~0u;
    std::printf("%d NaN, %a\n", none,
                double{std::bit_cast<float>(noise(NodusNoise1D_Solve, 0.5f, 0, 0))});
    for (int thread = 0; thread < kThreads; ++thread)
        if (seen[thread] != valuesOf(thread))
            return 1;
    return 0;
}
