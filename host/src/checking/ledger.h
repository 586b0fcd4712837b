// What the process that tries a module writes down for the one that watches it: in shared memory of
// fixed shape, so that it can be read whatever has become of the writer.
#pragma once

#include "nodus/host/check.h"
#include "nodus/host/value_types.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace nodus::host {

inline constexpr std::size_t kLargestBlock = std::size_t{16} * 1024;
inline constexpr std::size_t kMostPorts = 64;
inline constexpr std::size_t kMostFaults = 4096;
inline constexpr std::size_t kThreads = 8;
inline constexpr std::size_t kLanes = 1 + kThreads;  // the main thread, and others

enum class Phase : std::uint32_t { loading, trying, unloading, reloading, finished, refused };

// The call that a thread is about to make, or makes. Written by that thread alone.
struct CallInProgress {
    std::atomic<std::uint64_t> calls;
    std::int32_t frame;
    std::uint8_t texts[kMostPorts];  // which of the sample texts each String port has
    std::byte input[kLargestBlock];
    std::uintptr_t inAddress, outAddress, workspaceAddress;
};

struct Ledger {
    struct Port {
        char name[48];
        TypeId type;
        std::size_t offset;
    };
    struct Fault {
        Check check;
        char kernel[128], text[1024], input[2048], bytes[2 * 1024];
    };

    std::atomic<Phase> phase;
    std::atomic<std::size_t> subject;  // counts what is tried
    std::atomic<std::uint64_t> beat;   // moves as long as something happens
    std::size_t kernels = 0, tried = 0;
    std::uint64_t inputs = 0;
    bool recordsCompared = false;

    // What is being tried.
    char kernel[128] = {};
    std::size_t inputExtent = 0, outputExtent = 0, workspaceExtent = 0, portCount = 0;
    std::array<Port, kMostPorts> ports;  // of the input
    std::array<CallInProgress, kLanes> lanes;

    // Written by the handler of signals.
    std::atomic<std::size_t> signalLane;
    std::atomic<std::uintptr_t> signalAddress;

    std::size_t faultCount = 0;
    std::array<Fault, kMostFaults> faults;
};

// Adds a fault of the kernel that is being tried, with its input when a lane is given.
void addFault(Ledger& ledger, Check check, std::string const& text,
              CallInProgress const* call = nullptr);
// Of a kernel by name, or of the module.
void addFault(Ledger& ledger, Check check, std::string const& kernel, std::string const& text);

// The texts that String ports are tried with; the first one is the null reference.
std::size_t sampleTextCount();
std::string const& sampleText(std::size_t i);

// Which lane of the ledger the calling thread writes.
std::size_t& currentLane();

// Copies as much of a text as there is room for.
template <std::size_t size> void copyText(char (&to)[size], std::string_view text)
{
    std::size_t const length = text.copy(to, size - 1);
    to[length] = '\0';
}

// In the process that tries: loads the module, tries its kernels from the given one on.
void tryModule(Ledger& ledger, std::string const& path, CheckOptions const& options,
               std::size_t first);

}  // namespace nodus::host
