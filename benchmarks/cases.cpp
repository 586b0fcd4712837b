// Expands the catalogue into cases, and fills their blocks with fixed inputs in the range that each
// family works on.
#include "cases.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <string_view>

namespace nodus::bench {

namespace {

using host::TypeId;

// Ports whose value decides how much there is to do, and the values that are measured.
std::map<std::string, std::vector<std::int32_t>> const kChoices = {{"order", {0, 2, 12}},
                                                                   {"distribution", {0, 1}}};

// Sixteen indices away from the cached number a generator starts from its seed again.
constexpr std::int32_t kJump = 1000;

// One case for each value of a choice; no node type has two choices.
std::vector<Case> withChoices(Case const& plain)
{
    std::vector<Case> cases;
    for (auto const& [port, values] : kChoices)
        for (std::int32_t const value : values)
            if (plain.type->findInput(port) != nullptr) {
                Case& one = cases.emplace_back(plain);
                one.name += " " + port + "=" + std::to_string(value);
                one.choices[port] = value;
            }
    return cases.empty() ? std::vector{plain} : cases;
}

// SplitMix64, seeded with the kernel's name: inputs do not depend on the order of cases.
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

// No name is any name; the first row that fits counts.
struct Rule {
    std::vector<std::string_view> families, ports;
    Range range;
};
Rule const kRules[] = {
    {{"ACos", "ASin"}, {}, {-1, 1}},
    {{"CosineLaw"}, {"c"}, {0.8, 1}},
    {{"CosineLaw"}, {}, {0.1, 0.5}},
    {{"Exp", "Exp2"}, {}, {-10, 10}},
    {{"Ln", "Log2", "Log10", "Sqrt", "RSqrt"}, {}, {0.1, 10}},
    {{"Pow"}, {"base"}, {0.1, 4}},
    {{"FastBiasAndGain"}, {}, {0.1, 0.9}},
    {{"Noise1D", "Noise2D", "Noise3D"}, {}, {-50, 50}},
    {{"AlmostEqual"}, {"tolerance"}, {1e-6, 1e-6}},
    {{"RandomGenerator"}, {"range"}, {0.5, 2}},
    {{"RandomGenerator"}, {"value"}, {0.5, 100}},
    {{}, {"angle", "angles", "exponent"}, {-3, 3}},
    {{}, {"min", "fromMin", "edge0"}, {-4, -3}},
    {{}, {"max", "fromMax", "edge1"}, {3, 4}},
    {{}, {"t"}, {0, 1}},
    {{}, {}, {-4, 4}},
};

Range rangeOf(std::string_view family, std::string_view port)
{
    auto const isIn = [](std::string_view name, std::vector<std::string_view> const& names) {
        return names.empty() || std::ranges::find(names, name) != names.end();
    };
    return std::ranges::find_if(kRules,
                                [&](Rule const& rule) {
                                    return isIn(family, rule.families) && isIn(port, rule.ports);
                                })
        ->range;
}

using Lanes = std::vector<double>;

Lanes lanesIn(Range range, std::size_t count, Numbers& numbers)
{
    Lanes lanes(count);
    for (double& lane : lanes)
        lane = numbers.between(range.low, range.high);
    return lanes;
}

// Spread evenly over all rotations.
std::array<double, 4> rotation(Numbers& numbers)
{
    constexpr double kTurn = 2 * std::numbers::pi;
    double const u = numbers.between(0, 1);
    double const a = numbers.between(0, kTurn);
    double const b = numbers.between(0, kTurn);
    return {std::sqrt(1 - u) * std::sin(a), std::sqrt(1 - u) * std::cos(a),
            std::sqrt(u) * std::sin(b), std::sqrt(u) * std::cos(b)};
}

// A rotation and a translation; a Mat44Float is the transpose, with other numbers in other places.
Lanes matrix(Numbers& numbers)
{
    auto const [x, y, z, w] = rotation(numbers);
    Lanes const t = lanesIn({-10, 10}, 3, numbers);
    double const lanes[] = {1 - 2 * (y * y + z * z),
                            2 * (x * y + w * z),
                            2 * (x * z - w * y),
                            0,
                            2 * (x * y - w * z),
                            1 - 2 * (x * x + z * z),
                            2 * (y * z + w * x),
                            0,
                            2 * (x * z + w * y),
                            2 * (y * z - w * x),
                            1 - 2 * (x * x + y * y),
                            0,
                            t[0],
                            t[1],
                            t[2],
                            1};
    return {std::begin(lanes), std::end(lanes)};
}

Lanes pose(Numbers& numbers)
{
    Lanes const t = lanesIn({-10, 10}, 4, numbers);
    auto const [x, y, z, w] = rotation(numbers);
    Lanes const s = lanesIn({0.5, 2}, 4, numbers);
    return {t[0], t[1], t[2], t[3], x, y, z, w, s[0], s[1], s[2], s[3]};
}

// A direction; of four lanes the last stays 0.
Lanes direction(Numbers& numbers)
{
    auto const [x, y, z, w] = rotation(numbers);
    double const length = std::sqrt(x * x + y * y + z * z);
    return {x / length, y / length, z / length};
}

// Bounds around the values, so that most lie between them; nothing is zero, so that a division
// divides.
double integer(host::Port const& port, Numbers& numbers)
{
    Range const range = port.name == "min"   ? Range{10, 30}
                        : port.name == "max" ? Range{90, 120}
                                             : Range{20, 100};
    double const value = std::floor(numbers.between(range.low, range.high));
    bool const mayBeNegative = port.type->id == TypeId::Int32 && port.name != "max";
    return mayBeNegative && numbers.between(0, 1) < 0.25 ? -value : value;
}

Lanes lanesOf(Case const& what, host::Port const& port, Numbers& numbers)
{
    std::string const& family = what.type->family->name;
    if (auto const choice = what.choices.find(port.name); choice != what.choices.end())
        return {static_cast<double>(choice->second)};
    if (port.name == "axis" || family == "QuatArcRotate")
        return direction(numbers);
    switch (port.type->id) {
    case TypeId::String:
        return {};  // stays null
    case TypeId::Bool:
        return {static_cast<double>(numbers.bits() & 1)};
    case TypeId::UInt8:
    case TypeId::Int32:
    case TypeId::UInt32:
        return {integer(port, numbers)};
    case TypeId::Quaternion: {
        auto const [x, y, z, w] = rotation(numbers);
        return {x, y, z, w};
    }
    case TypeId::Matrix4x4:
    case TypeId::Mat44Float:
        return matrix(numbers);
    case TypeId::TQS:
        return pose(numbers);
    case TypeId::Color:
        return lanesIn({0, 1}, 4, numbers);
    default:
        return lanesIn(rangeOf(family, port.name), port.type->laneNames.size(), numbers);
    }
}

template <typename Lane> void put(std::byte* at, Lanes const& lanes)
{
    for (double const lane : lanes) {
        Lane const value = static_cast<Lane>(lane);
        std::memcpy(at, &value, sizeof value);
        at += sizeof value;
    }
}

void put(std::byte* at, TypeId lane, Lanes const& lanes)
{
    if (lane == TypeId::Float)
        put<float>(at, lanes);
    else if (lane == TypeId::Double)
        put<double>(at, lanes);
    else if (lane == TypeId::Int32 || lane == TypeId::UInt32)
        put<std::int32_t>(at, lanes);
    else
        put<std::uint8_t>(at, lanes);
}

}  // namespace

std::vector<Case> casesOf(host::Catalogue const& catalogue)
{
    std::vector<Case> cases;
    for (host::NodeType const& type : catalogue.nodeTypes()) {
        std::string const name = "Nodus" + type.name;
        auto* const init = reinterpret_cast<void*>(type.init);
        auto* const solve = init == nullptr ? reinterpret_cast<void*>(type.solve)
                                            : reinterpret_cast<void*>(type.solveWithWorkspace);
        if (init != nullptr)
            for (Case const& one : withChoices({name + "_Init", &type, init}))
                cases.push_back(one);
        for (Case one : withChoices({name + "_Solve", &type, solve, type.init})) {
            one.frameStep = init == nullptr ? 0 : 1;
            cases.push_back(one);
            if (init != nullptr) {
                one.name += " jump";
                one.frameStep = kJump;
                cases.push_back(one);
            }
        }
    }
    return cases;
}

Nodes::Nodes(Case const& what, std::size_t count)
    : m_function(what.function), m_hasWorkspace(what.initialize != nullptr), m_count(count)
{
    host::NodeType const& type = *what.type;
    auto const rounded = [](std::size_t extent) { return (extent + 15) / 16 * 16; };
    m_output = rounded(type.inputExtent);
    m_workspace = m_output + rounded(std::max(type.outputExtent, type.workspaceExtent));
    m_stride = m_workspace + rounded(type.workspaceExtent);
    m_memory.resize(count * m_stride / sizeof(Group));
    m_first = reinterpret_cast<std::byte*>(m_memory.data());

    Numbers numbers(what.name.substr(0, what.name.find(' ')));
    for (std::size_t node = 0; node < count; ++node) {
        std::byte* const at = input(node);
        for (host::Port const& port : type.inputs)
            put(at + port.offset, port.type->lane, lanesOf(what, port, numbers));
        // Random values are hardly ever equal: every other node compares a value with itself.
        if (type.family->name.ends_with("Equal") && node % 2 == 1)
            std::memcpy(at + type.inputs[1].offset, at, type.inputs[0].type->size);
        if (m_hasWorkspace)
            what.initialize(at, at + m_workspace);
    }
}

}  // namespace nodus::bench
