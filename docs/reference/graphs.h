// Graphs of the reference: written as text, and evaluated by the kernels of the module.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/json.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nodus::reference {

using host::JsonValue;

JsonValue textValue(std::string_view text);
JsonValue listValue(std::vector<JsonValue> items);
JsonValue objectValue(std::vector<std::pair<std::string, JsonValue>>&& members);
// { "type": type, "inputs": inputs }; without inputs when they are null.
JsonValue nodeValue(std::string_view type, JsonValue const* inputs);
JsonValue graphValue(JsonValue nodes, std::vector<std::string> const& outputs);

// On one line: { "a": [1, 2] }.
std::string inlineJson(JsonValue const& value);
// A graph file as a person would write it: a line for each node that fits on one.
std::string graphText(JsonValue const& graph);

// The functions below throw Fault when the graph has one; origin stands in front of it.

// What comes out, a line for each output ("sum.result = 3") or for each of several frames, and the
// log lines behind it.
std::string evaluated(host::Catalogue const& catalogue, JsonValue const& graph,
                      std::string const& origin, std::size_t frames);

// The first value of each listed output, evaluated once for each x: the column "x" of the graph,
// and frame i for the i-th.
std::vector<std::vector<double>> sampled(host::Catalogue const& catalogue, JsonValue const& graph,
                                         std::string const& origin, std::vector<double> const& xs);

// A PNG file of the one output, evaluated once a pixel.
struct Shades {
    std::size_t width, height;
    float black, white;
};
std::string painted(host::Catalogue const& catalogue, JsonValue const& graph,
                    std::string const& origin, Shades const& shades);

}  // namespace nodus::reference
