// nodus check: whether every kernel of a module keeps its promises.
#include "command_line.h"
#include "environment.h"

#include "nodus/host/check.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/result_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace nodus::tools {

namespace {

using host::CheckFault;
using host::CheckReport;

struct CheckOptions {
    std::string module;
    double seconds = 0;
    bool isJson = false;
};

constexpr int kFaultsFound = 1;

std::string_view nameOf(host::Check check)
{
    return std::ranges::find(host::checkNames(), check, &host::CheckName::check)->name;
}

// How many kernels have a fault of that kind; those of the module count as one each.
std::size_t countOf(CheckReport const& report, host::Check check)
{
    return static_cast<std::size_t>(std::ranges::count(report.faults, check, &CheckFault::check));
}

std::string forPeople(std::string const& path, CheckReport const& report, double seconds)
{
    std::string text;
    for (CheckFault const& fault : report.faults)
        text += fmt::format("{}{}{}{}\n", fault.kernel, fault.kernel.empty() ? "" : ": ",
                            fault.text, fault.input.empty() ? "" : ": " + fault.input);
    text += fmt::format("{}{:<10} {:<48} faults\n", text.empty() ? "" : "\n", "check", "promise");
    for (host::CheckName const& name : host::checkNames())
        text +=
            fmt::format("{:<10} {:<48} {:>6}\n", name.name, name.text, countOf(report, name.check));
    return text + fmt::format(
                      "\n{}: {} kernels, {} tried with {} inputs in {} calls, {:.1f} s: {}\n", path,
                      report.kernels, report.tried, report.inputs, report.calls, seconds,
                      report.faults.empty()       ? "no fault"
                      : report.faults.size() == 1 ? "1 fault"
                                                  : fmt::format("{} faults", report.faults.size()));
}

std::string forMachines(std::string const& path, CheckReport const& report, double seconds)
{
    std::string checks, faults;
    for (host::CheckName const& name : host::checkNames())
        checks += fmt::format("{}\"{}\": {}", checks.empty() ? "" : ", ", name.name,
                              countOf(report, name.check));
    for (CheckFault const& fault : report.faults)
        faults += fmt::format("{}\n  {{\"check\": \"{}\", \"kernel\": {}, \"text\": {}, \"input\": "
                              "{}, \"bytes\": \"{}\"}}",
                              faults.empty() ? "" : ",", nameOf(fault.check),
                              host::jsonText(fault.kernel), host::jsonText(fault.text),
                              host::jsonText(fault.input), fault.bytes);
    return fmt::format("{{\"module\": {}, \"kernels\": {}, \"tried\": {}, \"inputs\": {}, "
                       "\"calls\": {}, \"seconds\": {:.1f},\n \"checks\": {{{}}},\n"
                       " \"faults\": [{}]}}\n",
                       host::jsonText(host::printable(path)), report.kernels, report.tried,
                       report.inputs, report.calls, seconds, checks, faults);
}

int check(CheckOptions const& options, Shared const& shared)
{
    std::vector<std::string> paths = modulePaths(shared);
    if (!options.module.empty())
        paths = {options.module};
    bool isSound = true;
    for (std::string const& path : paths) {
        host::CheckOptions wanted;
        if (options.seconds > 0)
            wanted.seconds = options.seconds;
        auto const start = std::chrono::steady_clock::now();
        CheckReport const report = host::checkModule(path, wanted);
        std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
        print(options.isJson ? forMachines(path, report, took.count())
                             : forPeople(path, report, took.count()));
        isSound = isSound && report.faults.empty();
    }
    return isSound ? 0 : kFaultsFound;
}

}  // namespace

Command addCheck(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("check", "Try every kernel of a module");
    auto const options = std::make_shared<CheckOptions>();
    command->add_option("MODULE", options->module,
                        "The module's file, with its catalogue beside it.\n"
                        "Without it: those of --module, or that of this installation.");
    command
        ->add_option("--seconds", options->seconds,
                     "For how long the kernels get random bit patterns, all together.\n"
                     "Without it: a few million patterns, the same in every run.")
        ->type_name("N")
        ->check(numberFrom(0.001, 1e6));
    command->add_flag("--json", options->isJson, "Write the report as JSON, for programs.");
    command->footer(
        "Each kernel gets every special value in every lane and random bit patterns, in blocks\n"
        "that end at memory which cannot be read, in a process of its own: a kernel that crashes\n"
        "or hangs is named with its input, and the check goes on.\n\n"
        "Examples:\n  nodus check\n"
        "  nodus check lib/libown.so --seconds 60 --json\n\n"
        "Exit status:\n"
        "  0  the module has no fault\n"
        "  1  it has; each is in the report\n"
        "  2  it is no module that can be loaded");
    return {command, [options, &shared] { return check(*options, shared); }};
}

}  // namespace nodus::tools
