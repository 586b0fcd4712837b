// Loading modules and catalogues that agree, or do not. What is no module at all is a session.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/runtime/KernelTable.h"

#include <gmock/gmock.h>

#include <algorithm>
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

// The faults of the built module with this text as its catalogue, or none; the folder is cut off.
std::string faultsWith(std::string const& text)
{
    support::TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    if (!text.empty())
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

int lineOf(std::string const& text, std::string const& what)
{
    return 1 +
           static_cast<int>(std::count(
               text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find(what)), '\n'));
}

}  // namespace

TEST(Module, OneNameInTwoModulesNamesBothFiles)
{
    support::TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    Module const first(NODUS_TEST_MODULE);
    EXPECT_THAT(faultsOf([&] { Module const second(folder / "libnodusmath.so"); }),
                testing::HasSubstr("modules " NODUS_TEST_MODULE " and " +
                                   (folder / "libnodusmath.so") +
                                   " both have NodusAbs_Double_Solve and "));
    // The first one is as it was.
    EXPECT_TRUE(nodus::runtime::duplicateKernels().empty());
    EXPECT_TRUE(nodus::runtime::findKernel("NodusAbs_Double_Solve"));
}

TEST(Catalogue, AgreesWithTheModule)
{
    std::string const text = builtCatalogue();
    EXPECT_EQ(faultsWith(text), "");
    std::string const atDiv =
        "nodusmath.json:" + std::to_string(lineOf(text, R"("name": "Div")") - 1);
    std::string describes, lacks;
    for (char const* const type : {"Float", "Int32", "UInt32", "UInt8"}) {
        describes += atDiv + std::string(": describes NodusDib_") + type +
                     "_Solve, which libnodusmath.so does not register\n";
        lacks += std::string("nodusmath.json: does not describe NodusDiv_") + type +
                 "_Solve, which libnodusmath.so registers\n";
    }
    EXPECT_EQ(faultsWith(replaced(text, R"("name": "Div")", R"("name": "Dib")")),
              lacks + describes);
    EXPECT_TRUE(faultsWith("{").starts_with("nodusmath.json:1: column 1: "));
    EXPECT_EQ(faultsWith(""), "cannot read nodusmath.json: No such file or directory\n");
}

TEST(Catalogue, WhatNobodyReadsIsAFaultAtEveryLevel)
{
    std::string const text = builtCatalogue();
    struct Row {
        char const *from, *to, *told;
    } const rows[] = {
        {R"("module": ")", R"("modul": ")", "unknown member 'modul'; did you mean 'module'?"},
        {R"("edges": ")", R"("edgez": ")", "family 'Abs': unknown member 'edgez'"},
        {R"("default": 1e-06)", R"("defualt": 1)", "family 'AlmostEqual', input 'tolerance': unkn"},
        {R"("typeFor": { "Double")", R"("typeFor": { "Duoble")",
         "family 'AlmostEqual', input 'tolerance': 'typeFor' names 'Duoble', which is none of the "
         "family's types; did you mean 'Double'?"},
        {R"("notFor": ["Bool"])", R"("notFor": [9])",
         "family 'RandomGenerator', input 'distribution': 'notFor' wants an array of texts, not "
         "an"},
        {R"("value": 12, "name": "twist)", R"("valeu": 12, "name": "twist)",
         "family 'EulerToQuaternion', input 'order', choice 'twist-swing': unknown member 'valeu'"},
        {R"("doc": ")", R"("doc": 3, "x": ")", "family 'Abs': 'doc' wants a text, not 3"},
        {R"("name": "scalar", "type": "Float")", R"("name": "scalar", "type": "Flaot")",
         "'MultiplyByScalar_Float2', port 'scalar': there is no value type 'Flaot'; did you mean"},
    };
    for (auto const& [from, to, told] : rows)
        EXPECT_THAT(faultsWith(replaced(text, from, to)),
                    testing::HasSubstr("nodusmath.json:" + std::to_string(lineOf(text, from)) +
                                       ": " + told));
}
