// Tables: what is read from them, and every way in which they can be wrong.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/table.h"

#include <algorithm>

using namespace fixtures;

namespace {

// Reads a whole table; a row is "line: text".
std::vector<std::string> rowsOf(std::string const& text)
{
    support::TemporaryFolder const folder;
    TableReader reader(folder.write("t.csv", text));
    TableRows rows;
    while (reader.readRow(rows)) {
    }
    std::vector<std::string> told;
    for (std::size_t i = 0; i < rows.rows.size(); ++i)
        told.push_back(std::to_string(rows.rows[i].line) + ": " + std::string(rows.row(i)));
    return told;
}

using Rows = std::vector<std::string>;

// The faults of a table whose column "x" is read as the type; the file's name is cut off.
std::string faultsAs(std::string const& type, std::string const& text)
{
    support::TemporaryFolder const folder;
    std::string const path = folder.write("t.csv", text);
    std::string told = faultsOf([&] {
        TableReader reader(path);
        Plan plan;
        plan.arenaSize = 64;
        plan.sources.push_back({Source::Kind::column,
                                static_cast<std::size_t>(std::ranges::find(reader.columns(), "x") -
                                                         reader.columns().begin()),
                                findValueType(type),
                                {0, 8}});
        Evaluator evaluator(plan, nullptr);
        TableParser const parser(reader, plan);
        TableRows rows;
        while (reader.readRow(rows)) {
        }
        Diagnostics diagnostics;
        for (std::size_t i = 0; i < rows.rows.size(); ++i)
            parser.parse(rows.row(i), rows.rows[i].line, evaluator, 0, diagnostics);
        diagnostics.throwIfAny();
    });
    for (auto at = told.find(path); at != told.npos; at = told.find(path))
        told.replace(at, path.size(), "t");
    return told;
}

}  // namespace

TEST(Table, RowsAreFoundWhateverEndsThem)
{
    EXPECT_EQ(rowsOf("x,y\n1,2\n3,4\n"), (Rows{"2: 1,2", "3: 3,4"}));
    EXPECT_EQ(rowsOf("x,y\r\n1,2\r\n3,4"), (Rows{"2: 1,2", "3: 3,4"}));
    EXPECT_EQ(rowsOf("\xEF\xBB\xBFx\n1\n\n\r\n"), (Rows{"2: 1"}));
    EXPECT_EQ(rowsOf("x\n"), Rows{});
    EXPECT_EQ(rowsOf("x"), Rows{});
    // Blank lines count once a row follows.
    EXPECT_EQ(rowsOf("x\n1\n\n\n2\n3\n"), (Rows{"2: 1", "3: ", "4: ", "5: 2", "6: 3"}));
    // A line break in quotes belongs to the field, and lines are counted on.
    EXPECT_EQ(rowsOf("x,y\n\"a\nb\",2\n3,4\n"), (Rows{"2: \"a\nb\",2", "4: 3,4"}));
}

// Rows across the ends of the reader's buffer, with and without quotes anywhere in it.
TEST(Table, LongTablesComeWhole)
{
    for (std::string const& field : {std::string("12345"), std::string("\"1\n\"\"2\"")}) {
        std::string text = "x,y\n";
        for (int i = 0; i < 60000; ++i)
            text += std::to_string(i) + "," + field + "\n";
        text += std::string(600000, '7') + ",1";
        Rows const rows = rowsOf(text);
        ASSERT_EQ(rows.size(), 60001u);
        bool const isSpread = field.find('\n') != field.npos;
        for (std::size_t i = 0; i < 60000; ++i)
            ASSERT_EQ(rows[i], std::to_string(2 + i * (isSpread ? 2 : 1)) + ": " +
                                   std::to_string(i) + "," + field);
        EXPECT_EQ(rows.back().size(), (isSpread ? 6u : 5u) + 600004u);
    }
}

TEST(Table, ColumnNames)
{
    support::TemporaryFolder const folder;
    TableReader const reader(folder.write("t.csv", " time , \"a, \"\"b\"\"\",\"\nz\",\n"));
    EXPECT_EQ(reader.columns(), (Rows{"time", "a, \"b\"", "\nz", ""}));
}

TEST(Table, EveryFaultNamesFileAndLine)
{
    struct Row {
        char const *type, *table, *expected;
    } const rows[] = {
        {"Float", "", "t:1: wants a header line with the names of the columns\n"},
        {"Float", "x,y,x\n", "t:1: columns 1 and 3 have the same name 'x'\n"},
        {"Float", "x,\"y\n1,2\n", "t:1: a quoted name does not end, or goes on behind its quote\n"},
        {"Float", "x,y\n1,2\n1\n1,2,3\n",
         "t:3: 1 field, the header has 2\nt:4: 3 fields, the header has 2\n"},
        {"Float", "x\n1\n\n2\n", "t:3: column 'x': '' is not a number\n"},
        {"Float", "x,y\n1,2\n\n2,3\n",
         "t:3: column 'x': '' is not a number\n"
         "t:3: 1 field, the header has 2\n"},
        {"Float", "y,x\n-,abc\n", "t:2: column 'x': 'abc' is not a number\n"},
        {"Float", "x\n1e39\n", "t:2: column 'x': '1e39' is beyond every Float\n"},
        {"Float", "x\n1 2\n", "t:2: column 'x': '1 2' is not a number\n"},
        {"Float", "x,y\n\"1\"2,3\n",
         "t:2: a quoted field does not end, or goes on behind its quote\n"},
        {"Int32", "x\n3.5\n", "t:2: column 'x': '3.5' is not a whole number\n"},
        {"UInt8", "x\n256\n", "t:2: column 'x': '256' is outside UInt8 (0 to 255)\n"},
        {"Bool", "x\n2\n", "t:2: column 'x': '2' is not true, false, 1 or 0\n"},
        {"Int32", "x\nnan\n",
         "t:2: column 'x': 'nan' is outside Int32 (-2147483648 to 2147483647)\n"},
        // Nothing wrong with any of these.
        {"Float", "note,x\nhello,+1.5\n\"a,\"\"b\", 2 \n,\"3\"\n,nan\n,-inf\n,1e-60\n", ""},
        {"Double", "x\n1e300\n", ""},
        {"UInt32", "x\n4294967295\n4e9\n", ""},
        {"Bool", "x\ntrue\n0\n", ""},
    };
    for (Row const& row : rows)
        EXPECT_EQ(faultsAs(row.type, row.table), row.expected) << row.table;
    EXPECT_EQ(faultsOf([] { TableReader("/nowhere/t.csv"); }),
              "cannot read /nowhere/t.csv: No such file or directory\n");
    EXPECT_EQ(faultsOf([] { TableReader("/"); }), "cannot read /: Is a directory\n");
}
