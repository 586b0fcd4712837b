// What every sub-command works with: the modules, their catalogue, and standard output.
#pragma once

#include "commands.h"

#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/module.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::tools {

// The modules that were asked for, or the one beside the command. Throws host::Fault.
std::vector<std::string> modulePaths(Shared const& shared);
// With the one beside the command in front, unless one of its name was asked for.
std::vector<std::string> joinedModulePaths(Shared const& shared);

// Loads modules and joins their catalogues. Throws host::Fault.
class Environment {
public:
    explicit Environment(Shared const& shared) : Environment(joinedModulePaths(shared)) {}
    explicit Environment(std::vector<std::string> const& paths);

    host::Catalogue const& catalogue() const { return *m_catalogue; }

    // The name of the module that has the family; empty when there is only one module.
    std::string ownerOf(host::Family const& family) const;

private:
    std::vector<std::unique_ptr<host::Module>> m_modules;
    std::optional<host::Catalogue> m_catalogue;
};

// The option --set of a command that reads a graph.
void addSettings(CLI::App& command, std::vector<std::string>& settings);

// What a graph is given, parameters and columns, and what it gives.
std::string describeGraph(std::string const& path, host::Catalogue const& catalogue);

// The folder of this command, from which its installation or its build tree is found.
std::filesystem::path folderOfCommand();

// Writes to standard output. Throws host::Fault when nobody can take it, host::ClosedPipe when
// nobody wants it.
void print(std::string_view text);

// A line there; a line for each fault, with the name of the command in front.
void tellOnStandardError(std::string const& line);
void tellOnStandardError(host::Fault const& fault);

// By the extension of the path, which has to be one of these; the first of them for "-", which must
// not be a terminal. Throws host::Fault.
std::string pictureFormat(std::string const& path, std::vector<std::string_view> const& formats);

// Whether two paths lead to one file; neither needs to be there.
bool isSameFile(std::string const& a, std::string const& b);

}  // namespace nodus::tools
