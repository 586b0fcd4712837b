// Joining scripts, and writing files into a page.
#include "carried.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"

#include <libdeflate.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>

namespace nodus::reference {

namespace {

using host::Fault;

// The smallest file: it is written once and read often.
constexpr int kCompressionLevel = 12;

class Bundle {
public:
    void add(std::filesystem::path const& file)
    {
        auto const path = file.lexically_normal();
        if (m_open.contains(path))
            throw Fault(path.string() + ": imports itself");
        if (!m_added.insert(path).second)
            return;
        m_open.insert(path);
        std::istringstream lines(host::readFile(path));
        std::string body;
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("import ")) {
                // Where the page is stands for where the file would be.
                constexpr std::string_view kHome = "import.meta.url";
                if (auto const home = line.find(kHome); home != line.npos)
                    line.replace(home, kHome.size(), "self.location.href");
                body += without("export ", line) + "\n";
                continue;
            }
            auto const end = line.find_last_of("'\"");
            auto const begin = line.find_last_of("'\"", end - 1);
            if (end == line.npos || begin == line.npos || line.find(" as ") != line.npos)
                throw Fault(path.string() + ": wants import { names } from 'file', not " + line);
            add(path.parent_path() / line.substr(begin + 1, end - begin - 1));
        }
        m_text += body;
        m_open.erase(path);
    }
    std::string const& text() const { return m_text; }

private:
    // "export { a, b };" is for other importers alone.
    static std::string without(std::string_view word, std::string const& line)
    {
        if (line.starts_with("export {"))
            return {};
        return line.starts_with(word) ? line.substr(word.size()) : line;
    }

    std::set<std::filesystem::path> m_added, m_open;
    std::string m_text;
};

}  // namespace

std::string base64(std::string_view bytes)
{
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 |
                   (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            text += at + i > bytes.size() ? '=' : kDigits[bits >> (18 - 6 * i) & 63u];
    }
    return text;
}

std::string bundled(std::string const& path)
{
    Bundle bundle;
    bundle.add(path);
    return bundle.text();
}

std::string carriedElement(std::string_view id, std::string_view bytes)
{
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> const compressor(
        libdeflate_alloc_compressor(kCompressionLevel), &libdeflate_free_compressor);
    if (compressor == nullptr)
        throw std::bad_alloc();
    std::string packed(libdeflate_deflate_compress_bound(compressor.get(), bytes.size()), '\0');
    packed.resize(libdeflate_deflate_compress(compressor.get(), bytes.data(), bytes.size(),
                                              packed.data(), packed.size()));
    return "<script type=\"text/plain\" id=\"" + std::string(id) + "\">" + base64(packed) +
           "</script>\n";
}

}  // namespace nodus::reference
