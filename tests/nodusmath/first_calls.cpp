// The first noise and the first random numbers of a process, from eight threads at once. Its one
// argument seeds rand. Exit status 0: all threads saw the tables which that seed gives, complete.
#include "nodusmath/reference_noise.h"

#include "kernels.h"
#include "randomgenerator.h"
#include "randomsequence.h"

#include <atomic>
#include <barrier>
#include <bit>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 8;

struct Point {
    alignas(16) float lanes[4];
};

template <typename Kernel> float call(Kernel* kernel, Point const& position)
{
    Point out;
    kernel(position.lanes, out.lanes);
    return out.lanes[0];
}

bool same(float a, float b)
{
    return (std::isnan(a) && std::isnan(b)) ||
           std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// Each thread begins with another kernel and another corner of the lattice.
bool agrees(nodus::test::ReferenceNoise const& reference, int thread)
{
    bool agreed = true;
    for (int i = thread; i < thread + 400; ++i) {
        float const x = static_cast<float>(i * 37 % 256) + 0.25f;
        float const y = static_cast<float>(i * 91) - 300.5f, z = static_cast<float>(i / 4);
        Point const position{{x, y, z, 0}};
        if (i % 3 == 0)
            agreed &= same(call(NodusNoise1D_Solve, position), reference.at(x));
        else if (i % 3 == 1)
            agreed &= same(call(NodusNoise2D_Solve, position), reference.at(x, y));
        else
            agreed &= same(call(NodusNoise3D_Solve, position), reference.at(x, y, z));
    }
    return agreed;
}

bool startsRight(int thread)
{
    alignas(16) std::int32_t const seed[4] = {thread};
    binary::Math::RandomGenerator_Workspace workspace;
    NodusRandomGenerator_Bool_Init(seed, &workspace);
    CRandomNumberSequence const expected(CRandomNumberSequence(1911660)[thread] + 12345);
    return workspace.m_nLastIndex == 0 && workspace.m_nLastValue == expected[0];
}

}  // namespace

int main(int, char** arguments)
{
    auto const seed = static_cast<unsigned>(std::atoi(arguments[1]));
    std::srand(seed);
    nodus::test::ReferenceNoise const reference;
    std::srand(seed);

    std::barrier line(kThreads);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            line.arrive_and_wait();
            bool const noiseFirst = thread % 2 == 0;
            bool agreed = noiseFirst ? agrees(reference, thread) : startsRight(thread);
            agreed &= noiseFirst ? startsRight(thread) : agrees(reference, thread);
            wrong += !agreed;
        });
    for (std::thread& thread : threads)
        thread.join();
    return wrong;
}
