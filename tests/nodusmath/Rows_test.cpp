// Kernels by rows: values in, bits out. rows/README.md explains how a row is written.
#include "host/fixtures.h"

#include "nodus/host/kernel_rows.h"

#include <cstdlib>
#include <filesystem>

using namespace fixtures;

TEST(Kernels, GiveTheBitsOfTheRowsAndNoneIsForgotten)
{
    std::srand(1);  // what noise draws its tables from
    RowsReport report;
    report.tried = {"LogValueString"};  // sharing is no value
    for (auto const& file : std::filesystem::directory_iterator(ROWS_FOLDER))
        if (file.path().extension() == ".txt")
            tryRows(catalogue(), file.path(), report);
    EXPECT_EQ(joined(report.faults), "");
    for (NodeType const& type : catalogue().nodeTypes())
        EXPECT_TRUE(report.tried.contains(type.name)) << type.name << " has no row";
}
