// What fuzzing once found, and what it starts from, through the same targets.
#include "targets.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

TEST(Fuzz, InputsThatWereFoundStayHarmless)
{
    struct Row {
        char const *name, *seeds;
        void (*target)(std::string_view);
    } const rows[] = {{"graph", NODUS_TEST_SOURCE "/examples", fuzz::graph},
                      {"table", NODUS_TEST_SOURCE "/examples", fuzz::table},
                      {"catalogue", NODUS_TEST_SOURCE "/modules/nodusmath", fuzz::catalogue}};
    for (Row const& row : rows) {
        fs::path const kept = fs::path(NODUS_TEST_SOURCE "/tests/fuzz/regressions") / row.name;
        std::size_t count = 0;
        for (fs::path const& folder : {kept, fs::path(row.seeds)})
            for (auto const& entry : fs::directory_iterator(folder)) {
                if (!entry.is_regular_file())
                    continue;
                SCOPED_TRACE(entry.path());
                std::ifstream file(entry.path(), std::ios::binary);
                row.target(std::string(std::istreambuf_iterator<char>(file), {}));
                ++count;
            }
        EXPECT_GT(count, 2u) << row.name;
    }
}
