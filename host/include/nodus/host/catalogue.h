// The catalogue: which node types there are, and the ports of each. Read from the JSON files beside
// the modules and held against the kernels that the modules register.
#pragma once

#include "nodus/host/diagnostics.h"
#include "nodus/host/module.h"
#include "nodus/host/value_types.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nodus::host {

struct Choice {
    std::int64_t value;
    std::string name;
};

struct Port {
    std::string name;
    ValueType const* type;
    std::size_t offset;  // in its block
    Value standard;      // of an input that a graph does not give; for outputs without meaning
    std::string unit;    // "rad"; empty when there is none
    std::vector<Choice> choices;
};

struct NodeType;

struct Family {
    std::string name, group, doc, edges;
    std::vector<std::string> searchWords;  // besides the name, the fittest in front
    std::vector<std::string> dependsOn;
    bool mayKeepOutputs = false;             // a call may leave output ports as they were
    bool mayDivideByZero = false;            // also where its results are finite
    std::vector<NodeType const*> nodeTypes;  // in the catalogue's order
};

// One kernel (two for a node with a workspace) and its blocks.
struct NodeType {
    std::string name;    // "Add_Float3"
    std::string suffix;  // "Float3"; empty when the family has no types
    Family const* family;
    Module const* module;
    std::vector<Port> inputs, outputs;
    std::size_t inputExtent, outputExtent;  // where the last port ends
    std::vector<Port> workspace;            // empty for most
    std::size_t workspaceExtent;
    Solve solve;                            // null with a workspace
    SolveWithWorkspace solveWithWorkspace;  // null without one
    InitWorkspace init;                     // null without one

    bool isCallable() const { return solve != nullptr || solveWithWorkspace != nullptr; }

    Port const* findInput(std::string_view port) const;
    Port const* findOutput(std::string_view port) const;
};

// Immutable once built; any thread may read. The modules outlive it.
class Catalogue {
public:
    // Reads the catalogue of each module. Throws Fault with a line for every fault: a file that is
    // missing or does not follow its shape, a node type without kernel, a kernel without node type.
    explicit Catalogue(std::span<Module const* const> modules);
    // The same of one module, and the faults are collected: what is known of a node type with a
    // fault may be wrong, and it has no entry points.
    Catalogue(Module const& module, Diagnostics& diagnostics);
    // With a text for the module's catalogue; origin stands for the file in messages.
    Catalogue(Module const& module, std::string_view text, std::string const& origin,
              Diagnostics& diagnostics);
    Catalogue(Catalogue const&) = delete;
    Catalogue& operator=(Catalogue const&) = delete;

    // By node type ("Add_Float3") or by kernel ("NodusAdd_Float3_Solve"); null when unknown.
    NodeType const* find(std::string_view name) const;
    Family const* findFamily(std::string_view name) const;

    std::deque<Family> const& families() const { return m_families; }
    std::deque<NodeType> const& nodeTypes() const { return m_nodeTypes; }

    // The end of a message on a name that is unknown.
    std::string suggestion(std::string_view name) const;

private:
    friend class CatalogueReader;
    void readCatalogue(Module const& module, Diagnostics& diagnostics);

    std::deque<Family> m_families;  // deques: what points into them holds
    std::deque<NodeType> m_nodeTypes;
    std::unordered_map<std::string_view, NodeType const*> m_byName;
};

// The kernel that evaluates the node type: "NodusAdd_Float3_Solve".
std::string kernelName(NodeType const& type);

// "NodusAdd_Float3_Solve" without what every kernel name has: "Add_Float3".
std::string_view withoutKernelAffixes(std::string_view name);

}  // namespace nodus::host
