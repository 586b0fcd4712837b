// Writes the node reference: one HTML page that holds everything it needs.
// usage: nodus_reference MODULE FOLDER OUTPUT
// FOLDER has page.html, page.css and page.js.
#include "page.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/output_file.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace nodus;

std::string readText(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file)
        throw host::Fault(path + ": cannot be read");
    return text;
}

// Puts each value in the place that the template has for it, "{{name}}".
std::string filled(std::string const& page, std::string const& origin,
                   std::vector<std::pair<std::string, std::string>> const& values)
{
    std::string text;
    std::size_t at = 0;
    for (auto const& [name, value] : values) {
        std::string const place = "{{" + name + "}}";
        std::size_t const found = page.find(place, at);
        if (found == page.npos)
            throw host::Fault(origin + ": wants " + place + " behind byte " + std::to_string(at));
        text += page.substr(at, found - at) + value;
        at = found + place.size();
    }
    return text + page.substr(at);
}

void write(std::string const& modulePath, std::string const& folder, std::string const& target)
{
    // Noise is drawn from rand: the same field in every page.
    std::srand(1);
    host::Module const module(modulePath);
    host::Module const* const modules[] = {&module};
    host::Catalogue const catalogue(modules);
    host::FileFaults faults(module.cataloguePath());
    auto const json = host::readJsonFile(module.cataloguePath(), faults);
    faults.throwIfAny();
    auto const content = reference::contentOf(
        catalogue, *json, std::filesystem::path(module.cataloguePath()).filename());
    std::string const page = filled(readText(folder + "/page.html"), "page.html",
                                    {{"style", readText(folder + "/page.css")},
                                     {"version", NODUS_VERSION},
                                     {"types", content.types},
                                     {"index", content.index},
                                     {"families", std::to_string(content.families)},
                                     {"kernels", std::to_string(content.kernels)},
                                     {"nodes", content.nodes},
                                     {"script", readText(folder + "/page.js")}});
    auto file = host::OutputFile::open(target);
    file.write(page);
    file.commit();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fputs("usage: nodus_reference MODULE FOLDER OUTPUT\n", stderr);
        return 2;
    }
    try {
        write(argv[1], argv[2], argv[3]);
        return 0;
    } catch (host::Fault const& fault) {
        for (std::string const& line : fault.lines())
            std::fprintf(stderr, "nodus_reference: %s\n", line.c_str());
    } catch (std::exception const& error) {
        std::fprintf(stderr, "nodus_reference: %s\n", error.what());
    }
    return 2;
}
