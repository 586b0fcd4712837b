// Writes the node reference: one HTML page that holds everything it needs.
// usage: nodus_reference MODULE FOLDER OUTPUT [WEB EXAMPLES]
// FOLDER has page.html, page.css and page.js, in live/ what makes the page compute. WEB has the
// kernels and the graph evaluator as nodus_kernels.wasm and nodus_graphs.wasm; where they are
// empty, the page is for reading. EXAMPLES has the graphs that the page offers, and a README.md
// that says how each is evaluated.
#include "carried.h"
#include "page.h"

#include "files/program.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"
#include "nodus/host/result_writer.h"

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

namespace {

using namespace nodus;

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
            throw host::Fault(fmt::format("{}: wants {} behind byte {}", origin, place, at));
        text += page.substr(at, found - at) + value;
        at = found + place.size();
    }
    return text + page.substr(at);
}

// Graphs, tables and what runs them, by their names.
std::string examplesIn(std::filesystem::path const& folder)
{
    std::string members;
    std::set<std::filesystem::path> files;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        files.insert(entry.path());
    for (std::filesystem::path const& file : files)
        if (std::set<std::string>{".json", ".csv", ".md"}.contains(file.extension()))
            members += (members.empty() ? "" : ",") + host::jsonText(file.filename().string()) +
                       ":" + host::jsonText(host::readFile(file));
    return "{" + members + "}";
}

// What the page computes with, for its end.
std::string living(std::string const& folder, std::string const& catalogue, std::string const& web,
                   std::string const& examples)
{
    using reference::carriedElement;
    return carriedElement("catalogue", host::readFile(catalogue)) +
           carriedElement("kernels", host::readFile(web + "/nodus_kernels.wasm")) +
           carriedElement("graphs", host::readFile(web + "/nodus_graphs.wasm")) +
           carriedElement("examples", examplesIn(examples)) +
           "<script type=\"text/plain\" id=\"worker\">\n" +
           reference::bundled(folder + "/live/worker.js") +
           "</script>\n<script type=\"module\">\n" + reference::bundled(folder + "/live/main.js") +
           "</script>\n";
}

void write(std::string const& modulePath, std::string const& folder, std::string const& target,
           std::string const& web, std::string const& examples)
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
    bool const isLive = !web.empty() && std::filesystem::file_size(web + "/nodus_kernels.wasm") > 0;
    std::string const page =
        filled(host::readFile(folder + "/page.html"), "page.html",
               {{"module", module.name()},
                {"module", module.name()},
                {"isLive", isLive ? "true" : "false"},
                {"style", host::readFile(folder + "/page.css")},
                {"module", module.name()},
                {"version", NODUS_VERSION},
                {"types", content.types},
                {"index", content.index},
                {"families", std::to_string(content.families)},
                {"kernels", std::to_string(content.kernels)},
                {"nodes", content.nodes},
                {"script", host::readFile(folder + "/page.js")},
                {"live", !isLive ? "" : living(folder, module.cataloguePath(), web, examples)}});
    host::writeFile(target, page);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4 && argc != 6) {
        std::fputs("usage: nodus_reference MODULE FOLDER OUTPUT [WEB EXAMPLES]\n", stderr);
        return 2;
    }
    return host::statusOf("nodus_reference", [&] {
        write(argv[1], argv[2], argv[3], argc == 6 ? argv[4] : "", argc == 6 ? argv[5] : "");
    });
}
