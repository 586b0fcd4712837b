// A portable module: nothing in it whose bits depend on the processor or on the C library of the
// machine, and math functions that are as good as the C library's. Its values are digests.
#include "library_errors.h"
#include "support/command.h"
#include "support/kernel_call.h"

#include <dlfcn.h>

using namespace nodus::test;

namespace {

bool isOfMathLibrary(std::string const& name)
{
    static void* const library = dlopen("libm.so.6", RTLD_NOW);
    Dl_info info{};
    void* const symbol = dlsym(library, name.c_str());
    return symbol != nullptr && dladdr(symbol, &info) != 0 &&
           std::string(info.dli_fname).find("libm.") != std::string::npos;
}

template <typename T> void expectSmallErrorsAndTheEdgesOfTheCLibrary()
{
    using Limits = std::numeric_limits<T>;
    T const wide[] = {Limits::infinity(), Limits::quiet_NaN(), Limits::max()};
    std::vector<T> edges = {0, 1, 2, 3, 0.5, 1e5, Limits::denorm_min(), Limits::min()};
    edges.insert(edges.end(), std::begin(wide), std::end(wide));
    for (auto const& function : kLibraryFunctions<T>) {
        EXPECT_LE(errorsOf(function, 200'000).portable, function.error) << function.name;
        for (T const x : edges)
            for (T const y : edges)
                for (auto const& [a, b] : {std::pair(x, y), {-x, y}, {x, -y}, {-x, -y}}) {
                    T const is = function.portable(a, b), known = function.cLibrary(a, b);
                    bool const isEdge = known == 0 || std::isinf(known);
                    EXPECT_TRUE(std::isnan(known) ? std::isnan(is)
                                                  : !isEdge || bits(is) == bits(known))
                        << function.name << " " << a << " " << b;
                }
    }
}

}  // namespace

// Estimates, the x87's functions, and the questions by which a library chooses its code.
TEST(Portable, NoInstructionsThatDifferBetweenProcessors)
{
    auto const instructions = linesOf("objdump -d --no-show-raw-insn '" PORTABLE_FILE "'");
    EXPECT_GT(instructions.size(), 10000u);
    for (std::string const& line : instructions)
        for (std::string const start :
             {"rcp", "rsqrt", "vrcp", "vrsqrt", "vfm", "vfnm", "f2xm1", "fyl2x", "fsin", "fcos",
              "fptan", "fpatan", "fprem", "cpuid", "xgetbv"})
            EXPECT_EQ(line.find('\t' + start), line.npos) << line;
    for (std::string const& line : linesOf("nm '" PORTABLE_FILE "'"))
        EXPECT_EQ(line.find(" i "), line.npos) << "chosen at load time: " << line;
}

TEST(Portable, NoMathOfTheCLibrary)
{
    ASSERT_TRUE(isOfMathLibrary("sin"));
    for (std::string const& line :
         linesOf("nm -D --undefined-only --format=just-symbols '" PORTABLE_FILE "'"))
        EXPECT_FALSE(isOfMathLibrary(line.substr(0, line.find('@')))) << line;
    for (std::string const& line : linesOf("readelf -d -W '" PORTABLE_FILE "'"))
        EXPECT_EQ(line.find("[libm."), line.npos) << line;
}

TEST(Portable, FunctionsHaveSmallErrorsAndTheEdgesOfTheCLibrary)
{
    expectSmallErrorsAndTheEdgesOfTheCLibrary<float>();
    expectSmallErrorsAndTheEdgesOfTheCLibrary<double>();
}

// Behind an estimate no other build has these bits: a product of 1e-6, the threshold, and the next.
TEST(Portable, SwingsAreScaledFromTheStepBehindTheThresholdOn)
{
    auto* const kernel = reinterpret_cast<Kernel*>(
        dlsym(dlopen(PORTABLE_FILE, RTLD_NOW), "NodusQuaternionToEuler_Solve"));
    ASSERT_NE(kernel, nullptr);
    float const w = 0.998999476f;
    EXPECT_EQ(call<Float4>(kernel, Quaternion{0, 0.0316193663f, 0.0316261798f, w}, 12).y,
              0.06324601f);
    EXPECT_EQ(call<Float4>(kernel, Quaternion{0, 0.0316198133f, 0.0316257402f, w}, 12).y,
              0.06366563f);
}
