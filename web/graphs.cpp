// What nodus_graphs.wasm has to say: the graph reader and the evaluator of the host library, as the
// command line calls them, over texts that JavaScript puts and takes.
#include "files.h"

#include "nodus/host/digest.h"
#include "nodus/host/graph.h"
#include "nodus/host/image.h"
#include "nodus/host/run.h"

#include <memory>
#include <optional>

using namespace nodus::host;

namespace {

// The names of what goes in and comes out beside graphs and tables, which nobody calls so.
constexpr char const* kModule = "<module>/libnodusmath.so";
constexpr char const* kResults = "<results>";
constexpr char const* kLog = "<log>";
constexpr char const* kFaults = "<faults>";

enum Status { done, failed, wrongInput };

Catalogue const& catalogue()
{
    static Module const module(kModule);
    static Module const* const modules[] = {&module};
    static Catalogue const read{modules};
    return read;
}

void tell(std::vector<std::string> const& faults)
{
    std::string& text = fileText(kFaults);
    for (std::string const& line : faults)
        text += line + "\n";
}

template <typename Work> Status tried(Work work)
{
    fileText(kFaults).clear();
    try {
        work();
        return done;
    } catch (Fault const& fault) {
        tell(fault.lines());
        return wrongInput;
    } catch (std::bad_alloc const&) {
        tell({"out of memory"});
    } catch (std::exception const& error) {
        tell({std::string("the work failed: ") + error.what()});
    }
    return failed;
}

void evaluate(std::string const& graphName, std::string const& frames, std::string const& tableName,
              bool asJsonLines)
{
    Diagnostics diagnostics;
    RunOptions run;
    run.format = asJsonLines ? ResultFormat::jsonLines : ResultFormat::csv;
    std::unique_ptr<TableReader> table;
    diagnostics.gather([&] {
        if (!frames.empty())
            run.frames = parseFrames(frames);
    });
    GraphSurroundings surroundings{tableName, nullptr, false};
    diagnostics.gather([&] {
        if (tableName.empty())
            return;
        table = std::make_unique<TableReader>(tableName);
        surroundings.columns = &table->columns();
        run.table = table.get();
    });
    Graph const graph = readGraph(graphName, catalogue(), surroundings, diagnostics);
    diagnostics.throwIfAny();
    Plan const plan = compile(graph);
    auto results = OutputFile::open(kResults), log = OutputFile::open(kLog);
    run.results = &results;
    run.log = &log;
    nodus::host::run(plan, run);
    results.commit();
    log.commit();
}

void paint(std::string const& graphName, ImageOptions const& options)
{
    Diagnostics diagnostics;
    Graph const graph = readGraph(graphName, catalogue(), {"", nullptr, true}, diagnostics);
    diagnostics.throwIfAny();
    requirePicture(graph, graphName);
    auto results = OutputFile::open(kResults);
    renderImage(compile(graph), options, results);
    results.commit();
}

}  // namespace

extern "C" {

// The text of that name, of size characters to write to or to read. The catalogue is put first, as
// "<module>/nodusmath.json".
char* nodus_putText(char const* name, std::size_t size)
{
    std::string& text = fileText(name);
    text.resize(size);
    return text.data();
}
char const* nodus_getText(char const* name) { return fileText(name).data(); }
std::size_t nodus_getSize(char const* name) { return fileText(name).size(); }

// The graph and the table under the names that messages call them by; no table: "". The status is
// the command's; what came out are the texts "<results>" and "<log>", or else "<faults>", a line
// each.
int nodus_evaluate(char const* graph, char const* frames, char const* table, int asJsonLines)
{
    return tried([&] { evaluate(graph, frames, table, asJsonLines != 0); });
}

// A PNG file as "<results>", a value a pixel, black and white where the command's --map has them.
int nodus_paint(char const* graph, std::size_t width, std::size_t height, float black, float white,
                int frame)
{
    return tried([&] { paint(graph, {{width, height}, {black, white}, frame}); });
}

// The report of nodus digest as "<results>".
int nodus_digest(std::uint32_t seed)
{
    return tried([&] { fileText(kResults) = digestReport(catalogue(), seed); });
}

}  // extern "C"
