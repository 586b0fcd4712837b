// nodus describe GRAPH.json: what a graph is given, and what it gives.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/graph.h"
#include "nodus/host/literals.h"
#include "nodus/host/result_writer.h"

#include <fmt/format.h>

namespace nodus::tools {

std::string describeGraph(std::string const& path, host::Catalogue const& catalogue)
{
    host::Diagnostics diagnostics;
    host::Graph const graph =
        host::readGraph(path, catalogue, {"", nullptr, true, true}, diagnostics);
    diagnostics.throwIfAny();
    std::string text = path + (graph.description.empty() ? "" : ": " + graph.description) + "\n";
    if (!graph.parameters.empty())
        text += "\nparameters\n";
    for (auto const& [port, doc] : graph.parameters) {
        bool const isText = port.type->id == host::TypeId::String;
        text += fmt::format("  {:<14} {}{}, {}{}\n", port.name, port.type->name,
                            port.unit.empty() ? "" : ", in " + port.unit,
                            isText ? host::jsonText(port.standard.text)
                                   : host::valueText(*port.type, port.standard.bytes.data(), {}),
                            doc.empty() ? "" : ": " + doc);
    }
    auto const columns = host::columnsRead(graph);
    if (!columns.empty())
        text += "\ncolumns\n";
    for (auto const& [column, type] : columns)
        text += fmt::format("  {:<14} {}\n", graph.columns[column], host::valueType(type).name);
    if (!graph.outputs.empty())
        text += "\noutputs\n";
    for (host::GraphOutput const& output : graph.outputs)
        text += fmt::format("  {:<14} {}\n", output.name, output.type->name);
    return text;
}

}  // namespace nodus::tools
