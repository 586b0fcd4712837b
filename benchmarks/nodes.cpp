// The blocks of nodes, filled with fixed inputs in the range that each family works on.
#include "cases.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <string_view>

namespace nodus::bench {

namespace {

std::size_t roundedUp(std::size_t size) { return (size + 15) / 16 * 16; }

// SplitMix64, seeded with the case's name: inputs do not depend on the order of cases.
class Numbers {
public:
    explicit Numbers(std::string_view seed)
    {
        for (char const letter : seed)
            m_state = (m_state ^ static_cast<unsigned char>(letter)) * 0x100000001B3u;
    }

    std::uint64_t bits()
    {
        std::uint64_t mixed = m_state += 0x9E3779B97F4A7C15u;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }
    double between(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(bits() >> 11) * 0x1p-53);
    }

private:
    std::uint64_t m_state = 0xCBF29CE484222325u;
};

struct Range {
    double low, high;
};

// A family of "" is any family, a port of "" any port; the first row that fits counts.
struct Rule {
    std::string_view family, port;
    Range range;
};
constexpr Rule kRules[] = {
    {"ACos", "", {-1, 1}},
    {"ASin", "", {-1, 1}},
    {"CosineLaw", "c", {0.8, 1}},
    {"CosineLaw", "", {0.1, 0.5}},
    {"Exp", "", {-10, 10}},
    {"Exp2", "", {-10, 10}},
    {"Ln", "", {0.1, 10}},
    {"Log2", "", {0.1, 10}},
    {"Log10", "", {0.1, 10}},
    {"Pow", "base", {0.1, 4}},
    {"Pow", "exponent", {-3, 3}},
    {"Sqrt", "", {0.1, 10}},
    {"RSqrt", "", {0.1, 10}},
    {"FastBiasAndGain", "", {0.1, 0.9}},
    {"Noise1D", "", {-50, 50}},
    {"Noise2D", "", {-50, 50}},
    {"Noise3D", "", {-50, 50}},
    {"EulerToQuaternion", "", {-3, 3}},
    {"AlmostEqual", "tolerance", {1e-6, 1e-6}},
    {"RandomGenerator", "range", {0.5, 2}},
    {"RandomGenerator", "value", {0.5, 100}},
    {"", "min", {-4, -3}},
    {"", "fromMin", {-4, -3}},
    {"", "edge0", {-4, -3}},
    {"", "max", {3, 4}},
    {"", "fromMax", {3, 4}},
    {"", "edge1", {3, 4}},
    {"", "t", {0, 1}},
    {"", "angle", {-3, 3}},
    {"", "", {-4, 4}},
};

Range rangeOf(std::string_view family, std::string_view port)
{
    return std::find_if(std::begin(kRules), std::end(kRules),
                        [&](Rule const& rule) {
                            return (rule.family.empty() || rule.family == family) &&
                                   (rule.port.empty() || rule.port == port);
                        })
        ->range;
}

template <typename T> void put(std::byte*& at, T value)
{
    std::memcpy(at, &value, sizeof value);
    at += sizeof value;
}

struct Rotation {
    double x, y, z, w;
};

// Spread evenly over all rotations.
Rotation rotation(Numbers& numbers)
{
    constexpr double kTurn = 2 * std::numbers::pi;
    double const u = numbers.between(0, 1);
    double const a = numbers.between(0, kTurn);
    double const b = numbers.between(0, kTurn);
    return {std::sqrt(1 - u) * std::sin(a), std::sqrt(1 - u) * std::cos(a),
            std::sqrt(u) * std::sin(b), std::sqrt(u) * std::cos(b)};
}

void putRotation(std::byte*& at, Numbers& numbers)
{
    auto const [x, y, z, w] = rotation(numbers);
    for (double const lane : {x, y, z, w})
        put(at, static_cast<float>(lane));
}

// A rotation and a translation; a Mat44Float is the transpose, with other numbers in other places.
void putMatrix(std::byte*& at, Numbers& numbers)
{
    auto const [x, y, z, w] = rotation(numbers);
    double const rows[3][3] = {
        {1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
        {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
        {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)},
    };
    for (auto const& row : rows) {
        for (double const lane : row)
            put(at, static_cast<float>(lane));
        put(at, 0.0f);
    }
    for (int lane = 0; lane < 3; ++lane)
        put(at, static_cast<float>(numbers.between(-10, 10)));
    put(at, 1.0f);
}

void putLanes(std::byte*& at, std::size_t size, Range range, Numbers& numbers)
{
    for (std::size_t lane = 0; lane < size / sizeof(float); ++lane)
        put(at, static_cast<float>(numbers.between(range.low, range.high)));
}

std::int32_t integer(Case const& what, Port const& port, Numbers& numbers)
{
    if (auto const choice = what.choices.find(port.name); choice != what.choices.end())
        return choice->second;
    // Bounds around the values, so that most lie between them; nothing is zero, so that a division
    // divides.
    Range range{20, 100};
    if (port.name == "min")
        range = {10, 30};
    if (port.name == "max")
        range = {90, 120};
    auto const value = static_cast<std::int32_t>(numbers.between(range.low, range.high));
    bool const mayBeNegative = port.shape.lane == Lane::int32 && port.name != "max";
    return mayBeNegative && numbers.between(0, 1) < 0.25 ? -value : value;
}

void putPort(std::byte* at, Case const& what, Port const& port, Numbers& numbers)
{
    std::string_view const type = port.shape.name;
    Range const range = rangeOf(what.family, port.name);
    if (type == "Bool") {
        put(at, static_cast<std::uint8_t>(numbers.bits() & 1));
    } else if (type == "UInt8") {
        put(at, static_cast<std::uint8_t>(integer(what, port, numbers)));
    } else if (port.shape.lane == Lane::int32 || port.shape.lane == Lane::uint32) {
        put(at, integer(what, port, numbers));
    } else if (type == "Double") {
        put(at, numbers.between(range.low, range.high));
    } else if (type == "Quaternion") {
        putRotation(at, numbers);
    } else if (type == "Matrix4x4" || type == "Mat44Float") {
        putMatrix(at, numbers);
    } else if (type == "TQS") {
        putLanes(at, 16, {-10, 10}, numbers);
        putRotation(at, numbers);
        putLanes(at, 16, {0.5, 2}, numbers);
    } else if (type == "Color") {
        putLanes(at, port.shape.size, {0, 1}, numbers);
    } else if (port.name == "axis" || what.family == "QuatArcRotate") {
        auto const [x, y, z, w] = rotation(numbers);
        double const length = std::sqrt(x * x + y * y + z * z);
        for (double const lane : {x, y, z})
            put(at, static_cast<float>(lane / length));  // a direction: a fourth lane stays 0
    } else if (port.shape.lane == Lane::single) {
        putLanes(at, port.shape.size, range, numbers);
    }
    // A String stays null.
}

}  // namespace

Nodes::Nodes(Case const& what, std::size_t count)
    : m_count(count), m_outputOffset(roundedUp(what.inputSize)),
      m_workspaceOffset(m_outputOffset + (what.isInit ? 0 : roundedUp(what.outputSize))),
      m_stride(m_workspaceOffset + roundedUp(what.workspaceSize)), m_memory(count * m_stride + 16)
{
    auto const address = reinterpret_cast<std::uintptr_t>(m_memory.data());
    m_begin = m_memory.data() + (16 - address % 16) % 16;

    Numbers numbers(what.kernel);
    for (std::size_t node = 0; node < count; ++node) {
        for (Port const& port : what.inputs)
            putPort(input(node) + port.offset, what, port, numbers);
        // Random values are hardly ever equal: every other node compares a value with itself.
        if (what.family.ends_with("Equal") && node % 2 == 1)
            std::memcpy(input(node) + what.inputs[1].offset, input(node) + what.inputs[0].offset,
                        what.inputs[0].shape.size);
    }
}

}  // namespace nodus::bench
