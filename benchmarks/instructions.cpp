// Counts the instructions of every kernel: runs itself under callgrind, which dumps its counts
// after each case. Only instructions inside the module count, so that the table does not depend on
// the C library: a call of sinf is a few instructions, not sinf's own.
//
// usage: nodusmath_instructions MODULE CATALOGUE            prints the table
//        nodusmath_instructions MODULE CATALOGUE --check TABLE    fails when a kernel grew
//        nodusmath_instructions MODULE CATALOGUE --against FLOORS prints both side by side
// exit status: 0 done, 1 a kernel grew or the work failed, 2 wrong usage, 77 another compiler
#include "cases.h"
#include "instruction_table.h"

#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string_view>

// Its requests are macros of another style.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wconversion"
#include <valgrind/callgrind.h>

using namespace nodus::bench;

namespace {

constexpr int kSkipped = 77;
constexpr std::size_t kNodes = 64;
constexpr int kPasses = 2;
constexpr char const* kLoading = "loading";

// Under callgrind: one dump for each case, named after it.
int countAll(std::string const& moduleFile, std::string const& catalogueFile)
{
    std::vector<Case> const cases = casesOf(catalogueFile);
    nodus::runtime::EvaluationScope scope(0, nullptr);

    CALLGRIND_ZERO_STATS;
    Module const module(moduleFile);
    CALLGRIND_DUMP_STATS_AT(kLoading);

    for (Case const& what : cases) {
        Nodes const nodes(what, kNodes);
        Entry const entry{module.find(what.kernel), what.workspaceSize != 0 && !what.isInit};
        std::int32_t frame = 0;
        auto const pass = [&] {
            scope.setFrame(frame += what.frameStep);
            for (std::size_t node = 0; node < kNodes; ++node)
                entry.call(nodes, node);
        };
        scope.setFrame(frame);
        initialize(what, nodes, module);
        pass();  // what is built on the first call does not count
        CALLGRIND_ZERO_STATS;
        for (int i = 0; i < kPasses; ++i)
            pass();
        CALLGRIND_DUMP_STATS_AT(what.name.c_str());
    }
    return 0;
}

std::string quoted(std::string const& text)
{
    std::string result = "'";
    for (char const letter : text)
        result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return result + "'";
}

// Counts in a process of its own.
std::vector<Dump> dumpsOf(std::string const& moduleFile, std::string const& catalogueFile)
{
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "nodusmath-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder");
    std::string const profile = folder + "/profile", messages = folder + "/messages";
    std::string const command =
        "valgrind --tool=callgrind --combine-dumps=yes --compress-strings=no --compress-pos=no "
        "--dump-line=no --callgrind-out-file=" +
        quoted(profile) + " " + quoted(fs::read_symlink("/proc/self/exe").string()) + " " +
        quoted(moduleFile) + " " + quoted(catalogueFile) + " --count >" + quoted(messages) +
        " 2>&1";
    int const status = std::system(command.c_str());
    std::vector<Dump> dumps;
    if (status == 0) {
        std::ifstream file(profile);
        dumps = readDumps(file, moduleFile);
    } else {
        std::cerr << std::ifstream(messages).rdbuf();
    }
    fs::remove_all(folder);
    if (status != 0)
        throw std::runtime_error("callgrind failed");
    return dumps;
}

InstructionTable countedTable(std::string const& moduleFile, std::string const& catalogueFile)
{
    InstructionTable table;
    std::vector<Dump> const dumps = dumpsOf(moduleFile, catalogueFile);
    auto const instructionsOf = [&](std::string const& name) {
        auto const found = std::find_if(dumps.begin(), dumps.end(),
                                        [&](Dump const& dump) { return dump.trigger == name; });
        if (found == dumps.end() || found->instructions == 0)
            throw std::runtime_error("callgrind counted nothing for " + name);
        return static_cast<double>(found->instructions);
    };
    for (Case const& what : casesOf(catalogueFile))
        table.push_back({what.name, instructionsOf(what.name) / (kPasses * kNodes)});
    table.push_back({kLoading, instructionsOf(kLoading)});
    return table;
}

InstructionTable tableFrom(char const* name)
{
    std::ifstream file(name);
    if (!file)
        throw std::runtime_error(std::string("cannot read ") + name);
    return readTable(file);
}

int check(InstructionTable const& seen, char const* tableFile)
{
    std::ifstream file(tableFile);
    std::string compiler;
    if (!std::getline(file, compiler))
        throw std::runtime_error(std::string("cannot read ") + tableFile);
    // Another compiler has other counts, and they are no news.
    if (compiler != std::string("# ") + NODUS_COMPILER) {
        std::cout << "skipped: counted with " << NODUS_COMPILER << ", the table says " << compiler
                  << '\n';
        return kSkipped;
    }
    auto const lines = disagreements(readTable(file), seen);
    for (std::string const& line : lines)
        std::cout << line << '\n';
    if (!lines.empty())
        std::cout << "If this is meant, renew the table: benchmarks/instructions --update\n";
    else
        std::cout << seen.size() << " rows, none has grown\n";
    return lines.empty() ? 0 : 1;
}

void compare(InstructionTable const& seen, InstructionTable const& floors)
{
    double logarithms = 0;
    std::size_t rows = 0;
    for (InstructionCount const& floor : floors) {
        auto const found = std::find_if(seen.begin(), seen.end(), [&](InstructionCount const& row) {
            return row.name == floor.name;
        });
        if (found == seen.end()) {
            std::printf("%-60s %7s  %5.0f\n", floor.name.c_str(), "-", floor.perCall);
            continue;
        }
        double const ratio = found->perCall / floor.perCall;
        std::printf("%-60s %7.1f  %5.0f  %5.2f\n", floor.name.c_str(), found->perCall,
                    floor.perCall, ratio);
        logarithms += std::log(ratio);
        ++rows;
    }
    if (rows != 0)
        std::printf("geometric mean of %zu rows: %.3f\n", rows,
                    std::exp(logarithms / static_cast<double>(rows)));
}

int run(int argc, char** argv)
{
    std::string_view const mode = argc > 3 ? argv[3] : "";
    bool const hasFile = mode == "--check" || mode == "--against";
    if (argc != (hasFile ? 5 : mode == "--count" ? 4 : 3)) {
        std::cerr << "usage: nodusmath_instructions MODULE CATALOGUE [--check TABLE | --against "
                     "FLOORS]\n";
        return 2;
    }
    // Callgrind names libraries by their full path.
    std::string const module = std::filesystem::canonical(argv[1]).string();
    if (mode == "--count")
        return countAll(module, argv[2]);
    InstructionTable const seen = countedTable(module, argv[2]);
    if (mode == "--check")
        return check(seen, argv[4]);
    if (mode == "--against") {
        compare(seen, tableFrom(argv[4]));
    } else {
        std::cout << "# " << NODUS_COMPILER << '\n'
                  << "# Instructions a call inside the module, mean over " << kNodes
                  << " fixed inputs; callees in other libraries are not counted.\n"
                  << "# \"loading\" is all that the module runs while it is being loaded.\n"
                  << "# Made by benchmarks/instructions --update.\n";
        writeRows(std::cout, seen);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
try {
    return run(argc, argv);
} catch (std::exception const& error) {
    std::cerr << "nodusmath_instructions: " << error.what() << '\n';
    return 1;
}
