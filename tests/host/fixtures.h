// What the tests of the host share: the built module, and short ways to a graph and its faults.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/graph.h"
#include "nodus/host/module.h"

#include <gtest/gtest.h>

#include <string>

namespace fixtures {

using namespace nodus::host;

inline Catalogue const& catalogue()
{
    static Module const module(NODUS_TEST_MODULE);
    static Module const* const modules[] = {&module};
    static Catalogue const read{modules};
    return read;
}

inline std::string joined(std::vector<std::string> const& lines)
{
    std::string text;
    for (std::string const& line : lines)
        text += line + "\n";
    return text;
}

// The faults that work throws, a line each; empty when it throws none.
template <typename Work> std::string faultsOf(Work work)
{
    try {
        work();
    } catch (Fault const& fault) {
        return joined(fault.lines());
    }
    return {};
}

// A graph that must be without fault.
inline Graph graphOf(std::string const& text, GraphSurroundings const& surroundings = {})
{
    Diagnostics diagnostics;
    Graph graph = parseGraph(text, "g", catalogue(), surroundings, diagnostics);
    EXPECT_EQ(joined(diagnostics.lines()), "") << text;
    return graph;
}

}  // namespace fixtures
