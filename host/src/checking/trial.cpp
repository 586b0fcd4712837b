// In the process that may crash: loading the module, comparing its lists, trying its kernels.
#include "exports.h"
#include "inputs.h"
#include "ledger.h"
#include "subject.h"

#include "nodus/host/module.h"
#include "nodus/runtime/KernelTable.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <set>
#include <thread>

namespace nodus::host {

namespace {

using Clock = std::chrono::steady_clock;

// Without a time limit. All kernels of the module take some five million.
constexpr std::size_t kRandomInputs = 16384;
// How many inputs of a kernel are kept for the trial on two threads.
constexpr std::size_t kKeptInputs = 512;

struct Kept {
    std::vector<std::byte> input;
    std::array<std::uint8_t, kMostPorts> texts;
    std::int32_t frame;
    Outcome outcome;
};

// For the checks that only a comparison can tell, up to Check::exceptions.
constexpr std::string_view kWords[] = {
    "",
    "writes to its input block, or near it",
    "writes between, before or behind its output ports",
    "does not write an output port",
    "gives another result when it is called again",
    "gives another result in blocks at another address",
    "gives another result when other bytes lie between and behind the input ports",
    "gives another result with a workspace that has seen other frames",
    "gives another result when two threads call it",
    "changes a text",
    "changes the control state of the processor",
    "raises a floating-point exception that no value explains",
};
static_assert(std::size(kWords) == static_cast<std::size_t>(Check::exceptions) + 1);

class Trial {
public:
    Trial(Ledger& ledger, Subject const& subject)
        : m_ledger(ledger), m_subject(subject), m_call(ledger.lanes[0]),
          m_caller(subject, m_call, ledger.beat), m_inputs(subject.type->inputs)
    {
    }

    void run(CheckOptions const& options, std::size_t kernels)
    {
        for (std::size_t i = 0; i < m_inputs.specialCount(); ++i) {
            m_inputs.special(i, m_call);
            tryInput();
        }
        using Seconds = std::chrono::duration<double>;
        auto const end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            Seconds(options.seconds.value_or(0)) / kernels);
        for (std::size_t i = 0; options.seconds ? Clock::now() < end : i < kRandomInputs; ++i)
            for (std::size_t batch = 0; batch < (options.seconds ? 64 : 1); ++batch) {
                m_inputs.random(m_call);
                tryInput();
            }
        tryOnThreads();
        if (long const stray = Caller::strayReferences() - m_strayBefore; stray != 0)
            addFault(m_ledger, Check::texts,
                     stray > 0 ? "keeps references to texts"
                               : "gives back references it never had");
    }

private:
    void tryInput()
    {
        ++m_ledger.inputs;
        constexpr Placing kHere{true, std::byte{0xA5}};
        Placing const there{false, std::byte{0x5A}, !m_subject.type->family->mayKeepOutputs};
        Checks seen = m_caller.run(kHere, m_first);
        seen |= m_caller.run(kHere, m_next);
        m_isUnsteady = m_isUnsteady || !(m_next == m_first);
        note(seen, Check::again, m_isUnsteady);
        seen |= m_caller.run(there, m_next);
        if (!m_isUnsteady && !(m_next == m_first))
            note(seen, causeOfDifference(there, kHere.fill), true);
        if (m_subject.hasWorkspace()) {
            seen |= m_caller.runWithUsedWorkspace(m_next);
            note(seen, Check::history, !m_isUnsteady && !(m_next == m_first));
        }
        if (seen.any())
            tell(seen, m_call);
        // All special values of a small node, and every so often one of the random patterns.
        if (m_kept.size() < kKeptInputs / 2 ||
            (m_kept.size() < kKeptInputs && m_ledger.inputs % 32 == 0))
            keep();
    }

    // Was it the address, the bytes between the ports, or what the outputs held before?
    Check causeOfDifference(Placing placing, std::byte fill)
    {
        placing.fillsOutputs = false;
        m_caller.run(placing, m_next);
        if (m_next == m_first)
            return Check::written;
        placing.fill = fill;
        m_caller.run(placing, m_next);
        return m_next == m_first ? Check::padding : Check::elsewhere;
    }

    void keep()
    {
        Kept& kept = m_kept.emplace_back();
        kept.input.assign(m_call.input, m_call.input + m_subject.type->inputExtent);
        std::ranges::copy(m_call.texts, kept.texts.begin());
        kept.frame = m_call.frame;
        kept.outcome = m_first;
    }

    // Two threads go through the kept inputs, one of them in reverse order.
    void tryOnThreads()
    {
        struct Finding {
            Checks seen;
            std::size_t kept = 0;
        } findings[2];
        auto const work = [&](std::size_t thread) {
            CallInProgress& call = m_ledger.lanes[1 + thread];
            Caller caller(m_subject, call, m_ledger.beat);
            currentLane() = 1 + thread;
            Outcome outcome;
            for (std::size_t i = 0; i < m_kept.size() && findings[thread].seen.none(); ++i) {
                std::size_t const which = thread == 0 ? i : m_kept.size() - 1 - i;
                load(m_kept[which], call);
                Checks seen = caller.run({true, std::byte{0xA5}}, outcome);
                note(seen, Check::threads, !m_isUnsteady && !(outcome == m_kept[which].outcome));
                findings[thread] = {seen, which};
            }
        };
        {
            std::jthread const first(work, std::size_t{0}), second(work, std::size_t{1});
        }
        for (Finding const& finding : findings)
            if (finding.seen.any()) {
                load(m_kept[finding.kept], m_call);
                tell(finding.seen, m_call);
            }
    }

    void load(Kept const& kept, CallInProgress& call) const
    {
        if (!kept.input.empty())
            std::memcpy(call.input, kept.input.data(), kept.input.size());
        std::ranges::copy(kept.texts, call.texts);
        call.frame = kept.frame;
    }

    static void note(Checks& seen, Check check, bool isFault)
    {
        if (isFault)
            seen.set(static_cast<std::size_t>(check));
    }

    void tell(Checks const& seen, CallInProgress const& call)
    {
        for (std::size_t check = 1; check < std::size(kWords); ++check)
            if (seen[check])
                addFault(m_ledger, static_cast<Check>(check), std::string(kWords[check]), &call);
    }

    Ledger& m_ledger;
    Subject const& m_subject;
    CallInProgress& m_call;
    Caller m_caller;
    Inputs m_inputs;
    Outcome m_first, m_next;
    // It has been seen to change its mind; no other comparison means anything then.
    bool m_isUnsteady = false;
    long m_strayBefore = Caller::strayReferences();
    std::vector<Kept> m_kept;
};

void compareRecords(Ledger& ledger, Module const& module, std::vector<std::string> const& faults)
{
    auto const fault = [&](std::string const& kernel, std::string const& text) {
        addFault(ledger, Check::records, kernel, text);
    };
    std::set<std::string_view> registered;
    for (Kernel const& kernel : module.kernels()) {
        registered.insert(kernel.name);
        std::string const name(kernel.name);
        if (void const* const symbol = module.symbol(name); symbol == nullptr)
            fault(name, "is registered, but not exported");
        else if (symbol != kernel.entry)
            fault(name, "is registered with an entry point that is not the exported symbol");
    }
    for (std::string const& name : exportedKernels(module.path()))
        if (!registered.contains(name))
            fault(name, "is exported, but not registered");
    for (std::string const& line : faults)
        fault("", line);
}

// In the order of the records, which is the one that a reader knows.
std::vector<Subject> subjectsOf(Module const& module, Catalogue const& catalogue)
{
    std::vector<Subject> subjects;
    for (Kernel const& kernel : module.kernels()) {
        std::string const name(kernel.name);
        bool const isInit = name.ends_with("_Init");
        NodeType const* const type =
            catalogue.find(isInit ? name.substr(0, name.size() - 4) + "Solve" : name);
        if (type != nullptr && type->isCallable())
            subjects.push_back({name, type, isInit});
    }
    return subjects;
}

// False when the ledger has no room for such a node.
bool describe(Ledger& ledger, Subject const& subject)
{
    NodeType const& type = *subject.type;
    copyText(ledger.kernel, subject.kernel);
    ledger.inputExtent = type.inputExtent;
    ledger.outputExtent = subject.outputExtent();
    ledger.workspaceExtent = type.workspaceExtent;
    ledger.portCount = 0;
    if (type.inputs.size() > kMostPorts ||
        std::max({type.inputExtent, type.outputExtent, type.workspaceExtent}) > kLargestBlock) {
        addFault(ledger, Check::records, "has blocks that are too large to be tried");
        return false;
    }
    std::memset(ledger.lanes[0].input, 0, type.inputExtent);
    for (Port const& port : type.inputs) {
        Ledger::Port& known = ledger.ports[ledger.portCount++];
        copyText(known.name, port.name);
        known.type = port.type->id;
        known.offset = port.offset;
    }
    return true;
}

}  // namespace

std::size_t& currentLane()
{
    static thread_local std::size_t lane = 0;
    return lane;
}

void tryModule(Ledger& ledger, std::string const& path, CheckOptions const& options,
               std::size_t first)
{
    {
        Module const module(path);
        Diagnostics diagnostics;
        Catalogue const catalogue(module, diagnostics);
        if (!ledger.recordsCompared)
            compareRecords(ledger, module, diagnostics.lines());
        ledger.recordsCompared = true;
        ledger.kernels = module.kernels().size();
        auto const subjects = subjectsOf(module, catalogue);
        ledger.phase = Phase::trying;
        for (std::size_t i = first; i < subjects.size(); ++i) {
            ledger.subject = i;
            if (!describe(ledger, subjects[i]))
                continue;
            ++ledger.tried;
            Trial(ledger, subjects[i]).run(options, subjects.size());
        }
        ledger.kernel[0] = '\0';
        ledger.phase = Phase::unloading;
    }
    if (std::size_t const left = runtime::registeredKernels().size(); left != 0)
        addFault(ledger, Check::records, "",
                 "leaves " + std::to_string(left) + " kernels registered when it is unloaded");
    ledger.phase = Phase::finished;
}

}  // namespace nodus::host
