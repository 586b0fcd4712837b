// The built module as a host meets it: loaded, registered in order, unloaded without a trace; what
// it exports, imports and needs.
#include "nodus/runtime/KernelTable.h"
#include "nodusmath/listed.h"
#include "support/command.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

using namespace nodus::runtime;
using nodus::test::kListed;
using nodus::test::linesOf;
using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

namespace {

// What the module offers beside its kernels.
std::vector<std::string> const kOtherExports = {
    "nodusmath_loadModule",
    "nodusmath_unloadModule",
    "_ZZNK5nodus6StringcvRKSsEvE7s_Empty",
    "_ZGVZNK5nodus6StringcvRKSsEvE7s_Empty",
    "_ZNK3qvr15CGRotationOrder3V2QERKNS_5_vec4E",
    "_ZNK3qvr15CGRotationOrder3Q2VERKNS_5_vec4E",
    "QvEulerAxis",
    "_ZN21CRandomNumberSequenceC1Ei",
    "_ZN21CRandomNumberSequenceC2Ei",
    "_ZNK21CRandomNumberSequenceixEi",
    "_ZN21CRandomNumberSequence7AdvanceEii",
};

class Module : public testing::Test {
protected:
    Module() : m_handle(dlopen(NODUSMATH_FILE, RTLD_NOW | RTLD_LOCAL)) {}
    ~Module() override { unload(); }

    void SetUp() override { ASSERT_NE(m_handle, nullptr) << dlerror(); }
    void unload()
    {
        if (m_handle != nullptr)
            dlclose(m_handle);
        m_handle = nullptr;
    }
    void* symbol(char const* name) { return dlsym(m_handle, name); }

private:
    void* m_handle;
};

}  // namespace

TEST_F(Module, RegistersEveryKernelOnceInTheOrderOfTheList)
{
    auto const kernels = registeredKernels();
    ASSERT_EQ(kernels.size(), kListed.size());
    for (std::size_t i = 0; i < kernels.size(); ++i) {
        std::string const& name = kListed[i];
        bool const isGenerator = name.find("RandomGenerator") != name.npos;
        EXPECT_EQ(kernels[i].name, name);
        EXPECT_EQ(kernels[i].signature,
                  isGenerator && name.ends_with("_Solve") ? "(*,*,*)" : "(*,*)");
        EXPECT_EQ(kernels[i].entry, symbol(name.c_str())) << name;
    }
    EXPECT_TRUE(duplicateKernels().empty());
}

TEST_F(Module, HooksDoNothing)
{
    for (char const* const name : {"nodusmath_loadModule", "nodusmath_unloadModule"}) {
        auto* const hook = reinterpret_cast<void (*)()>(symbol(name));
        ASSERT_NE(hook, nullptr) << name;
        hook();
        hook();
        EXPECT_EQ(registeredKernels().size(), kListed.size());
    }
}

TEST_F(Module, UnloadsWithoutATraceAndLoadsAgain)
{
    unload();
    EXPECT_TRUE(registeredKernels().empty());
    EXPECT_EQ(dlopen(NODUSMATH_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still mapped";
    void* const again = dlopen(NODUSMATH_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(again, nullptr) << dlerror();
    EXPECT_EQ(registeredKernels().size(), kListed.size());
    dlclose(again);
    EXPECT_TRUE(registeredKernels().empty());
}

#ifndef NODUSMATH_SANITIZED  // a sanitizer adds symbols of its own

TEST_F(Module, ExportsTheContractAndNothingElse)
{
    std::vector<std::string> expected = kOtherExports;
    expected.insert(expected.end(), kListed.begin(), kListed.end());
    EXPECT_THAT(linesOf("nm -D --defined-only --format=just-symbols '" NODUSMATH_FILE "'"),
                UnorderedElementsAreArray(expected));
}

// Of the host it takes four things; all else is the C and C++ libraries', whose symbols are
// versioned, or the tool chain's own weak ones.
TEST_F(Module, ImportsFourThingsOfTheHost)
{
    std::set<std::string> unversioned;
    for (std::string const& line :
         linesOf("nm -D --undefined-only --format=posix '" NODUSMATH_FILE "'")) {
        std::string const name = line.substr(0, line.find(' '));
        if (name.find('@') == std::string::npos && line.find(" w") == std::string::npos)
            unversioned.insert(name);
    }
    std::set<std::string> const allowed = {
        "_ZN5nodus7runtime15GetCurrentFrameEv", "_ZN5nodus7runtime20GetLocalServiceTableEv",
        "_ZN5nodus7runtime15NodusAutoSymbolC1EPKcS3_PKv", "_ZN5nodus7runtime15NodusAutoSymbolD1Ev"};
    for (std::string const& name : unversioned)
        EXPECT_TRUE(allowed.contains(name)) << name;
}

TEST_F(Module, NeedsTheRuntimeByItsPlainName)
{
    std::vector<std::string> needed, soname;
    for (std::string const& line : linesOf("readelf -d -W '" NODUSMATH_FILE "'")) {
        std::string const bracketed = line.substr(std::min(line.find('['), line.size()));
        if (line.find("(NEEDED)") != std::string::npos)
            needed.push_back(bracketed);
        if (line.find("(SONAME)") != std::string::npos)
            soname.push_back(bracketed);
    }
    EXPECT_EQ(std::count(needed.begin(), needed.end(), "[libcompute_runtime.so]"), 1);
    EXPECT_THAT(soname, ElementsAre("[libnodusmath.so]"));
    for (std::string const& library : needed)
        EXPECT_TRUE(library == "[libcompute_runtime.so]" || library.starts_with("[libstdc++.") ||
                    library.starts_with("[libm.") || library.starts_with("[libc.") ||
                    library.starts_with("[libgcc_s."))
            << library;
}

// One rounding an operation: no instruction may fuse a product and a sum, also where the processor
// could.
TEST_F(Module, FusesNoProductWithASum)
{
    for (char const* const file : {NODUSMATH_FILE, NODUSMATH_V3_FILE}) {
        auto const instructions =
            linesOf(std::string("objdump -d --no-show-raw-insn '") + file + "'");
        EXPECT_GT(instructions.size(), 1000u) << file;
        for (std::string const& line : instructions)
            EXPECT_EQ(line.find("vfm"), std::string::npos) << file << ": " << line;
    }
}

#endif
