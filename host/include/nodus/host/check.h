// Trying every kernel of a module, each promise of the binary contract on inputs of every kind, in
// a process of its own that may crash or hang.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// What is looked at, in the order of the report.
enum class Check : std::uint8_t {
    records,     // registration records, exported symbols and the catalogue agree
    input,       // nothing of an input block changes, nor before or behind it
    output,      // nothing of an output block or workspace changes but its ports
    written,     // every output port is written, unless the catalogue says that it may not be
    again,       // the same input has the same result
    elsewhere,   // also in blocks at another address
    padding,     // also with other bytes between and behind the input ports
    gaps,        // also with other bytes between and behind the output ports
    history,     // also with a workspace that has seen other frames
    threads,     // also on two threads at a time
    first,       // also when eight threads make the first calls at once
    texts,       // texts are unchanged, and each reference to one is given back
    control,     // rounding, traps and direction of the processor are as they were
    stack,       // no value is left on the stack of the x87 unit
    exceptions,  // no floating-point exception is raised that the values do not explain
    far,         // the module's own data are as they were, once they have been made
    leaks,       // no memory is kept, over a million calls of all kernels
    fork,        // the same results in a process that was forked
    reload,      // the module can be loaded and unloaded a hundred times
    signal,      // no signal
    hang,        // every call comes back
    process,     // nor does a call end the process
};

struct CheckName {
    Check check;
    std::string_view name;  // "padding"
    std::string_view text;  // what is promised, a few words
};
std::span<CheckName const> checkNames();

struct CheckFault {
    Check check;
    std::string kernel;  // empty when the module as a whole is meant
    std::string text;    // what was seen
    std::string input;   // "a=(1, 2, 3), b=0, frame 7"; empty when it does not matter
    std::string bytes;   // the same, the bytes of the input block in hexadecimal
};

struct CheckReport {
    std::size_t kernels = 0;  // registered
    std::size_t tried = 0;    // called
    std::uint64_t inputs = 0, calls = 0;
    std::vector<CheckFault> faults;  // the first of each check and kernel, in the kernels' order
};

struct CheckOptions {
    // How long all kernels together are given random bit patterns; without it, a fixed number of
    // patterns: the same inputs in every run.
    std::optional<double> seconds;
};

// Starts processes, so the caller has one thread. Throws Fault when the file is no module that can
// be loaded, or a process cannot be started.
CheckReport checkModule(std::string const& path, CheckOptions const& options = {});

}  // namespace nodus::host
