// The graph files that a graph takes as nodes: each read once, however often it is taken.
#pragma once

#include "nodus/host/graph.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nodus::host {

class GraphFiles {
public:
    // All of these outlive it.
    GraphFiles(Catalogue const& catalogue, GraphSurroundings const& surroundings,
               Diagnostics& diagnostics)
        : m_catalogue(catalogue), m_surroundings(surroundings), m_diagnostics(diagnostics)
    {
    }

    // The outermost graph is a file: from here on names are looked for from its folder.
    void begin(std::string const& path);
    // Whether there is a folder to look in.
    bool mayRead() const { return !m_open.empty(); }

    // The graph of that name, as the file that is being read gives it. Null when it has a fault,
    // which has been told. Throws Fault for a circle of files and for too many in each other.
    std::shared_ptr<GraphFile const> read(std::string const& name);

private:
    std::shared_ptr<GraphFile const> readNew(std::string const& path);

    Catalogue const& m_catalogue;
    GraphSurroundings const& m_surroundings;
    Diagnostics& m_diagnostics;
    std::vector<std::string> m_open;  // that are being read, the outermost first
    std::map<std::string, std::shared_ptr<GraphFile const>> m_known;
};

}  // namespace nodus::host
