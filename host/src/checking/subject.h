// One kernel with everything that its calls need: blocks in guarded memory, a log that remembers.
#pragma once

#include "ledger.h"
#include "memory.h"

#include "nodus/String.h"
#include "nodus/host/catalogue.h"
#include "nodus/runtime/LocalServiceTable.h"

#include <bitset>
#include <string>
#include <utility>
#include <vector>

namespace nodus::host {

// An Init kernel is tried as a node whose output block is the workspace.
struct Subject {
    std::string kernel;
    NodeType const* type;
    bool isInit;

    std::vector<Port> const& outputs() const { return isInit ? type->workspace : type->outputs; }
    std::size_t outputExtent() const { return isInit ? type->workspaceExtent : type->outputExtent; }
    bool hasWorkspace() const { return !isInit && type->solveWithWorkspace != nullptr; }
};

using Checks = std::bitset<32>;

// What a call gave: the bytes of its output ports, the texts of String outputs and of the log.
struct Outcome {
    std::vector<std::byte> bytes;
    std::string said;
    bool operator==(Outcome const&) const = default;
};

// Where the blocks of a call lie, what fills the bytes that are no port's, and whether the output
// ports are filled with it as well or with zeros, as a host does.
struct Placing {
    bool atEnd;
    std::byte inputFill, outputFill;
    bool fillsOutputs = false;
};

// The calls of one thread. Each is described in the ledger before it is made, and the faults that
// can be seen from one call alone are returned.
class Caller {
public:
    Caller(Subject const& subject, CallInProgress& call, std::atomic<std::uint64_t>& beat);

    // Calls with the input that the ledger has.
    Checks run(Placing placing, Outcome& outcome);
    // The same with the workspace of the calls before.
    Checks runWithUsedWorkspace(Outcome& outcome);

    // Calls so many times, one after the other, and looks at nothing.
    void repeat(std::size_t count);

    // How many references to sample texts there are more or less than there should be.
    static long strayReferences();

private:
    struct Log : runtime::LogService {
        std::string lines;
        void message(char const* text) override { (lines += text) += '\n'; }
    };
    using Gaps = std::vector<std::pair<std::size_t, std::size_t>>;

    Checks runAt(Zone const& in, Zone const& out, Zone const& workspace, Placing placing,
                 bool initialise, Outcome& outcome);
    void fillOutput(Zone const& out, Placing placing) const;
    void invoke(Zone const& in, Zone const& out, Zone const& workspace, bool initialise);
    void fillInput(Zone const& in, std::byte fill) const;
    void takeOutcome(Zone const& out, Outcome& outcome);

    Subject const& m_subject;
    CallInProgress& m_call;
    std::atomic<std::uint64_t>& m_beat;
    GuardedPages m_in, m_out, m_workspace, m_usedWorkspace;
    Gaps m_inputGaps, m_outputGaps, m_workspaceGaps;
    std::vector<std::size_t> m_inputTexts, m_outputTexts;  // offsets of String ports
    std::vector<std::byte> m_before;
    bool m_isUsed = false;
    Log m_log;
    runtime::LocalServiceTable m_services;
};

}  // namespace nodus::host
