// The special values of each type, and a generator of the rest that repeats itself in every run.
#include "inputs.h"

#include <bit>
#include <cstring>
#include <limits>

namespace nodus::host {

namespace {

using Words = std::vector<std::uint64_t>;

// Both signs of zero, infinity, quiet and signalling NaN, the ends of the subnormal and the normal
// range, and where conversions to integers and arguments of functions change their behaviour.
template <typename Real, typename Bits> Words specialReals()
{
    using Limits = std::numeric_limits<Real>;
    Bits const infinity = std::bit_cast<Bits>(Limits::infinity());
    Bits const sign = std::bit_cast<Bits>(Real{-0.0});
    Words words;
    for (Bits const magnitude :
         {Bits{0}, Bits{1}, std::bit_cast<Bits>(Limits::min()) - 1,
          std::bit_cast<Bits>(Limits::min()), std::bit_cast<Bits>(Limits::max()), infinity,
          infinity + 1, std::bit_cast<Bits>(Limits::quiet_NaN()), static_cast<Bits>(sign - 1)})
        words.insert(words.end(), {magnitude, magnitude | sign});
    for (double const value : {0.5, 1.0, 2.0, 1.5707963267948966, 3.141592653589793, 1e-6, 255.0,
                               8388608.5, 16777217.0, 2147483648.0, 4294967296.0, 1e19, 88.8}) {
        Bits const bits = std::bit_cast<Bits>(static_cast<Real>(value));
        words.insert(words.end(), {bits, bits | sign});
    }
    return words;
}

Words const& specialsOf(TypeId type)
{
    static Words const floats = specialReals<float, std::uint32_t>();
    static Words const doubles = specialReals<double, std::uint64_t>();
    static Words const bytes = {0, 1, 2, 127, 128, 254, 255};
    // Small ones are choices of a list, too.
    static Words const integers = {
        0,  1,  2,  3,  4,          5,          6,          7,          8,          9,
        10, 11, 12, 13, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF, 0xFFFFFFFE, 0x01000001};
    switch (type) {
    case TypeId::Bool:
    case TypeId::UInt8:
        return bytes;
    case TypeId::Int32:
    case TypeId::UInt32:
        return integers;
    case TypeId::Double:
        return doubles;
    default:
        return floats;
    }
}

// Between -4 and 4, where the mathematics happens.
std::uint64_t ordinaryValue(TypeId type, std::uint64_t random)
{
    double const value = static_cast<double>(static_cast<std::int64_t>(random)) * 0x1p-61;
    switch (type) {
    case TypeId::Float:
        return std::bit_cast<std::uint32_t>(static_cast<float>(value));
    case TypeId::Double:
        return std::bit_cast<std::uint64_t>(value);
    default:
        return random % 16;
    }
}

}  // namespace

Inputs::Inputs(std::vector<Port> const& ports)
{
    for (Port const& port : ports) {
        if (port.type->id == TypeId::String) {
            ++m_textCount;
            continue;
        }
        for (std::size_t lane = 0; lane < port.type->laneNames.size(); ++lane)
            m_lanes.push_back({port.offset + lane * port.type->laneSize, port.type->lane});
    }
    for (Lane const& lane : m_lanes)
        m_specialCount += specialsOf(lane.type).size();
    // Nodes of texts alone, and of nothing at all, are tried as well.
    m_specialCount = std::max(m_specialCount, sampleTextCount() * sampleTextCount());
}

// SplitMix64 (Steele, Lea, Flood: Fast splittable pseudorandom number generators, 2014).
std::uint64_t Inputs::next()
{
    std::uint64_t z = m_state += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

void Inputs::store(Lane const& lane, std::uint64_t bits, CallInProgress& call) const
{
    std::memcpy(call.input + lane.offset, &bits, valueType(lane.type).size);
}

void Inputs::ordinary(CallInProgress& call)
{
    constexpr std::int32_t kFrames[] = {0, 1, -1, 24, INT32_MIN, INT32_MAX};
    std::uint64_t const random = next();
    call.frame = random % 4 == 0 ? static_cast<std::int32_t>(random >> 32)
                                 : kFrames[(random >> 8) % std::size(kFrames)];
    for (Lane const& lane : m_lanes)
        store(lane, ordinaryValue(lane.type, next()), call);
    for (std::size_t i = 0; i < m_textCount; ++i)
        call.texts[i] =
            static_cast<std::uint8_t>((random >> (16 + 4 * i % 32)) % sampleTextCount());
}

void Inputs::special(std::size_t i, CallInProgress& call)
{
    ordinary(call);
    bool const allSpecial = i >= m_specialCount;
    i %= m_specialCount;
    for (std::size_t text = 0, rest = i; text < m_textCount; ++text, rest /= sampleTextCount())
        call.texts[text] = static_cast<std::uint8_t>(rest % sampleTextCount());
    for (Lane const& lane : m_lanes) {
        Words const& specials = specialsOf(lane.type);
        if (allSpecial)
            store(lane, specials[next() % specials.size()], call);
        if (i < specials.size())
            store(lane, specials[i], call);
        i -= specials.size();  // wraps around behind the lane that was meant
    }
}

void Inputs::random(CallInProgress& call)
{
    ordinary(call);
    std::uint64_t kinds = next();
    // One input in four stays ordinary but for a lane or two.
    if (kinds % 4 == 0)
        kinds &= next() & next();
    for (Lane const& lane : m_lanes) {
        kinds = std::rotr(kinds, 2);
        Words const& specials = specialsOf(lane.type);
        if (kinds % 4 == 1)
            store(lane, specials[next() % specials.size()], call);
        else if (kinds % 4 >= 2)
            store(lane, next(), call);
    }
}

}  // namespace nodus::host
