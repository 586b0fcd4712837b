// What is measured of the kernels: every one of the catalogue, with fixed inputs. A kernel whose
// work depends on a choice (the rotation order, the distribution) or on how the frame moves is
// several cases.
#pragma once

#include "nodus/host/catalogue.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace nodus::bench {

struct Loaded {
    explicit Loaded(std::string const& path) : module(path) {}
    host::Module module;
    host::Module const* modules[1] = {&module};
    host::Catalogue catalogue{modules};
};

struct Case {
    std::string name;  // "NodusAdd_Float3_Solve", "NodusEulerToQuaternion_Solve order=2"
    host::NodeType const* type;
    void* function;  // the kernel, or what is called in its place
    // Of the workspace, where the function takes one.
    host::InitWorkspace initialize = nullptr;
    std::map<std::string, std::int32_t> choices = {};
    std::int32_t frameStep = 0;  // from one pass over all nodes to the next
};

// All cases, in the order of the catalogue.
std::vector<Case> casesOf(host::Catalogue const& catalogue);

// Nodes of one case: input, output and workspace blocks, each at a multiple of 16. The inputs are
// in the range that the family works on, and depend on the kernel and the node's number only.
class Nodes {
public:
    Nodes(Case const& what, std::size_t count);
    Nodes(Nodes const&) = delete;

    std::size_t count() const { return m_count; }
    std::byte* input(std::size_t node) const { return m_first + node * m_stride; }
    std::byte* output(std::size_t node) const { return input(node) + m_output; }

    [[gnu::always_inline]] void call(std::size_t node) const
    {
        if (m_hasWorkspace)
            reinterpret_cast<host::SolveWithWorkspace>(m_function)(
                input(node), input(node) + m_workspace, output(node));
        else
            reinterpret_cast<host::Solve>(m_function)(input(node), output(node));
    }

private:
    struct alignas(16) Group {
        std::byte bytes[16];
    };
    void* m_function;
    bool m_hasWorkspace;
    std::size_t m_count, m_output, m_workspace, m_stride;
    std::vector<Group> m_memory;
    std::byte* m_first;
};

}  // namespace nodus::bench
