// nodus describe: all about a node type or a family.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace nodus::tools {

namespace {

using host::NodeType;
using host::Port;
using Types = std::vector<NodeType const*>;
using Ports = std::vector<Port> NodeType::*;

// The standard value in a word where there is one for it.
std::string standardText(Port const& port)
{
    auto const& bytes = port.standard.bytes;
    auto const isSame = [&](std::byte const* other) {
        return std::memcmp(bytes.data(), other, port.type->size) == 0;
    };
    if (port.type->id == host::TypeId::String)
        return "\"" + port.standard.text + "\"";
    constexpr std::array<std::byte, 64> kZeros{};
    if (port.type->id != host::TypeId::Bool && isSame(kZeros.data()))
        return "0";
    if (!port.type->isScalar() && isSame(host::neutralValue(*port.type).bytes.data()))
        return "identity";
    return host::valueText(*port.type, bytes.data(), {});
}

Port const* find(std::vector<Port> const& ports, std::string const& name)
{
    auto const found = std::ranges::find(ports, name, &Port::name);
    return found != ports.end() ? &*found : nullptr;
}

// What is to be told of a port, and where types of the family differ: "0, identity for Matrix4x4".
template <typename TextOf>
std::string inAllTypes(Types const& types, Ports ports, std::string const& name, TextOf textOf)
{
    std::string text, usual;
    for (NodeType const* const type : types)
        if (Port const* const port = find(type->*ports, name)) {
            std::string const own = textOf(*port);
            if (text.empty())
                text = usual = own;
            else if (own != usual)
                text += ", " + own + " for " + type->suffix;
        }
    return text;
}

// The type of a port in all types of a family: "T", "Float", "Float, Double for Double".
std::string typeText(Types const& types, Ports ports, std::string const& name)
{
    bool const isOwn =
        types.size() > 1 && std::ranges::all_of(types, [&](NodeType const* type) {
            Port const* const port = find(type->*ports, name);
            return port == nullptr || port->type->name == type->suffix ||
                   (type->suffix == "Quat" && port->type->id == host::TypeId::Quaternion);
        });
    if (isOwn)
        return "T";
    return inAllTypes(types, ports, name,
                      [](Port const& port) { return std::string(port.type->name); });
}

std::string portsText(Types const& types, Ports ports, bool areInputs)
{
    std::string text;
    std::vector<std::string> told;
    for (NodeType const* const type : types)
        for (Port const& port : type->*ports) {
            if (std::ranges::find(told, port.name) != told.end())
                continue;
            told.push_back(port.name);
            text += fmt::format("  {:<14} {}", port.name, typeText(types, ports, port.name));
            if (!port.unit.empty())
                text += ", in " + port.unit;
            if (areInputs)
                text += ", default " + inAllTypes(types, ports, port.name, standardText);
            for (std::size_t i = 0; i < port.choices.size(); ++i)
                text += fmt::format("{}{} {}", i == 0 ? "; " : ", ", port.choices[i].value,
                                    port.choices[i].name);
            std::string without;
            for (NodeType const* const other : types)
                if (find(other->*ports, port.name) == nullptr)
                    without += (without.empty() ? "" : ", ") + other->suffix;
            text += without.empty() ? "\n" : "; not for " + without + "\n";
        }
    return text;
}

std::string describe(Environment const& environment, host::Family const& family,
                     NodeType const* type)
{
    Types const types = type != nullptr ? Types{type} : family.nodeTypes;
    std::string text =
        fmt::format("{}: {}\n", type != nullptr ? type->name : family.name, family.doc);
    if (!family.edges.empty())
        text += family.edges + "\n";
    if (!environment.ownerOf(family).empty())
        text += "Of the module " + types.front()->module->path() + ".\n";
    text += "\n";
    if (type == nullptr && types.size() > 1) {
        text += "node types\n";
        for (NodeType const* const each : types)
            text += "  " + each->name + "\n";
        text += "\n";
    }
    std::string const inputs = portsText(types, &NodeType::inputs, true);
    text += inputs.empty() ? "" : "inputs\n" + inputs;
    text += "outputs\n" + portsText(types, &NodeType::outputs, false);
    if (!types.front()->workspace.empty())
        text += "\nThe host keeps a workspace for each node of this type.\n";
    return text;
}

int describe(std::string const& name, Shared const& shared)
{
    Environment const environment(shared);
    host::Catalogue const& catalogue = environment.catalogue();
    if (name.ends_with(".json")) {
        print(describeGraph(name, catalogue));
        return 0;
    }
    std::string text;
    if (NodeType const* const type = catalogue.find(name)) {
        text = describe(environment, *type->family, type);
    } else {
        // Modules may have families of the same name, with types of their own.
        for (host::Family const& family : catalogue.families())
            if (family.name == host::withoutKernelAffixes(name))
                text += (text.empty() ? "" : "\n") + describe(environment, family, nullptr);
        if (text.empty())
            throw host::Fault("unknown node type '" + name + "'" + catalogue.suggestion(name));
    }
    print(text);
    return 0;
}

}  // namespace

Command addDescribe(CLI::App& app, Shared const& shared)
{
    CLI::App* const command =
        app.add_subcommand("describe", "Describe a node type and its ports, or a graph");
    auto const name = std::make_shared<std::string>();
    command
        ->add_option(
            "TYPE", *name,
            "A node type (Add_Float3), a kernel (NodusAdd_Float3_Solve), a family (Add), or a\n"
            "graph file (walk.json), whose parameters, columns and outputs are listed.")
        ->required();
    command->footer(
        "Examples:\n  nodus describe Slerp\n  nodus describe LogValueFloat3\n"
        "  nodus describe examples/drive.json\n\n"
        "Exit status:\n"
        "  0  it is described\n"
        "  2  there is no such node type, the graph is wrong, or a module cannot be loaded");
    return {command, [name, &shared] { return describe(*name, shared); }};
}

}  // namespace nodus::tools
