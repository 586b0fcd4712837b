// The graph files that a graph takes as nodes: looked for, read, and turned into node types.
#include "graph_files.h"

#include "graph_reader.h"

#include "nodus/host/input_file.h"

#include <algorithm>
#include <filesystem>

namespace nodus::host {

namespace {

// Deep enough for whoever sorts graphs into folders; a circle is told by its names long before.
constexpr std::size_t kMostFilesInEachOther = 32;

std::string plain(std::filesystem::path const& path) { return path.lexically_normal().string(); }

// Places for the outputs in a block, as if a kernel wrote them.
std::vector<Port> portsOf(std::vector<ListedPort> const& listed, std::size_t& end)
{
    std::vector<Port> ports;
    ports.reserve(listed.size());
    for (ListedPort const& port : listed)
        ports.push_back(
            {port.name, port.type, placePort(*port.type, end), neutralValue(*port.type), {}, {}});
    return ports;
}

}  // namespace

void GraphFiles::begin(std::string const& path)
{
    m_open.push_back(isStandardStream(path) ? "" : plain(path));
}

std::shared_ptr<GraphFile const> GraphFiles::read(std::string const& name)
{
    std::string const path = plain(std::filesystem::path(m_open.back()).parent_path() / name);
    if (auto const circle = std::ranges::find(m_open, path); circle != m_open.end()) {
        std::string text = "graphs in a circle: ";
        for (auto file = circle; file != m_open.end(); ++file)
            text += inQuotes(*file) + " -> ";
        throw Fault(text + inQuotes(path));
    }
    if (m_open.size() > kMostFilesInEachOther)
        throw Fault("graphs in each other deeper than " + std::to_string(kMostFilesInEachOther) +
                    " levels");
    auto const [known, isNew] = m_known.try_emplace(path);
    if (isNew) {
        auto file = readNew(path);
        known->second = std::move(file);
    }
    return known->second;
}

std::shared_ptr<GraphFile const> GraphFiles::readNew(std::string const& path)
{
    if (m_surroundings.filesRead != nullptr)
        m_surroundings.filesRead->push_back(path);
    FileFaults faults(path);
    // A file that cannot be read is a fault of the node that names it.
    auto const root = readGraphJson(path, faults);
    auto file = std::make_shared<GraphFile>();
    bool isGood = false;
    if (root) {
        m_open.push_back(path);
        std::size_t const before = m_diagnostics.lines().size();
        GraphReader reader(m_catalogue, m_surroundings, faults, *this);
        file->graph = reader.read(*root);
        m_open.pop_back();
        if (isGood = faults.empty() && m_diagnostics.lines().size() == before; isGood) {
            NodeType& type = file->type;
            type.name = std::filesystem::path(path).filename().string();
            type.family = &file->family;
            type.outputs = portsOf(reader.listed(), type.outputExtent);
            for (Parameter const& parameter : file->graph.parameters)
                type.inputs.push_back(parameter.port);
            type.inputExtent = reader.parametersExtent();
            file->family.name = type.name;
            file->family.doc = file->graph.description;
            openGraphs(file->graph);
        }
    }
    faults.moveTo(m_diagnostics);
    return isGood ? file : nullptr;
}

}  // namespace nodus::host
