// A file as one text.
#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"

namespace nodus::host {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 30;

}  // namespace

std::string readFile(std::string const& path)
{
    InputFile file(path);
    std::string text;
    char buffer[1 << 16];
    while (std::size_t const got = file.read(buffer, sizeof buffer)) {
        text.append(buffer, got);
        if (text.size() > kLargestFile)
            throw Fault(file.name() + ": larger than one gigabyte");
    }
    return text;
}

}  // namespace nodus::host
