// Finding and loading modules; output and paths.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <unistd.h>

#include <filesystem>

namespace nodus::tools {

namespace {

namespace fs = std::filesystem;

// The build tree has the module in lib, an installation among the modules.
std::string moduleBesideCommand()
{
    fs::path const bin = fs::read_symlink("/proc/self/exe").parent_path();
    std::string tried;
    for (char const* const place :
         {"../lib/libnodusmath.so", NODUS_LIBRARIES "/nodus/modules/libnodusmath.so"}) {
        fs::path const path = (bin / place).lexically_normal();
        if (fs::exists(path))
            return path.string();
        tried += (tried.empty() ? "" : " nor ") + path.string();
    }
    throw host::Fault("no module: neither " + tried + " is there; say where it is with --module");
}

}  // namespace

std::vector<std::string> modulePaths(Shared const& shared)
{
    return !shared.modules.empty() ? shared.modules
                                   : std::vector<std::string>{moduleBesideCommand()};
}

Environment::Environment(Shared const& shared)
{
    host::Diagnostics diagnostics;
    std::vector<host::Module const*> loaded;
    for (std::string const& path : modulePaths(shared)) {
        try {
            loaded.push_back(m_modules.emplace_back(std::make_unique<host::Module>(path)).get());
        } catch (host::Fault const& fault) {
            diagnostics.add(fault);
        }
    }
    diagnostics.throwIfAny();
    m_catalogue.emplace(loaded);
}

void print(std::string_view text)
{
    auto output = host::OutputFile::onDescriptor(STDOUT_FILENO, "standard output");
    output.write(text);
    output.commit();
}

std::string pictureFormat(std::string const& path, std::vector<std::string_view> const& formats)
{
    if (host::isStandardStream(path)) {
        if (::isatty(STDOUT_FILENO) == 1)
            throw host::Fault("a terminal shows no pictures: name a file for it, or send standard "
                              "output to one");
        return std::string(formats.front());
    }
    std::string const extension = fs::path(path).extension().string();
    std::vector<std::string> known;
    for (std::string_view const format : formats) {
        known.push_back("." + std::string(format));
        if (extension == known.back())
            return std::string(format);
    }
    throw host::Fault(path + ": a picture is written as " +
                      host::alternatives({known.begin(), known.end()}));
}

bool isSameFile(std::string const& a, std::string const& b)
{
    if (host::isStandardStream(a) || host::isStandardStream(b))
        return a == b;
    std::error_code ignored;
    return fs::weakly_canonical(a, ignored) == fs::weakly_canonical(b, ignored);
}

}  // namespace nodus::tools
