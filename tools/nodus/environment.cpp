// Finding and loading modules; output and paths.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <unistd.h>

#include <algorithm>

namespace nodus::tools {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kOurs = "libnodusmath.so";

// The build tree has the module in lib, an installation among the modules. Where it is in neither,
// nothing, and what was tried.
std::optional<std::string> moduleBesideCommand(std::string& tried)
{
    fs::path const bin = folderOfCommand();
    for (char const* const folder : {"../lib", NODUS_LIBRARIES "/nodus/modules"}) {
        fs::path const path = (bin / folder / kOurs).lexically_normal();
        if (fs::exists(path))
            return path.string();
        tried += (tried.empty() ? "" : " nor ") + path.string();
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::string> modulePaths(Shared const& shared)
{
    if (!shared.modules.empty())
        return shared.modules;
    std::string tried;
    auto const ours = moduleBesideCommand(tried);
    if (!ours)
        throw host::Fault("no module: neither " + tried +
                          " is there; say where it is with --module");
    return {*ours};
}

std::vector<std::string> joinedModulePaths(Shared const& shared)
{
    std::vector<std::string> paths = modulePaths(shared);
    std::string tried;
    auto const isOurs = [](std::string const& path) { return fs::path(path).filename() == kOurs; };
    if (std::ranges::none_of(paths, isOurs))
        if (auto const ours = moduleBesideCommand(tried))
            paths.insert(paths.begin(), *ours);
    return paths;
}

Environment::Environment(std::vector<std::string> const& paths)
{
    host::Diagnostics diagnostics;
    std::vector<host::Module const*> loaded;
    for (std::string const& path : paths)
        diagnostics.gather([&] {
            loaded.push_back(m_modules.emplace_back(std::make_unique<host::Module>(path)).get());
        });
    diagnostics.throwIfAny();
    m_catalogue.emplace(loaded);
}

std::string Environment::ownerOf(host::Family const& family) const
{
    return m_modules.size() < 2 ? "" : family.nodeTypes.front()->module->name();
}

void addSettings(CLI::App& command, std::vector<std::string>& settings)
{
    command
        .add_option(
            "--set", settings,
            "A value for a parameter of the graph, written as for nodus call. It may be given\n"
            "more than once. The parameters are listed by nodus describe GRAPH.json, and by "
            "--help\n"
            "behind a graph.")
        ->type_name("NAME=VALUE")
        ->take_all()
        ->allow_extra_args(false);
}

fs::path folderOfCommand() { return fs::read_symlink("/proc/self/exe").parent_path(); }

void print(std::string_view text)
{
    auto output = host::OutputFile::onDescriptor(STDOUT_FILENO, "standard output");
    output.write(text);
    output.commit();
}

void tellOnStandardError(std::string const& line)
{
    // Room for the longest path that the system takes, and some words.
    constexpr std::size_t kLongestLine = 5000;
    std::string const text = host::printable(host::shortened(line, kLongestLine)) + "\n";
    [[maybe_unused]] ssize_t const written = ::write(STDERR_FILENO, text.data(), text.size());
}

void tellOnStandardError(host::Fault const& fault)
{
    for (std::string const& line : fault.lines())
        tellOnStandardError("nodus: " + line);
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
