// The table of instruction counts: what is read from callgrind's file, and when growth is reported.
#include "instruction_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

using namespace nodus::bench;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Two dumps. The kernel calls a helper in its library and sinf in another one: inclusive costs
// follow "calls=" and belong to nobody.
TEST(Dumps, CountTheLibrarysOwnInstructionsOnly)
{
    std::ifstream profile(PROFILE_FILE);
    auto const dumps = readDumps(profile, "/lib/libnodusmath.so");
    ASSERT_EQ(dumps.size(), 2u);
    EXPECT_EQ(dumps[0].trigger, "NodusSin_Float_Solve");
    EXPECT_EQ(dumps[0].instructions, 50u + 30u + 40u);
    EXPECT_EQ(dumps[1].trigger, "NodusNoise1D_Solve");
    EXPECT_EQ(dumps[1].instructions, 12u);
}

TEST(Table, IsReadBackAsWritten)
{
    InstructionTable const table = {{"NodusAdd_Float_Solve", 4},
                                    {"NodusRandomGenerator_Float_Solve distribution=0 jump", 96.3}};
    std::stringstream file;
    file << "# a comment 12\n\n";
    writeRows(file, table);
    auto const read = readTable(file);
    ASSERT_EQ(read.size(), 2u);
    for (std::size_t row = 0; row < 2; ++row) {
        EXPECT_EQ(read[row].name, table[row].name);
        EXPECT_DOUBLE_EQ(read[row].perCall, table[row].perCall);
    }
}

TEST(Table, RefusesLinesThatAreNoRows)
{
    for (char const* const line : {"NodusAdd_Float_Solve", "NodusAdd_Float_Solve 4x", " 4", "4",
                                   "NodusAdd_Float_Solve 4 "}) {
        std::istringstream file(line);
        EXPECT_THROW(readTable(file), std::runtime_error) << '"' << line << '"';
    }
}

TEST(Disagreements, NameTheKernelAndBothCounts)
{
    struct Row {
        char const* why;
        double listed, seen;
        bool reported;
    };
    constexpr Row kRows[] = {
        {"the same", 40, 40, false},
        {"faster is no news", 40, 20, false},
        {"a tenth is allowed", 40, 44, false},
        {"more than a tenth", 40, 44.1, true},
        {"less than one instruction, though more than a tenth", 4, 4.9, false},
        {"one instruction of few", 4, 5, true},
    };
    for (Row const& row : kRows) {
        auto const lines = disagreements({{"Kernel", row.listed}}, {{"Kernel", row.seen}});
        ASSERT_EQ(lines.size(), row.reported ? 1u : 0u) << row.why;
        for (std::string const& line : lines)
            EXPECT_THAT(line,
                        AllOf(HasSubstr("Kernel"),
                              HasSubstr(std::to_string(row.seen).substr(0, row.seen < 10 ? 3 : 4)),
                              HasSubstr(row.listed < 10 ? "4.0" : "40.0")))
                << row.why;
    }
}

TEST(Disagreements, AreRowsThatOnlyOneSideHas)
{
    EXPECT_THAT(disagreements({{"Gone", 4}}, {{"New", 4}}),
                ElementsAre(HasSubstr("New"), HasSubstr("Gone")));
    EXPECT_THAT(disagreements({{"Kernel", 4}}, {{"Kernel", 4}}), IsEmpty());
}
