// Calling every kernel on generated inputs and digesting what comes out.
#include "nodus/host/digest.h"

#include "digest_inputs.h"
#include "modules/load.h"

#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace nodus::host {

namespace {

// The ports of a node in memory of their own, zero or empty at first.
class Block {
public:
    Block(std::vector<Port> const& ports, std::size_t extent)
        : m_ports(ports), m_groups(extent / sizeof(Group) + 1)
    {
        forTexts([](std::byte* at) { ::new (at) String(); });
    }
    ~Block()
    {
        forTexts([](std::byte* at) { std::destroy_at(reinterpret_cast<String*>(at)); });
    }
    Block(Block const&) = delete;
    Block& operator=(Block const&) = delete;

    std::byte* data() { return m_groups.front().bytes; }

private:
    struct alignas(16) Group {
        std::byte bytes[16];
    };

    template <typename Visit> void forTexts(Visit visit)
    {
        for (Port const& port : m_ports)
            if (port.type->id == TypeId::String)
                visit(data() + port.offset);
    }

    std::vector<Port> const& m_ports;
    std::vector<Group> m_groups;
};

template <typename T> void addNumber(Fnv1a& digest, std::byte const* at)
{
    T value = load<T>(at);
    if (std::isnan(value))
        value = std::numeric_limits<T>::quiet_NaN();
    digest.add(&value, sizeof value);
}

void addValue(Fnv1a& digest, ValueType const& type, std::byte const* at)
{
    if (type.id == TypeId::String) {
        std::string const& text = *reinterpret_cast<String const*>(at);
        digest.add(text.c_str(), text.size() + 1);
    } else if (type.lane == TypeId::Float) {
        for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
            addNumber<float>(digest, at + lane * sizeof(float));
    } else if (type.lane == TypeId::Double) {
        addNumber<double>(digest, at);
    } else {
        digest.add(at, type.size);
    }
}

// Messages with their end, so that none runs into the next. Kernels cut long ones, and where they
// do depends on the signs of the NaN before: what may lie behind is not looked at.
class DigestLog : public runtime::LogService {
public:
    explicit DigestLog(Fnv1a& digest) : m_digest(digest) {}

    void message(char const* text) override
    {
        std::string told = text;
        for (std::size_t at; (at = told.find("-nan")) != told.npos;)
            told.erase(at, 1);
        told.resize(std::min(told.size(), kSurelyWhole));
        m_digest.add(told.c_str(), told.size() + 1);
    }

private:
    static constexpr std::size_t kSurelyWhole = 480;
    Fnv1a& m_digest;
};

void addKernel(Fnv1a& digest, NodeType const& type, std::uint32_t seed)
{
    DigestInputs inputs(seed, type);
    Block in(type.inputs, type.inputExtent), out(type.outputs, type.outputExtent);
    Block workspace(type.workspace, type.workspaceExtent);
    DigestLog log(digest);
    runtime::LocalServiceTable services;
    services.log = &log;
    runtime::EvaluationScope scope(0, &services);
    auto const addOutputs = [&] {
        for (Port const& port : type.outputs)
            addValue(digest, *port.type, out.data() + port.offset);
    };

    digest.add(type.name);
    for (int row = 0; row < kDigestCalls; ++row) {
        inputs.fill(row, in.data());
        scope.setFrame(inputs.frame());
        if (type.solve != nullptr) {
            type.solve(in.data(), out.data());
            addOutputs();
            continue;
        }
        // A first frame, and another one from where the first has left the workspace.
        type.init(in.data(), workspace.data());
        for (int frame = 0; frame < 2; ++frame) {
            type.solveWithWorkspace(in.data(), workspace.data(), out.data());
            addOutputs();
            scope.setFrame(inputs.frame());
        }
    }
}

std::string groupOf(Family const& family)
{
    std::string group;
    for (std::string const& source : family.dependsOn)
        group += (group.empty() ? "" : "+") + source;
    return group.empty() ? "exact" : group;
}

std::string lineOf(std::string const& name, std::string const& group, std::uint64_t digest)
{
    char line[96];
    std::snprintf(line, sizeof line, "%-26s %-9s %016" PRIx64 "\n", name.c_str(), group.c_str(),
                  digest);
    return line;
}

}  // namespace

void Fnv1a::add(void const* bytes, std::size_t count)
{
    for (auto const* byte = static_cast<unsigned char const*>(bytes); count > 0; ++byte, --count)
        m_value = (m_value ^ *byte) * 0x100000001B3u;
}

std::vector<FamilyDigest> digestFamilies(Catalogue const& catalogue, std::uint32_t seed)
{
    std::srand(1);
    std::vector<FamilyDigest> digests;
    for (Family const& family : catalogue.families()) {
        Fnv1a digest;
        for (NodeType const* const type : family.nodeTypes)
            addKernel(digest, *type, seed);
        digests.push_back({&family, groupOf(family), digest.value()});
    }
    return digests;
}

std::string digestReport(Catalogue const& catalogue, std::uint32_t seed)
{
    auto const families = digestFamilies(catalogue, seed);
    std::string text = "# seed " + std::to_string(seed) + ", " + std::to_string(kDigestCalls) +
                       " calls a kernel, all NaN alike\n";
    std::vector<std::string> groups;
    for (FamilyDigest const& each : families) {
        text += lineOf(each.family->name, each.group, each.digest);
        if (std::ranges::find(groups, each.group) == groups.end())
            groups.push_back(each.group);
    }
    // Of the digests that they stand for, in their order.
    groups.emplace_back("all");
    for (std::string const& group : groups) {
        Fnv1a total;
        for (FamilyDigest const& each : families)
            if (group == "all" || each.group == group)
                total.add(&each.digest, sizeof each.digest);
        text += lineOf("all", group == "all" ? "" : group, total.value());
    }
    return text;
}

}  // namespace nodus::host
