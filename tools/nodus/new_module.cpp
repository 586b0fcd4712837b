// nodus new-module: a project for a module of one's own, copied from the templates that are
// installed.
#include "environment.h"
#include "filled.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

namespace nodus::tools {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 40;

// "ownTools" and "own_tools" are both families that begin with OwnTools.
std::string familyPrefix(std::string const& name)
{
    std::string prefix;
    bool isFirst = true;
    for (char const c : name) {
        if (c != '_')
            prefix += isFirst ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        isFirst = c == '_';
    }
    return prefix;
}

void checkName(std::string const& name)
{
    auto const isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_';
    };
    if (name.empty() || name.size() > kLongestName || !std::ranges::all_of(name, isPart) ||
        name.front() == '_' || (name.front() >= '0' && name.front() <= '9'))
        throw host::Fault(fmt::format("the name of a module is a letter and up to {} more letters, "
                                      "digits and underscores, not {}",
                                      kLongestName - 1, host::inQuotes(name)));
    if (name == "nodusmath" || name == "compute_runtime")
        throw host::Fault(name + " is installed already: a module wants another name");
}

// Names in texts and file names: @name@ is the module's, @Name@ what its families begin with. With
// them in it a source is none yet: its template ends in ".in".
std::string named(std::string const& text, std::string const& name)
{
    return filled(text, {{"@name@", name}, {"@Name@", familyPrefix(name)}});
}

int writeProject(std::string const& name)
{
    checkName(name);
    fs::path const templates =
        (folderOfCommand() / NODUS_DATA "/nodus/new_module").lexically_normal();
    if (!fs::is_directory(templates))
        throw host::Fault("the templates of a module are not installed: there is no folder " +
                          templates.string());
    // Whoever has a file of that name keeps it.
    std::error_code error;
    if (fs::exists(fs::symlink_status(name, error)))
        throw host::Fault(name + " is there already: a new module wants a new folder");
    if (!fs::create_directory(name, error))
        throw host::Fault("cannot create the folder " + name + ": " + error.message());
    std::vector<fs::path> paths;
    for (auto const& entry : fs::recursive_directory_iterator(templates))
        paths.push_back(entry.path());
    std::ranges::sort(paths);  // folders in front of what is in them
    for (fs::path const& from : paths) {
        fs::path to = name / fs::path(named(from.lexically_relative(templates), name));
        if (to.extension() == ".in")
            to.replace_extension();
        if (fs::is_directory(from)) {
            fs::create_directory(to);
            continue;
        }
        host::writeFile(to, named(host::readFile(from), name));
        constexpr auto kExecutable =
            fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
        if ((fs::status(from).permissions() & fs::perms::owner_exec) != fs::perms::none)
            fs::permissions(to, kExecutable, fs::perm_options::add);
    }
    print(fmt::format("{0}/ is a module of two node types: {0}/test builds and tests it, "
                      "{0}/README.md tells the rest\n",
                      name));
    return 0;
}

}  // namespace

Command addNewModule(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("new-module", "Write a project for a module of one's own");
    auto const name = std::make_shared<std::string>();
    command
        ->add_option("NAME", *name,
                     "What the module is called, and the new folder: letters, digits and\n"
                     "underscores. It becomes libNAME.so, with NAME.json beside it.")
        ->required();
    command->footer("The project builds against this installation.\n\n"
                    "Example:\n"
                    "  nodus new-module own && own/test\n"
                    "  nodus --module own/build/libown.so call OwnMix_Float a=1 b=2 t=0.5\n\n"
                    "Exit status:\n"
                    "  0  the project is written\n"
                    "  2  there is such a folder already, or it cannot be written");
    return {command, [name] { return writeProject(*name); }};
}

}  // namespace nodus::tools
