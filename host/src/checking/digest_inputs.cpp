// Generating the inputs of digests. Every value is made of integers, or of operations that are
// rounded exactly, so that it is the same everywhere.
#include "digest_inputs.h"

#include "nodus/host/digest.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace nodus::host {

namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr double kWideInf = std::numeric_limits<double>::infinity();
constexpr double kWideNan = std::numeric_limits<double>::quiet_NaN();
constexpr float kSignalling = std::numeric_limits<float>::signaling_NaN();
constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();

// Zeros, subnormals, the ends of the range and of what integers can hold, halves, right angles.
constexpr float kFloats[] = {0.0f,
                             -0.0f,
                             1.0f,
                             -1.0f,
                             0.5f,
                             -0.5f,
                             1.5f,
                             2.0f,
                             kInf,
                             -kInf,
                             kNan,
                             -kNan,
                             0x1p-149f,
                             -0x1p-149f,
                             0x1.fffffcp-127f,
                             0x1p-126f,
                             -0x1p-126f,
                             0x1p-64f,
                             0x1.fffffep127f,
                             -0x1.fffffep127f,
                             0x1p24f,
                             0x1p31f,
                             -0x1p31f,
                             0x1p63f,
                             0x1.921fb6p+0f,
                             0x1.921fb6p+1f,
                             -0x1.921fb6p+1f,
                             0x1.fffffep-1f,
                             1e-6f,
                             kSignalling};
constexpr double kDoubles[] = {0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               0.5,
                               -0.5,
                               1.5,
                               2.0,
                               kWideInf,
                               -kWideInf,
                               kWideNan,
                               -kWideNan,
                               0x1p-1074,
                               -0x1p-1074,
                               0x1p-1022,
                               -0x1p-1022,
                               0x1.fffffffffffffp1023,
                               -0x1.fffffffffffffp1023,
                               0x1p53,
                               0x1p31,
                               -0x1p31,
                               0x1.921fb54442d18p+0,
                               -0x1.921fb54442d18p+1,
                               0x1.fffffffffffffp-2,
                               std::numeric_limits<double>::signaling_NaN()};
constexpr std::int32_t kInts[] = {0, 1, -1, 2, 3, 7, 12, 13, 255, 256, kLast, -kLast, -kLast - 1};
constexpr std::uint32_t kUInts[] = {0, 1, 2, 255, 256, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
constexpr std::uint8_t kBytes[] = {0, 1, 2, 127, 128, 254, 255};

// Calls visit with the special values of a lane's type.
template <typename Visit> void withSpecials(TypeId lane, Visit visit)
{
    switch (lane) {
    case TypeId::Float:
        return visit(std::span<float const>(kFloats));
    case TypeId::Double:
        return visit(std::span<double const>(kDoubles));
    case TypeId::Int32:
        return visit(std::span<std::int32_t const>(kInts));
    case TypeId::UInt32:
        return visit(std::span<std::uint32_t const>(kUInts));
    default:
        return visit(std::span<std::uint8_t const>(kBytes));  // Bool and UInt8
    }
}

// The offset of a rotation within a value; nothing when it has none.
std::optional<std::size_t> rotationIn(ValueType const& type)
{
    if (type.id == TypeId::Quaternion)
        return 0;
    if (auto const part = findPiece(type, "q"); part && part->type->id == TypeId::Quaternion)
        return part->offset;
    return std::nullopt;
}

// Zero and what is not finite stay: a NaN computed here would have the machine's sign, and logging
// kernels print it.
void normalize(std::byte* quaternion)
{
    float lanes[4];
    std::memcpy(lanes, quaternion, sizeof lanes);
    double squares = 0;
    for (float const lane : lanes)
        squares += static_cast<double>(lane) * static_cast<double>(lane);
    double const length = std::sqrt(squares);
    if (length == 0 || !std::isfinite(length))
        return;
    for (float& lane : lanes)
        lane = static_cast<float>(static_cast<double>(lane) / length);
    std::memcpy(quaternion, lanes, sizeof lanes);
}

}  // namespace

DigestInputs::DigestInputs(std::uint32_t seed, NodeType const& type) : m_type(type)
{
    Fnv1a start;
    start.add(&seed, sizeof seed);
    start.add(type.name);
    m_state = start.value();
    for (std::string_view const text : {"", "x", "value = ", "100 %d %s ", "\xC2\xB0"})
        m_texts.emplace_back(std::string(text));
    // Longer than the messages of logging kernels.
    m_texts.emplace_back(std::string(600, 'l'));
}

// SplitMix64 (Steele, Lea and Flood, "Fast Splittable Pseudorandom Number Generators", 2014).
std::uint64_t DigestInputs::next()
{
    m_state += 0x9E3779B97F4A7C15u;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

std::int32_t DigestInputs::frame()
{
    constexpr std::int32_t kEnds[] = {0, 1, -1, kLast, -kLast - 1};
    return below(4) == 0 ? kEnds[below(std::size(kEnds))]
                         : static_cast<std::int32_t>(below(2000)) - 1000;
}

template <typename T> T DigestInputs::lane(std::span<T const> specials)
{
    std::uint64_t const kind = below(8), bits = next();
    if (kind == 0)
        return specials[bits % specials.size()];
    if (kind == 1) {
        T any;
        std::memcpy(&any, &bits, sizeof any);
        return any;
    }
    auto const small = static_cast<T>(static_cast<std::int32_t>(bits % 41) - 20);
    if constexpr (std::is_floating_point_v<T>) {
        // 24 random places: within 1, 4 or 1024 of zero.
        constexpr T kReaches[] = {1, 1, 4, 1024};
        T const part = static_cast<T>(bits >> 40) / static_cast<T>(1 << 23) - 1;
        return kind == 2 ? small : part * kReaches[bits % std::size(kReaches)];
    } else {
        return small;
    }
}

void DigestInputs::fillLane(ValueType const& type, std::byte* to)
{
    withSpecials(type.lane, [&](auto specials) {
        auto const value = lane(specials);
        std::memcpy(to, &value, sizeof value);
    });
}

void DigestInputs::fillPort(Port const& port, std::byte* block)
{
    std::byte* const to = block + port.offset;
    if (port.type->id == TypeId::String) {
        *reinterpret_cast<String*>(to) = m_texts[below(m_texts.size())];
        return;
    }
    if (!port.choices.empty() && below(4) != 0) {
        auto const choice =
            static_cast<std::int32_t>(port.choices[below(port.choices.size())].value);
        std::memcpy(to, &choice, port.type->size);
        return;
    }
    if (below(8) == 0)
        for (Port const& earlier : m_type.inputs)
            if (earlier.offset < port.offset && earlier.type == port.type) {
                std::memcpy(to, block + earlier.offset, port.type->size);
                return;
            }
    bool const isUniform = below(8) == 0;  // zero vectors, for one
    for (std::size_t lane = 0; lane < port.type->laneNames.size(); ++lane) {
        std::byte* const at = to + lane * port.type->laneSize;
        if (isUniform && lane > 0)
            std::memcpy(at, to, port.type->laneSize);
        else
            fillLane(*port.type, at);
    }
    if (auto const rotation = rotationIn(*port.type); rotation && below(2) == 0)
        normalize(to + *rotation);
}

// Neighbouring lanes step through their special values at different speeds.
void DigestInputs::pairSpecials(int row, std::byte* block)
{
    std::size_t index = 0;
    for (Port const& port : m_type.inputs) {
        if (port.type->id == TypeId::String) {
            *reinterpret_cast<String*>(block + port.offset) = m_texts[0];
            continue;
        }
        for (std::size_t lane = 0; lane < port.type->laneNames.size(); ++lane, ++index)
            withSpecials(port.type->lane, [&](auto specials) {
                std::size_t const count = specials.size(), step = static_cast<std::size_t>(row);
                auto const value =
                    specials[(index % 2 == 0 ? step + index / 2 : step / count + index / 2) %
                             count];
                std::memcpy(block + port.offset + lane * port.type->laneSize, &value, sizeof value);
            });
    }
}

void DigestInputs::fill(int row, std::byte* block)
{
    // As many rows as the longest list has pairs.
    if (row < static_cast<int>(std::size(kFloats) * std::size(kFloats)))
        return pairSpecials(row, block);
    for (Port const& port : m_type.inputs)
        fillPort(port, block);
}

}  // namespace nodus::host
