// Other libraries' functions for the work of single kernels, on the same blocks.
#pragma once

#include "cases.h"
#include "measure.h"
#include "ports.h"

#include <array>
#include <type_traits>
#include <utility>

namespace nodus::bench {

struct Peer {
    std::string name;                          // of the case whose work it does
    void* function;                            // called as the kernel is
    host::InitWorkspace initialize = nullptr;  // of a workspace in the peer's own way
    bool otherValues = false;  // promised (another sequence, another noise): only the work is alike
    std::string library = {};
};

// A library's functions. Each library's file has one as a global constant, which makes them known:
// a library that is not installed has no file in the program.
struct Library {
    Library(char const* name, std::vector<Peer> const& peers);
};
std::vector<Peer> peersOf(std::string const& name);

// "EulerToQuaternion order=0": "NodusEulerToQuaternion_Solve order=0".
std::string caseName(std::string node);

// How far a peer's results are from the kernel's: the largest difference of any lane of any output
// over fixed inputs, as a number ("distance") and in units in the last place ("ulps", which mean
// little near zero). Both are 1e99 when one side has a NaN where the other has none. A Quaternion
// is as near as the nearer of q and -q, which are one rotation.
std::vector<Fact> distanceBetween(Case const& kernel, Case const& peer);

// The entry point made of a function of port values, in a library's own types: the ports lie as the
// module's do, and all of 16 bytes and more at a multiple of 16.
template <typename Function, typename Result, typename... Ports> struct PeerEntry {
    static constexpr auto kOffsets = nodusmath::packed(std::array{
        nodusmath::PortShape{sizeof(Ports), sizeof(Ports) < 16 ? alignof(Ports) : 16}...});

    [[gnu::noinline]] static void call(void const* in, void* out)
    {
        [&]<std::size_t... port>(std::index_sequence<port...>)
        {
            *static_cast<Result*>(out) = Function()(*reinterpret_cast<Ports const*>(
                static_cast<std::byte const*>(in) + kOffsets[port])...);
        }
        (std::index_sequence_for<Ports...>());
    }
};

template <typename Function, typename Result, typename... Ports>
void* entryOf(Result (Function::*)(Ports...) const)
{
    return reinterpret_cast<void*>(
        &PeerEntry<Function, Result, std::remove_cvref_t<Ports>...>::call);
}

// The function is a lambda without captures, from the input ports to the output port.
template <typename Function> Peer peer(char const* node, Function)
{
    return {caseName(node), entryOf(&Function::operator())};
}
template <typename Function> Peer otherwise(char const* node, Function)
{
    return {caseName(node), entryOf(&Function::operator()), nullptr, true};
}

}  // namespace nodus::bench
