// Trying a module: its lists, its kernels one by one, and loading it again and again.
#include "exports.h"
#include "trial.h"

#include "nodus/host/module.h"
#include "nodus/runtime/KernelTable.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace nodus::host {

namespace {

// The module as a whole, once nobody calls it any more.
void loadAgainAndAgain(Ledger& ledger, std::string const& path)
{
    constexpr int kTimes = 100, kSettled = 10;
    // The loader's own tables grow now and then, by less than that each time.
    constexpr std::size_t kNoise = 64;
    std::size_t before = 0;
    for (int time = 0; time < kTimes; ++time) {
        if (time == kSettled)
            before = allocatedBytes();
        {
            Module const module(path);
            ++ledger.beat;
        }
        if (!runtime::registeredKernels().empty())
            return;  // that is told already
    }
    std::size_t const kept = allocatedBytes() - std::min(before, allocatedBytes());
    if (kept > kNoise * (kTimes - kSettled))
        addFault(ledger, Check::reload, "",
                 "keeps " + std::to_string(kept / (kTimes - kSettled)) +
                     " bytes of memory each time it is loaded and unloaded");
}

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
        ModuleData data(module);
        ledger.phase = Phase::trying;
        for (std::size_t i = first; i < subjects.size(); ++i) {
            ledger.subject = i;
            if (!describe(ledger, subjects[i]))
                continue;
            ++ledger.tried;
            tryKernel(ledger, subjects[i], data, options, subjects.size());
        }
        ledger.kernel[0] = '\0';
        ledger.phase = Phase::unloading;
    }
    if (std::size_t const left = runtime::registeredKernels().size(); left != 0)
        addFault(ledger, Check::records, "",
                 "leaves " + std::to_string(left) + " kernels registered when it is unloaded");
    ledger.phase = Phase::reloading;
    loadAgainAndAgain(ledger, path);
    ledger.phase = Phase::finished;
}

}  // namespace nodus::host
