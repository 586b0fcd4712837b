// A portable module: nothing in it whose bits depend on the processor or on the C library of the
// machine, and math functions that are as good as the C library's.
#include "library_errors.h"
#include "support/command.h"
#include "support/kernel_call.h"

#include <dlfcn.h>

#include <set>

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

template <typename T> void expectSmallErrors()
{
    for (auto const& function : kLibraryFunctions<T>)
        EXPECT_LE(errorsOf(function, 200'000).portable, function.error) << function.name;
}

template <typename T> void expectTheEdgesOfTheCLibrary()
{
    using Limits = std::numeric_limits<T>;
    T const edges[] = {0,
                       1,
                       2,
                       T(0.5),
                       Limits::infinity(),
                       Limits::quiet_NaN(),
                       Limits::denorm_min(),
                       Limits::min(),
                       Limits::max(),
                       3,
                       T(1e5)};
    for (auto const& function : kLibraryFunctions<T>)
        for (T const x : edges)
            for (T const y : edges)
                for (auto const& [a, b] : {std::pair(x, y), {-x, y}, {x, -y}, {-x, -y}}) {
                    T const is = function.portable(a, b), known = function.cLibrary(a, b);
                    if (std::isnan(known)) {
                        EXPECT_TRUE(std::isnan(is)) << function.name << " " << a << " " << b;
                    } else if (known == 0 || std::isinf(known)) {
                        EXPECT_EQ(bits(is), bits(known)) << function.name << " " << a << " " << b;
                    }
                }
}

}  // namespace

// Estimates, the x87's functions, and the questions by which a library chooses its code.
TEST(Portable, NoInstructionsThatDifferBetweenProcessors)
{
    std::set<std::string> const banned = {"rcp",   "rsqrt",  "vrcp",  "vrsqrt", "vfm",
                                          "vfnm",  "f2xm1",  "fyl2x", "fsin",   "fcos",
                                          "fptan", "fpatan", "fprem", "cpuid",  "xgetbv"};
    auto const instructions = linesOf("objdump -d --no-show-raw-insn '" PORTABLE_FILE "'");
    EXPECT_GT(instructions.size(), 10000u);
    for (std::string const& line : instructions)
        if (auto const tab = line.find('\t'); tab != line.npos) {
            std::string const name = line.substr(tab + 1);
            for (std::string const& start : banned)
                EXPECT_FALSE(name.starts_with(start)) << line;
        }
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

TEST(Portable, ErrorsOfFunctionsAreSmall)
{
    expectSmallErrors<float>();
    expectSmallErrors<double>();
}

TEST(Portable, FunctionsHaveTheEdgesOfTheCLibrary)
{
    expectTheEdgesOfTheCLibrary<float>();
    expectTheEdgesOfTheCLibrary<double>();
}
