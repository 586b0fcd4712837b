// Other libraries' functions for the work of single kernels, on the same blocks.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace nodus::bench {

struct Peer {
    std::string library;
    std::string name;  // of the case that does the same work
    void* function;    // called as the kernel is
    // Fills a workspace in the peer's own way; null for what has none.
    void (*initialize)(void const* in, void* workspace) = nullptr;
    // The peer promises other values (another random sequence, another noise): only the work can be
    // compared.
    bool otherValues = false;
};

// Each library's file defines one of these; a missing library has no file.
std::vector<Peer> glmPeers();
std::vector<Peer> eigenPeers();
std::vector<Peer> imathPeers();
std::vector<Peer> stbPeers();
std::vector<Peer> standardPeers();

// The entry point made of a function of port values, in a library's own types: the ports lie as the
// module's do, and all of 16 bytes and more at a multiple of 16.
template <typename Function, typename Result, typename... Ports> struct PeerEntry {
    static constexpr std::array<std::size_t, sizeof...(Ports)> offsets()
    {
        constexpr std::array sizes{sizeof(Ports)...};
        constexpr std::array alignments{alignof(Ports)...};
        std::array<std::size_t, sizeof...(Ports)> result{};
        std::size_t end = 0;
        for (std::size_t port = 0; port < sizes.size(); ++port) {
            std::size_t const alignment = sizes[port] >= 16 ? 16 : alignments[port];
            result[port] = (end + alignment - 1) / alignment * alignment;
            end = result[port] + sizes[port];
        }
        return result;
    }

    [[gnu::noinline]] static void call(void const* in, void* out)
    {
        [&]<std::size_t... index>(std::index_sequence<index...>)
        {
            *static_cast<Result*>(out) = Function{}(*reinterpret_cast<Ports const*>(
                static_cast<std::byte const*>(in) + offsets()[index])...);
        }
        (std::index_sequence_for<Ports...>{});
    }
};

template <typename Function, typename Result, typename... Ports>
void* entryOf(Result (Function::*)(Ports...) const)
{
    return reinterpret_cast<void*>(
        &PeerEntry<Function, Result, std::remove_cvref_t<Ports>...>::call);
}

// The function is a lambda without captures from the input ports to the output port.
template <typename Function> Peer peer(char const* library, char const* name, Function)
{
    return {library, name, entryOf(&Function::operator())};
}

template <typename Function>
Peer otherwise(char const* library, char const* name, Function function)
{
    Peer result = peer(library, name, function);
    result.otherValues = true;
    return result;
}

}  // namespace nodus::bench
