// rand as the GNU C library has it, which noise draws its tables from: the additive feedback
// generator x^31 + x^3 + 1 (Knuth, "The Art of Computer Programming", volume 2, 3.2.2), started by
// the minimal standard one (Park and Miller, "Random Number Generators: Good Ones Are Hard to
// Find", 1988).
#include <cstdint>
#include <cstdlib>

namespace {

constexpr int kDegree = 31, kSeparation = 3, kDiscarded = 310;

struct Generator {
    std::uint32_t state[kDegree];
    int at;

    constexpr explicit Generator(unsigned seed) : state{}, at(kSeparation)
    {
        auto word = static_cast<std::int32_t>(seed == 0 ? 1 : seed);
        for (std::uint32_t& each : state) {
            each = static_cast<std::uint32_t>(word);
            word = static_cast<std::int32_t>(std::int64_t{16807} * word % 2147483647);
            if (word < 0)
                word += 2147483647;
        }
        for (int i = 0; i < kDiscarded; ++i)
            next();
    }
    constexpr int next()
    {
        std::uint32_t& front = state[at];
        front += state[(at + kDegree - kSeparation) % kDegree];
        at = (at + 1) % kDegree;
        return static_cast<int>(front >> 1);
    }
};

constinit Generator g_generator{1};

}  // namespace

extern "C" {

void srand(unsigned seed) { g_generator = Generator(seed); }
int rand() { return g_generator.next(); }

}  // extern "C"
