// Tests that are text: every file of a folder is a case of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace support {

class TextFiles : public testing::TestWithParam<std::filesystem::path> {
public:
    // For INSTANTIATE_TEST_SUITE_P: the *.txt of the folder by name, and what each case is called.
    static auto in(char const* folder)
    {
        std::set<std::filesystem::path> files;
        for (auto const& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".txt")
                files.insert(entry.path());
        return testing::ValuesIn(files);
    }
    static std::string name(testing::TestParamInfo<std::filesystem::path> const& file)
    {
        return file.param.stem().string();
    }
};

}  // namespace support
