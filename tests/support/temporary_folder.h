// A folder of a test's own, gone at its end.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace support {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "nodus-XXXXXX").string();
        EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
        m_path = pattern;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string operator/(std::string const& name) const { return (m_path / name).string(); }

    std::string write(std::string const& name, std::string const& text) const
    {
        std::string path = *this / name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    std::string read(std::string const& name) const
    {
        std::ifstream file(*this / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // The names of all files, hidden ones included.
    std::set<std::string> names() const
    {
        std::set<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(m_path))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path m_path;
};

}  // namespace support
