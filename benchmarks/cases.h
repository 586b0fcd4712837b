// What is measured: every kernel of the catalogue, with fixed inputs. A kernel whose work depends
// on a choice (the rotation order, the distribution) or on how the frame moves is several cases.
#pragma once

#include "port_shapes.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace nodus::bench {

struct Port {
    std::string name;
    PortShape shape;
    std::size_t offset;
};

struct Case {
    std::string name;    // "NodusAdd_Float3_Solve", "NodusEulerToQuaternion_Solve order=2"
    std::string kernel;  // the exported name
    std::string family;
    std::vector<Port> inputs, outputs;
    std::size_t inputSize, outputSize;  // where the last port ends
    std::size_t workspaceSize;          // 0 for a kernel without workspace
    bool isInit = false;                // fills the workspace: input block, workspace
    std::map<std::string, std::int32_t> choices;
    std::int32_t frameStep = 0;  // from one pass over all nodes to the next
};

// All cases, in the order of the catalogue. Throws std::runtime_error for a file that is none.
std::vector<Case> casesOf(std::string const& catalogueFile);

// Nodes of one case: input, output and workspace blocks, each at a multiple of 16. The inputs are
// in the range that the family works on and depend on the case and the node's number only.
class Nodes {
public:
    Nodes(Case const& what, std::size_t count);
    Nodes(Nodes const&) = delete;

    std::size_t count() const { return m_count; }
    std::byte* input(std::size_t node) const { return m_begin + node * m_stride; }
    std::byte* output(std::size_t node) const { return input(node) + m_outputOffset; }
    std::byte* workspace(std::size_t node) const { return input(node) + m_workspaceOffset; }

    // How many nodes of this case lie in the first-level cache together, with a copy of their
    // inputs.
    static std::size_t cached(Case const& what);

private:
    std::size_t m_count, m_outputOffset, m_workspaceOffset, m_stride;
    std::vector<std::byte> m_memory;
    std::byte* m_begin;
};

using Kernel = void (*)(void const* in, void* out);
using Generator = void (*)(void const* in, void* workspace, void* out);

// An entry point, called the way its case wants it.
struct Entry {
    void* address;
    bool takesThree;

    [[gnu::always_inline]] void call(Nodes const& nodes, std::size_t node) const
    {
        if (takesThree)
            reinterpret_cast<Generator>(address)(nodes.input(node), nodes.workspace(node),
                                                 nodes.output(node));
        else
            reinterpret_cast<Kernel>(address)(nodes.input(node), nodes.output(node));
    }
};

// The module, loaded as a host loads it. Throws std::runtime_error when it is not there.
class Module {
public:
    explicit Module(std::string const& file);
    ~Module();
    Module(Module const&) = delete;

    void* find(std::string const& kernel) const;  // throws when the module does not export it

private:
    void* m_library;
};

// Calls the Init kernel of a case with a workspace on every node; nothing for all others.
void initialize(Case const& what, Nodes const& nodes, Module const& module);

}  // namespace nodus::bench
