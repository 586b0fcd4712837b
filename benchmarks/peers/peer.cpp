// The functions of all libraries in the program, and the comparison of their results.
#include "peer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace nodus::bench {

namespace {

std::vector<Peer>& allPeers()
{
    static std::vector<Peer> peers;
    return peers;
}

struct Distance {
    double absolute = 0, ulps = 0;
};

// Floating-point numbers as integers in the same order, neighbours one apart.
template <typename Float> double ordered(Float value)
{
    using Integer = std::conditional_t<sizeof(Float) == 4, std::int32_t, std::int64_t>;
    auto const bits = std::bit_cast<Integer>(value);
    return static_cast<double>(bits < 0 ? std::numeric_limits<Integer>::min() - bits : bits);
}

template <typename Float> void compare(Float ours, Float theirs, Distance& largest)
{
    if (ours == theirs || (std::isnan(ours) && std::isnan(theirs)))
        return;
    double const apart = std::fabs(static_cast<double>(ours) - static_cast<double>(theirs));
    bool const isNumber = std::isfinite(apart);
    largest.absolute = std::max(largest.absolute, isNumber ? apart : 1e99);
    largest.ulps =
        std::max(largest.ulps, isNumber ? std::fabs(ordered(ours) - ordered(theirs)) : 1e99);
}

template <typename Lane> Lane laneOf(std::byte const* port, std::size_t lane = 0)
{
    Lane value;
    std::memcpy(&value, port + lane * sizeof value, sizeof value);
    return value;
}

// Peers compute floating-point numbers and Bools.
void compare(host::ValueType const& type, std::byte const* ours, std::byte const* theirs,
             Distance& largest)
{
    if (type.id == host::TypeId::Bool)
        return compare<float>(laneOf<std::uint8_t>(ours), laneOf<std::uint8_t>(theirs), largest);
    if (type.id == host::TypeId::Double)
        return compare(laneOf<double>(ours), laneOf<double>(theirs), largest);
    float cosine = 0;
    for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
        cosine += laneOf<float>(ours, lane) * laneOf<float>(theirs, lane);
    float const sign = type.id == host::TypeId::Quaternion && cosine < 0 ? -1 : 1;
    for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
        compare(laneOf<float>(ours, lane), sign * laneOf<float>(theirs, lane), largest);
}

}  // namespace

Library::Library(char const* name, std::vector<Peer> const& peers)
{
    for (Peer const& peer : peers)
        allPeers().emplace_back(peer).library = name;
}

std::vector<Peer> peersOf(std::string const& name)
{
    std::vector<Peer> peers;
    std::ranges::copy_if(allPeers(), std::back_inserter(peers),
                         [&](Peer const& peer) { return peer.name == name; });
    return peers;
}

std::string caseName(std::string node)
{
    return "Nodus" + node.insert(std::min(node.find(' '), node.size()), "_Solve");
}

std::vector<Fact> distanceBetween(Case const& kernel, Case const& peer)
{
    constexpr std::size_t kInputs = 4096;
    Nodes const ours(kernel, kInputs), theirs(peer, kInputs);
    Distance largest;
    for (std::size_t node = 0; node < kInputs; ++node) {
        ours.call(node);
        theirs.call(node);
        for (host::Port const& port : kernel.type->outputs)
            compare(*port.type, ours.output(node) + port.offset, theirs.output(node) + port.offset,
                    largest);
    }
    return {{"distance", largest.absolute}, {"ulps", largest.ulps}};
}

}  // namespace nodus::bench
