// Expands the catalogue into cases and loads the module.
#include "cases.h"

#include <dlfcn.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace nodus::bench {

using nlohmann::json;

namespace {

// Ports whose value decides how much there is to do, and the values that are measured.
struct Choice {
    char const* port;
    std::vector<std::int32_t> values;
};
Choice const kChoices[] = {{"order", {0, 2, 12}}, {"distribution", {0, 1}}};

// Sixteen indices away from the cached number a generator starts from its seed again.
constexpr std::int32_t kJump = 1000;

PortShape const& shapeOf(std::string const& type)
{
    auto const found = std::find_if(std::begin(kPortShapes), std::end(kPortShapes),
                                    [&](PortShape const& shape) { return shape.name == type; });
    if (found == std::end(kPortShapes))
        throw std::runtime_error("the catalogue names an unknown port type: " + type);
    return *found;
}

std::vector<Port> portsOf(json const& list, std::string const& suffix, std::size_t& end)
{
    std::string const own = suffix == "Quat" ? "Quaternion" : suffix;
    std::vector<Port> ports;
    end = 0;
    for (json const& port : list) {
        json const notFor = port.value("notFor", json::array());
        if (std::find(notFor.begin(), notFor.end(), suffix) != notFor.end())
            continue;
        std::string type = port.at("type");
        type = port.value("typeFor", json::object()).value(suffix, type);
        PortShape const& shape = shapeOf(type == "T" ? own : type);
        std::size_t const offset = (end + shape.alignment - 1) / shape.alignment * shape.alignment;
        ports.push_back({port.at("name"), shape, offset});
        end = offset + shape.size;
    }
    return ports;
}

// One case for each combination of choices.
std::vector<Case> withChoices(Case const& plain)
{
    std::vector<Case> cases = {plain};
    for (Choice const& choice : kChoices) {
        bool const hasPort =
            std::any_of(plain.inputs.begin(), plain.inputs.end(), [&](Port const& port) {
                return port.name == choice.port && port.shape.name == "Int32";
            });
        if (!hasPort)
            continue;
        std::vector<Case> expanded;
        for (Case const& before : cases)
            for (std::int32_t const value : choice.values) {
                Case one = before;
                one.name.append(" ").append(choice.port).append("=").append(std::to_string(value));
                one.choices[choice.port] = value;
                expanded.push_back(one);
            }
        cases = expanded;
    }
    return cases;
}

std::size_t roundedUp(std::size_t size) { return (size + 15) / 16 * 16; }

}  // namespace

std::vector<Case> casesOf(std::string const& catalogueFile)
{
    std::ifstream file(catalogueFile);
    if (!file)
        throw std::runtime_error("cannot read the catalogue " + catalogueFile);
    std::vector<Case> cases;
    json const catalogue = json::parse(file);
    for (json const& family : catalogue.at("families")) {
        for (std::string const suffix : family.value("types", json::array({""}))) {
            Case one;
            one.family = family.at("name");
            one.inputs = portsOf(family.at("inputs"), suffix, one.inputSize);
            one.outputs = portsOf(family.at("outputs"), suffix, one.outputSize);
            one.workspaceSize = 0;
            if (family.contains("workspace"))
                portsOf(family["workspace"], suffix, one.workspaceSize);
            std::string name = "Nodus" + one.family;
            if (!suffix.empty())
                name += family.value("separator", "_") + suffix;

            if (one.workspaceSize != 0) {
                one.isInit = true;
                one.name = one.kernel = name + "_Init";
                for (Case const& init : withChoices(one))
                    cases.push_back(init);
                one.isInit = false;
            }
            one.name = one.kernel = name + "_Solve";
            for (Case solve : withChoices(one)) {
                solve.frameStep = solve.workspaceSize != 0 ? 1 : 0;
                cases.push_back(solve);
                if (solve.workspaceSize != 0) {
                    solve.name += " jump";
                    solve.frameStep = kJump;
                    cases.push_back(solve);
                }
            }
        }
    }
    return cases;
}

std::size_t Nodes::cached(Case const& what)
{
    constexpr std::size_t kBudget = 16 * 1024;  // half of the smallest first-level cache around
    std::size_t const node =
        2 * roundedUp(what.inputSize) + roundedUp(what.outputSize) + roundedUp(what.workspaceSize);
    return std::clamp<std::size_t>(kBudget / node, 16, 128);
}

Module::Module(std::string const& file) : m_library(dlopen(file.c_str(), RTLD_NOW))
{
    if (m_library == nullptr)
        throw std::runtime_error(dlerror());
}

Module::~Module() { dlclose(m_library); }

void* Module::find(std::string const& kernel) const
{
    void* const address = dlsym(m_library, kernel.c_str());
    if (address == nullptr)
        throw std::runtime_error("the module does not export " + kernel);
    return address;
}

void initialize(Case const& what, Nodes const& nodes, Module const& module)
{
    if (what.workspaceSize == 0 || what.isInit)
        return;
    std::string name = what.kernel;
    name.replace(name.size() - std::string("Solve").size(), std::string::npos, "Init");
    auto* const init = reinterpret_cast<Kernel>(module.find(name));
    for (std::size_t node = 0; node < nodes.count(); ++node)
        init(nodes.input(node), nodes.workspace(node));
}

}  // namespace nodus::bench
