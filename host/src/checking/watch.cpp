// The process that stays: starts the one that tries, sees how it ends, and goes on behind the
// kernel that ended it.
#include "ledger.h"
#include "memory.h"

#include "nodus/host/diagnostics.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <memory>
#include <new>
#include <thread>

namespace nodus::host {

namespace {

using namespace std::chrono_literals;

// No call of a kernel takes a thousandth of it.
constexpr auto kPatience = 5s;
constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};

Ledger* g_ledger = nullptr;  // for the handler of signals

void onSignal(int signal, siginfo_t* info, void*)
{
    g_ledger->signalLane = currentLane();
    g_ledger->signalAddress = reinterpret_cast<std::uintptr_t>(info->si_addr);
    // The default action ends the process now, and the one that watches sees by which signal.
    ::raise(signal);
}

void catchSignals()
{
    // A stack of its own, for a kernel that uses up the other.
    static std::byte stack[64 * 1024];
    stack_t const alternate{stack, 0, sizeof stack};
    ::sigaltstack(&alternate, nullptr);
    struct sigaction action {};
    action.sa_sigaction = onSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER | SA_SIGINFO | SA_ONSTACK;
    for (int const signal : kSignals)
        ::sigaction(signal, &action, nullptr);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        std::signal(signal, SIG_DFL);
}

[[noreturn]] void child(Ledger& ledger, std::string const& path, CheckOptions const& options,
                        std::size_t first)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    g_ledger = &ledger;
    catchSignals();
    try {
        tryModule(ledger, path, options, first);
    } catch (Fault const& fault) {
        for (std::string const& line : fault.lines())
            addFault(ledger, Check::records, "", line);
        ledger.phase = Phase::refused;
    }
    // As a process usually ends: what looks for leaks looks now.
    std::exit(0);
}

// "17 bytes behind its input block", when the address is near one.
std::string wordsForAddress(Ledger const& ledger, CallInProgress const& call)
{
    std::uintptr_t const address = ledger.signalAddress;
    struct Block {
        char const* name;
        std::uintptr_t begin;
        std::size_t extent;
    };
    Block blocks[] = {{"input", call.inAddress, ledger.inputExtent},
                      {"output", call.outAddress, ledger.outputExtent},
                      {"workspace", call.workspaceAddress, ledger.workspaceExtent}};
    // Of several, the one that it is nearest to.
    auto const distance = [&](Block const& block) {
        return address < block.begin ? block.begin - address : address - block.begin;
    };
    std::ranges::sort(blocks, {}, distance);
    for (Block const& block : blocks) {
        constexpr std::uintptr_t kNear = GuardedPages::kReserve;
        if (block.begin == 0)
            continue;
        if (address >= block.begin && address < block.begin + block.extent + kNear)
            return " at byte " + std::to_string(address - block.begin) + " of its " + block.name +
                   " block, which has " + std::to_string(block.extent);
        if (address < block.begin && block.begin - address < kNear)
            return " " + std::to_string(block.begin - address) + " bytes before its " + block.name +
                   " block";
    }
    return address < 4096 ? " at a null pointer" : " elsewhere in memory";
}

std::string wordsForSignal(Ledger const& ledger, CallInProgress const& call, int signal)
{
    char const* const name = ::sigabbrev_np(signal);
    std::string text = std::string("SIG") + (name != nullptr ? name : "?");
    if (signal == SIGSEGV)
        text += wordsForAddress(ledger, call);
    return text + " (" + ::sigdescr_np(signal) + ")";
}

// Waits for the end of the process; true when it had to be ended because nothing moved any more.
bool waitFor(pid_t process, Ledger const& ledger, int& status)
{
    auto lastMove = std::chrono::steady_clock::now();
    std::uint64_t lastBeat = ledger.beat;
    bool isHanging = false;
    for (;;) {
        pid_t const ended = ::waitpid(process, &status, isHanging ? 0 : WNOHANG);
        if (ended == process || (ended < 0 && errno != EINTR))
            return isHanging;
        std::this_thread::sleep_for(2ms);
        auto const now = std::chrono::steady_clock::now();
        if (std::uint64_t const beat = ledger.beat; beat != lastBeat) {
            lastBeat = beat;
            lastMove = now;
        } else if (now - lastMove > kPatience) {
            isHanging = true;
            ::kill(process, SIGKILL);
        }
    }
}

void tellHowItEnded(Ledger& ledger, bool isHanging, int status)
{
    CallInProgress const& call = ledger.lanes[ledger.signalLane % kLanes];
    bool const isTrying = ledger.phase == Phase::trying;
    CallInProgress const* const input = isTrying ? &call : nullptr;
    std::string const when = isTrying                           ? ""
                             : ledger.phase == Phase::unloading ? " while it is unloaded"
                             : ledger.phase == Phase::reloading
                                 ? " while it is loaded and unloaded again and again"
                             : ledger.phase == Phase::finished ? " when the process ends"
                                                               : " while it is loaded";
    if (!isTrying)
        ledger.kernel[0] = '\0';
    if (isHanging)
        addFault(ledger, Check::hang, "does not return" + when, input);
    else if (WIFSIGNALED(status))
        addFault(ledger, Check::signal, wordsForSignal(ledger, call, WTERMSIG(status)) + when,
                 input);
    else if (ledger.phase != Phase::finished || WEXITSTATUS(status) != 0)
        addFault(ledger, Check::process,
                 "ends the process with status " + std::to_string(WEXITSTATUS(status)) + when,
                 input);
}

struct Unmap {
    void operator()(Ledger* ledger) const { ::munmap(ledger, sizeof *ledger); }
};

std::unique_ptr<Ledger, Unmap> sharedLedger()
{
    void* const memory = ::mmap(nullptr, sizeof(Ledger), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    // Most of its pages are never touched.
    return std::unique_ptr<Ledger, Unmap>(::new (memory) Ledger);
}

CheckReport reportOf(Ledger const& ledger)
{
    CheckReport report{ledger.kernels, ledger.tried, ledger.inputs, 0, {}};
    for (CallInProgress const& lane : ledger.lanes)
        report.calls += lane.calls;
    for (std::size_t i = 0; i < ledger.faultCount; ++i) {
        Ledger::Fault const& fault = ledger.faults[i];
        report.faults.push_back({fault.check, fault.kernel, fault.text, fault.input, fault.bytes});
    }
    return report;
}

}  // namespace

CheckReport checkModule(std::string const& path, CheckOptions const& options)
{
    auto const ledger = sharedLedger();
    for (std::size_t first = 0;;) {
        ledger->phase = Phase::loading;
        ledger->signalLane = 0;
        ledger->signalAddress = 0;
        pid_t const process = ::fork();
        if (process < 0)
            throw Fault("cannot start a process: " + systemError(errno));
        if (process == 0)
            child(*ledger, path, options, first);
        int status = 0;
        bool const isHanging = waitFor(process, *ledger, status);
        if (ledger->phase == Phase::refused) {
            std::vector<std::string> lines;
            for (CheckFault const& fault : reportOf(*ledger).faults)
                lines.push_back(fault.text);
            throw Fault(lines);
        }
        tellHowItEnded(*ledger, isHanging, status);
        if (ledger->phase != Phase::trying)
            return reportOf(*ledger);
        first = ledger->subject + 1;
    }
}

}  // namespace nodus::host
