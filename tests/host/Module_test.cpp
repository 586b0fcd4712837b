// Loading modules and catalogues: what is refused, and how.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/runtime/KernelTable.h"

#include <filesystem>
#include <fstream>

using namespace fixtures;
namespace fs = std::filesystem;

namespace {

std::string builtCatalogue()
{
    fs::path const path = fs::path(NODUS_TEST_MODULE).parent_path() / "nodusmath.json";
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The faults of the built module with this text as its catalogue; the folder is cut off.
std::string faultsWith(std::string const& text)
{
    support::TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    folder.write("nodusmath.json", text);
    std::string told = faultsOf([&] {
        // Its kernels must not be in two modules: this test loads no other.
        Module const module(folder / "libnodusmath.so");
        Module const* const modules[] = {&module};
        Catalogue const read(modules);
    });
    for (auto at = told.find(folder / ""); at != told.npos; at = told.find(folder / ""))
        told.erase(at, (folder / "").size());
    return told;
}

std::string replaced(std::string text, std::string const& from, std::string const& to)
{
    auto const at = text.find(from);
    EXPECT_NE(at, text.npos) << from;
    return text.replace(at, from.size(), to);
}

}  // namespace

TEST(Module, WhatIsNoModuleIsRefused)
{
    support::TemporaryFolder const folder;
    EXPECT_EQ(faultsOf([&] { Module("/nowhere/libx.so"); }),
              "cannot load module /nowhere/libx.so: No such file or directory\n");
    std::string const text = folder.write("libtext.so", "not a library at all, but long enough "
                                                        "to be looked at by the loader .........");
    std::string const told = faultsOf([&] { Module const module(text); });
    EXPECT_NE(told.find("invalid ELF header"), told.npos) << told;
    std::string const other =
        faultsOf([&] { Module const module("/lib/x86_64-linux-gnu/libm.so.6"); });
    EXPECT_NE(other.find("not a module"), other.npos) << other;
}

TEST(Module, UnloadingLeavesNoKernel)
{
    auto const before = nodus::runtime::registeredKernels().size();
    {
        Module const module(NODUS_TEST_MODULE);
        EXPECT_EQ(module.name(), "nodusmath");
        EXPECT_GT(module.kernels().size(), 0u);
    }
    EXPECT_EQ(nodus::runtime::registeredKernels().size(), before);
}

TEST(Module, OneNameInTwoModulesNamesBothFiles)
{
    support::TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    Module const first(NODUS_TEST_MODULE);
    std::string const told = faultsOf([&] { Module const second(folder / "libnodusmath.so"); });
    EXPECT_NE(told.find("modules " NODUS_TEST_MODULE " and " + (folder / "libnodusmath.so") +
                        " both have NodusAbs_Double_Solve and "),
              told.npos)
        << told.substr(0, 400);
    // The first one is as it was.
    EXPECT_TRUE(nodus::runtime::duplicateKernels().empty());
    EXPECT_TRUE(nodus::runtime::findKernel("NodusAbs_Double_Solve"));
}

TEST(Catalogue, AgreesWithTheModule)
{
    std::string const text = builtCatalogue();
    EXPECT_EQ(faultsWith(text), "");
    EXPECT_EQ(faultsWith(replaced(text, R"("name": "Div")", R"("name": "Dib")")),
              "nodusmath.json: describes NodusDib_Float_Solve, which libnodusmath.so does not "
              "register\n"
              "nodusmath.json: describes NodusDib_Int32_Solve, which libnodusmath.so does not "
              "register\n"
              "nodusmath.json: describes NodusDib_UInt32_Solve, which libnodusmath.so does not "
              "register\n"
              "nodusmath.json: describes NodusDib_UInt8_Solve, which libnodusmath.so does not "
              "register\n"
              "nodusmath.json: does not describe NodusDiv_Float_Solve, which libnodusmath.so "
              "registers\n"
              "nodusmath.json: does not describe NodusDiv_Int32_Solve, which libnodusmath.so "
              "registers\n"
              "nodusmath.json: does not describe NodusDiv_UInt32_Solve, which libnodusmath.so "
              "registers\n"
              "nodusmath.json: does not describe NodusDiv_UInt8_Solve, which libnodusmath.so "
              "registers\n");
    EXPECT_EQ(faultsWith(replaced(text, R"("name": "scalar", "type": "Float")",
                                  R"("name": "scalar", "type": "Flaot")"))
                  .substr(0, 88),
              "nodusmath.json: 'MultiplyByScalar_Float2', port 'scalar': there is no value type "
              "'Flaot'");
    EXPECT_TRUE(faultsWith("{").starts_with("nodusmath.json: line 1, column 2: "));
}

TEST(Catalogue, AMissingFileIsOneLine)
{
    support::TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    Module const module(folder / "libnodusmath.so");
    Module const* const modules[] = {&module};
    EXPECT_EQ(faultsOf([&] { Catalogue const read(modules); }),
              "cannot read " + (folder / "nodusmath.json") + ": No such file or directory\n");
}
