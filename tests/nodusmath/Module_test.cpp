// The built module as a host meets it: loaded, registered in order, unloaded without a trace. What
// it exports, imports and needs is held by tests/contract.
#include "nodus/runtime/KernelTable.h"
#include "nodusmath/listed.h"
#include "support/command.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

using namespace nodus::runtime;
using nodus::test::kListed;

TEST(Module, RegistersEveryKernelInTheOrderOfTheListAndUnloadsWithoutATrace)
{
    for (int time = 0; time < 2; ++time) {
        void* const module = dlopen(NODUS_TEST_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        auto const kernels = registeredKernels();
        ASSERT_EQ(kernels.size(), kListed.size());
        for (std::size_t i = 0; i < kernels.size(); ++i) {
            std::string const& name = kListed[i];
            bool const isGenerator = name.find("RandomGenerator") != name.npos;
            EXPECT_EQ(kernels[i].name, name);
            EXPECT_EQ(kernels[i].signature,
                      isGenerator && name.ends_with("_Solve") ? "(*,*,*)" : "(*,*)");
            EXPECT_EQ(kernels[i].entry, dlsym(module, name.c_str())) << name;
        }
        EXPECT_TRUE(duplicateKernels().empty());
        // The hooks of the host's loader do nothing.
        for (char const* const name : {"nodusmath_loadModule", "nodusmath_unloadModule"})
            reinterpret_cast<void (*)()>(dlsym(module, name))();
        EXPECT_EQ(registeredKernels().size(), kListed.size());
        dlclose(module);
        EXPECT_TRUE(registeredKernels().empty());
        EXPECT_EQ(dlopen(NODUS_TEST_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still mapped";
    }
}

#ifndef NODUS_TEST_SANITIZED  // a sanitizer adds instructions of its own

// One rounding an operation: no instruction may fuse a product and a sum, also where the processor
// could.
TEST(Module, FusesNoProductWithASum)
{
    for (std::string const file : {NODUS_TEST_MODULE, NODUSMATH_NEWER_FILE}) {
        auto const instructions =
            nodus::test::linesOf(OBJDUMP " -d --no-show-raw-insn '" + file + "'");
        EXPECT_GT(instructions.size(), 1000u) << file;
        for (std::string const& line : instructions)
            for (char const* const fused : {"\tvfm", "\tvfnm", "\tfmadd", "\tfmsub", "\tfnmadd",
                                            "\tfnmsub", "\tfmla", "\tfmls"})
                EXPECT_EQ(line.find(fused), std::string::npos) << file << ": " << line;
    }
}

#endif
