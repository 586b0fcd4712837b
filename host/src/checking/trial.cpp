// Trying one kernel, in the process that may crash.
#include "trial.h"

#include "inputs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <barrier>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <span>
#include <thread>

namespace nodus::host {

namespace {

using Clock = std::chrono::steady_clock;

// Without a time limit. All kernels of the module take some five million.
constexpr std::size_t kRandomInputs = 16384;
// How many inputs of a kernel are kept for the trial on two threads.
constexpr std::size_t kKeptInputs = 512;
// How many calls all kernels together make to see whether they keep memory.
constexpr std::size_t kManyCalls = 2'000'000;
// As most calls are made.
constexpr Placing kHere{true, std::byte{0xA5}, std::byte{0xA5}};

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
    "gives another result when other bytes lie between and behind the output ports",
    "gives another result with a workspace that has seen other frames",
    "gives another result when two threads call it",
    "gives another result when eight threads make the first calls at once",
    "changes a text",
    "changes the control state of the processor",
    "leaves a value on the stack of the x87 unit",
    "raises a floating-point exception that no value explains",
};
static_assert(std::size(kWords) == static_cast<std::size_t>(Check::exceptions) + 1);

class Trial {
public:
    Trial(Ledger& ledger, Subject const& subject, ModuleData& data)
        : m_ledger(ledger), m_subject(subject), m_data(data), m_call(ledger.lanes[0]),
          m_caller(subject, m_call, ledger.beat), m_inputs(subject.type->inputs)
    {
    }

    void run(CheckOptions const& options, std::size_t kernels)
    {
        tryFirstCalls();
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
        // What follows is not for kernels whose fault is known: it would tell the same once more.
        if (!hasFault() && !m_firstSeen.none())
            tell(m_firstSeen, m_ledger.lanes[m_firstLane]);
        if (!hasFault() && !m_kept.empty()) {
            tryLeaks(kManyCalls / kernels);
            tryFar();
            tryFork();
        }
    }

private:
    void tryInput()
    {
        ++m_ledger.inputs;
        Placing const there{false, std::byte{0x5A}, std::byte{0x5A},
                            !m_subject.type->family->mayKeepOutputs};
        Checks seen = m_caller.run(kHere, m_first);
        seen |= m_caller.run(kHere, m_next);
        m_isUnsteady = m_isUnsteady || !(m_next == m_first);
        note(seen, Check::again, m_isUnsteady);
        seen |= m_caller.run(there, m_next);
        if (!m_isUnsteady && !(m_next == m_first))
            note(seen, causeOfDifference(there), true);
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
    Check causeOfDifference(Placing placing)
    {
        placing.fillsOutputs = false;
        m_caller.run(placing, m_next);
        if (m_next == m_first)
            return Check::written;
        placing.outputFill = kHere.outputFill;
        m_caller.run(placing, m_next);
        if (m_next == m_first)
            return Check::gaps;
        placing.inputFill = kHere.inputFill;
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
                Checks seen = caller.run(kHere, outcome);
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

    // The very first calls of the kernel: all threads have the same input, and begin together.
    void tryFirstCalls()
    {
        m_inputs.random(m_call);
        keep();
        std::array<Outcome, kThreads> outcomes;
        std::array<Checks, kThreads> seen;
        std::barrier together(static_cast<std::ptrdiff_t>(kThreads));
        auto const work = [&](std::size_t thread) {
            CallInProgress& call = m_ledger.lanes[1 + thread];
            currentLane() = 1 + thread;
            Caller caller(m_subject, call, m_ledger.beat);
            load(m_kept.front(), call);
            together.arrive_and_wait();
            seen[thread] = caller.run(kHere, outcomes[thread]);
        };
        {
            std::vector<std::jthread> threads;
            for (std::size_t thread = 0; thread < kThreads; ++thread)
                threads.emplace_back(work, thread);
        }
        m_caller.run(kHere, m_first);
        m_kept.front().outcome = m_first;
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            note(seen[thread], Check::first, !(outcomes[thread] == m_first));
            if (seen[thread].any() && m_firstSeen.none()) {
                m_firstSeen = seen[thread];
                m_firstLane = 1 + thread;
            }
        }
    }

    // All kept inputs once more, after which all that is built on first use is there; from the one
    // to the other, nothing may change but the ports.
    void tryFar()
    {
        for (Kept const& kept : m_kept) {
            load(kept, m_call);
            m_caller.repeat(1);
            if (&kept == &m_kept.front())
                m_data.remember();
        }
        if (std::size_t const bytes = m_data.countChanges(); bytes != 0)
            addFault(m_ledger, Check::far,
                     "writes to " + std::to_string(bytes) + " bytes of the module's own data");
    }

    void tryLeaks(std::size_t calls)
    {
        std::size_t const each = calls / m_kept.size() + 1;
        std::size_t const before = allocatedBytes();
        for (Kept const& kept : m_kept) {
            load(kept, m_call);
            m_caller.repeat(each);
        }
        std::size_t const after = allocatedBytes(), made = each * m_kept.size();
        if (after > before + made)
            addFault(m_ledger, Check::leaks,
                     "keeps " + std::to_string(after - before) + " bytes of memory over " +
                         std::to_string(made) + " calls");
    }

    // A fork has this thread alone, whatever others held.
    void tryFork()
    {
        constexpr std::size_t kInputs = 16;
        constexpr unsigned kSeconds = 2;
        pid_t const process = ::fork();
        if (process < 0)
            return;
        if (process == 0) {
            ::alarm(kSeconds);
            for (Kept const& kept : std::span(m_kept).first(std::min(kInputs, m_kept.size()))) {
                load(kept, m_call);
                m_caller.run(kHere, m_next);
                if (!(m_next == kept.outcome))
                    ::_exit(1);
            }
            ::_exit(0);
        }
        int status = 0;
        while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        if (status != 0)
            addFault(m_ledger, Check::fork,
                     WIFEXITED(status)             ? "gives another result in a forked process"
                     : WTERMSIG(status) == SIGALRM ? "does not return in a forked process"
                                                   : "ends a forked process by a signal");
    }

    bool hasFault() const
    {
        return std::any_of(m_ledger.faults.begin(), m_ledger.faults.begin() + m_ledger.faultCount,
                           [&](Ledger::Fault const& fault) {
                               return std::string_view(fault.kernel) == m_ledger.kernel;
                           });
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
    ModuleData& m_data;
    CallInProgress& m_call;
    Caller m_caller;
    Inputs m_inputs;
    Outcome m_first, m_next;
    // It has been seen to change its mind; no other comparison means anything then.
    bool m_isUnsteady = false;
    long m_strayBefore = Caller::strayReferences();
    std::vector<Kept> m_kept;
    Checks m_firstSeen;  // by the first calls, in this lane
    std::size_t m_firstLane = 0;
};

}  // namespace

std::size_t& currentLane()
{
    static thread_local std::size_t lane = 0;
    return lane;
}

void tryKernel(Ledger& ledger, Subject const& subject, ModuleData& data,
               CheckOptions const& options, std::size_t kernels)
{
    Trial(ledger, subject, data).run(options, kernels);
}

}  // namespace nodus::host
