// Faults with the words for their input, and the sample texts.
#include "ledger.h"

#include "nodus/host/literals.h"

#include <algorithm>

namespace nodus::host {

namespace {

constexpr CheckName kNames[] = {
    {Check::records, "records", "records, exported symbols and catalogue agree"},
    {Check::input, "input", "input blocks keep every byte"},
    {Check::output, "output", "nothing is written but output ports"},
    {Check::written, "written", "every output port is written"},
    {Check::again, "again", "the same result when called again"},
    {Check::elsewhere, "elsewhere", "the same result at another address"},
    {Check::padding, "padding", "the same result whatever lies between the inputs"},
    {Check::gaps, "gaps", "the same result whatever lies between the outputs"},
    {Check::history, "history", "the same result after other frames"},
    {Check::threads, "threads", "the same result on two threads"},
    {Check::first, "first", "the same result in first calls of eight threads"},
    {Check::texts, "texts", "texts unchanged, references given back"},
    {Check::control, "control", "control state of the processor unchanged"},
    {Check::stack, "stack", "nothing left on the x87 stack"},
    {Check::exceptions, "exceptions", "no floating-point exception without need"},
    {Check::far, "far", "nothing is written to the module's own data"},
    {Check::leaks, "leaks", "no memory is kept over a million calls"},
    {Check::fork, "fork", "the same result in a forked process"},
    {Check::reload, "reload", "loaded and unloaded a hundred times"},
    {Check::signal, "signal", "no signal"},
    {Check::hang, "hang", "every call returns"},
    {Check::process, "process", "the process goes on"},
};

std::string const kTexts[] = {
    "",
    "",
    "speed ",
    "100 %s %n %d\n",
    std::string("a\0b", 3),
    "not UTF-8: \xC3\x28\xFF",
    std::string(511, 'x'),
    std::string(5000, 'y'),
};

std::string inputText(Ledger const& ledger, CallInProgress const& call)
{
    std::string text;
    std::size_t string = 0;
    for (std::size_t i = 0; i < ledger.portCount; ++i) {
        Ledger::Port const& port = ledger.ports[i];
        ValueType const& type = valueType(port.type);
        std::string value;
        if (port.type == TypeId::String) {
            std::size_t const which = call.texts[string++];
            value = which == 0 ? "null" : inQuotes(sampleText(which));
        } else {
            value = valueText(type, call.input + port.offset, {});
        }
        text += std::string(text.empty() ? "" : ", ") + port.name + "=" + value;
    }
    return text + (text.empty() ? "frame " : ", frame ") + std::to_string(call.frame);
}

std::string hexadecimal(std::byte const* bytes, std::size_t size)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[std::to_integer<unsigned>(bytes[i]) >> 4];
        text += kDigits[std::to_integer<unsigned>(bytes[i]) & 15];
    }
    return text;
}

}  // namespace

std::span<CheckName const> checkNames() { return kNames; }

std::size_t sampleTextCount() { return std::size(kTexts); }
std::string const& sampleText(std::size_t i) { return kTexts[i]; }

void addFault(Ledger& ledger, Check check, std::string const& kernel, std::string const& text)
{
    if (ledger.faultCount == kMostFaults)
        return;
    Ledger::Fault& fault = ledger.faults[ledger.faultCount];
    fault.check = check;
    copyText(fault.kernel, kernel);
    copyText(fault.text, printable(text));
    fault.input[0] = fault.bytes[0] = '\0';
    ++ledger.faultCount;
}

void addFault(Ledger& ledger, Check check, std::string const& text, CallInProgress const* call)
{
    std::string const kernel = ledger.kernel;
    // One of a kind is enough to look for the cause.
    for (std::size_t i = 0; i < ledger.faultCount; ++i)
        if (ledger.faults[i].check == check && ledger.faults[i].kernel == kernel)
            return;
    addFault(ledger, check, kernel, text);
    if (call == nullptr || ledger.faultCount == kMostFaults)
        return;
    Ledger::Fault& fault = ledger.faults[ledger.faultCount - 1];
    copyText(fault.input, printable(inputText(ledger, *call)));
    copyText(fault.bytes, hexadecimal(call->input, ledger.inputExtent));
}

}  // namespace nodus::host
