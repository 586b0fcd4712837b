// Watching files by their times and sizes: that works on every file system, those of a network too.
#include "watch.h"

#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>
#include <tuple>

namespace nodus::tools {

namespace {

// Quick for who waits, nothing for the processor.
constexpr std::chrono::milliseconds kBetweenLooks(150);

// What changes with a file; the number, since editors put a new file in place of the old one.
using Stamp = std::tuple<std::int64_t, std::int64_t, std::uint64_t, std::int64_t>;
using Stamps = std::map<std::string, Stamp>;

// Of a file that is not there all zeros.
Stamp stampOf(std::string const& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_ino, status.st_size};
}

bool hasChanged(Stamps& stamps)
{
    bool changed = false;
    for (auto& [path, stamp] : stamps)
        if (Stamp const now = stampOf(path); now != stamp) {
            stamp = now;
            changed = true;
        }
    return changed;
}

}  // namespace

void watch(std::vector<std::string> const& files, std::vector<std::string> const& written,
           Work const& work)
{
    if (std::ranges::any_of(files, host::isStandardStream))
        throw host::Fault("--watch wants files, not standard input");
    for (std::string const& path : written)
        if (std::ranges::any_of(files, [&](auto const& file) { return isSameFile(file, path); }))
            throw host::Fault("--watch would never come to rest: " + path +
                              " is both read and written");
    Stamps stamps;
    for (std::string const& path : files)
        stamps.emplace(path, stampOf(path));
    for (bool isFirst = true;; isFirst = false) {
        std::vector<std::string> read = files;
        try {
            work(read);
            tellOnStandardError(isFirst
                                    ? "note: watching " +
                                          host::alternatives({read.begin(), read.end()}, "and") +
                                          "; Ctrl-C ends"
                                    : "note: evaluated again");
        } catch (host::Fault const& fault) {
            tellOnStandardError(fault);
        }
        for (std::string const& path : read)
            if (!stamps.contains(path))
                stamps.emplace(path, stampOf(path));
        while (!hasChanged(stamps))
            std::this_thread::sleep_for(kBetweenLooks);
        // Until who writes has come to an end.
        do
            std::this_thread::sleep_for(kBetweenLooks);
        while (hasChanged(stamps));
    }
}

}  // namespace nodus::tools
