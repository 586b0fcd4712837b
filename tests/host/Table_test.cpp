// Tables: which rows are read from them. Faults are sessions of the command.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/table.h"

using namespace fixtures;

namespace {

using Rows = std::vector<std::string>;

// Reads a whole table; a row is "line: text".
Rows rowsOf(std::string const& text)
{
    support::TemporaryFolder const folder;
    TableReader reader(folder.write("t.csv", text));
    TableRows rows;
    while (reader.readRow(rows)) {
    }
    Rows told;
    for (std::size_t i = 0; i < rows.rows.size(); ++i)
        told.push_back(std::to_string(rows.rows[i].line) + ": " + std::string(rows.row(i)));
    return told;
}

}  // namespace

TEST(Table, RowsAreFoundWhateverEndsThem)
{
    struct Row {
        char const* text;
        Rows expected;
    } const rows[] = {
        {"x,y\n1,2\n3,4\n", {"2: 1,2", "3: 3,4"}},
        {"x,y\r\n1,2\r\n3,4", {"2: 1,2", "3: 3,4"}},
        {"\xEF\xBB\xBFx\n1\n\n\r\n", {"2: 1"}},
        {"x\n", {}},
        {"x", {}},
        // Blank lines count once a row follows.
        {"x\n1\n\n\n2\n3\n", {"2: 1", "3: ", "4: ", "5: 2", "6: 3"}},
        // A line break in quotes belongs to the field, and lines are counted on.
        {"x,y\n\"a\nb\",2\n3,4\n", {"2: \"a\nb\",2", "4: 3,4"}},
    };
    for (Row const& row : rows)
        EXPECT_EQ(rowsOf(row.text), row.expected) << row.text;
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
    TableReader const reader(
        folder.write("t.csv", "\xEF\xBB\xBF time , \"a, \"\"b\"\"\",\"\nz\",\n"));
    EXPECT_EQ(reader.columns(), (Rows{"time", "a, \"b\"", "\nz", ""}));
}
