// What the catalogue says of one family, as HTML: its ports, its types, what its results depend on.
#include "family_tables.h"

#include "markup.h"

#include "nodus/host/literals.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace nodus::reference {

namespace {

using host::NodeType;
using host::Port;
// The inputs or the outputs.
using Side = std::vector<Port> NodeType::*;

// One port of a family through its node types: those that have it.
struct FamilyPort {
    std::string name;
    std::vector<std::pair<NodeType const*, Port const*>> uses;
};

std::vector<FamilyPort> portsOf(host::Family const& family, Side side)
{
    // The node type with the most ports has them all, in block order.
    NodeType const* const fullest = *std::ranges::max_element(
        family.nodeTypes, {}, [side](NodeType const* type) { return (type->*side).size(); });
    std::vector<FamilyPort> ports;
    for (Port const& port : fullest->*side) {
        FamilyPort& made = ports.emplace_back(FamilyPort{port.name, {}});
        for (NodeType const* const type : family.nodeTypes)
            for (Port const& other : type->*side)
                if (other.name == port.name)
                    made.uses.emplace_back(type, &other);
    }
    return ports;
}

std::string badge(std::string_view type)
{
    return fmt::format("<a class=\"type\" href=\"#type={0}\">{0}</a>", type);
}

// A family's suffixes are value types, but for this one.
std::string_view valueTypeOf(std::string_view suffix)
{
    return suffix == "Quat" ? "Quaternion" : suffix;
}

// "Float" or "T"; the odd ones are named: "Float (Double for Double)".
std::string typeCell(FamilyPort const& port)
{
    auto const follows = [](auto const& use) {
        return use.second->type->name == valueTypeOf(use.first->suffix);
    };
    std::string_view const first = port.uses.front().second->type->name;
    auto const isFirst = [first](auto const& use) { return use.second->type->name == first; };
    if (std::ranges::all_of(port.uses, isFirst))
        return badge(first);
    if (std::ranges::all_of(port.uses, follows))
        return "<span class=\"type\">T</span>";
    // Most node types have one and the same: it follows T where it does not.
    std::string_view common = first;
    std::ptrdiff_t most = 0;
    for (auto const& use : port.uses)
        if (auto const count = std::ranges::count_if(
                port.uses, [&](auto const& it) { return it.second->type == use.second->type; });
            count > most) {
            most = count;
            common = use.second->type->name;
        }
    std::string odd;
    for (auto const& [node, other] : port.uses)
        if (other->type->name != common)
            odd += fmt::format(", {} for {}", other->type->name, node->suffix);
    return badge(common) + odd;
}

std::string standardText(Port const& port)
{
    host::Value const& value = port.standard;
    if (value.type->id == host::TypeId::String)
        return value.text.empty() ? "empty" : value.text;
    host::Value const neutral = host::neutralValue(*value.type);
    bool const isNeutral =
        std::memcmp(value.bytes.data(), neutral.bytes.data(), value.type->size) == 0;
    bool const isZero =
        std::ranges::all_of(value.bytes, [](std::byte b) { return b == std::byte{}; });
    if (value.type->id == host::TypeId::Bool)
        return isZero ? "false" : "true";
    if (isZero)
        return "0";
    if (isNeutral)
        return "identity";
    std::string whole = host::valueText(*value.type, value.bytes.data(), {});
    // (1, 1, 1) is shown as 1: the default of every lane.
    host::ValueType const& lane = host::valueType(value.type->lane);
    for (std::size_t at = lane.size; at < value.type->size; at += lane.size)
        if (std::memcmp(value.bytes.data(), value.bytes.data() + at, lane.size) != 0)
            return whole;
    return host::valueText(lane, value.bytes.data(), {});
}

// "0, identity for Quat": each default that differs from the first with the types that have it.
std::string defaultCell(FamilyPort const& port)
{
    std::vector<std::pair<std::string, std::string>> texts;
    for (auto const& [node, use] : port.uses) {
        std::string const text = standardText(*use);
        auto const known =
            std::ranges::find(texts, text, [](auto const& entry) { return entry.first; });
        if (known == texts.end())
            texts.emplace_back(text, node->suffix);
        else
            known->second += ", " + node->suffix;
    }
    std::string cell = markupText(texts.front().first);
    for (std::size_t i = 1; i < texts.size(); ++i)
        cell += fmt::format("; {} for {}", markupText(texts[i].first), texts[i].second);
    return cell;
}

std::string noteCell(host::Family const& family, FamilyPort const& port)
{
    Port const& use = *port.uses.front().second;
    std::string note;
    auto const add = [&note](std::string_view part) {
        note += (note.empty() ? "" : "; ") + std::string(part);
    };
    if (!use.unit.empty())
        add(use.unit == "rad" ? "radians" : use.unit == "deg" ? "degrees" : use.unit);
    for (NodeType const* const type : family.nodeTypes)
        if (std::ranges::find(port.uses, type, [](auto const& it) { return it.first; }) ==
            port.uses.end())
            add("not for " + type->suffix);
    std::string choices;
    for (host::Choice const& choice : use.choices)
        choices += fmt::format("{}<span>{} {}</span>", choices.empty() ? "" : ", ", choice.value,
                               markupText(choice.name));
    if (!choices.empty())
        add(choices);
    return note;
}

std::string rows(host::Family const& family, Side side, std::string_view title, bool hasNotes)
{
    std::string text = fmt::format(
        "<tbody><tr><th colspan=\"{}\" scope=\"rowgroup\">{}</th></tr>\n", hasNotes ? 4 : 3, title);
    for (FamilyPort const& port : portsOf(family, side))
        text +=
            fmt::format("<tr><td><code>{}</code></td><td>{}</td><td>{}</td>{}</tr>\n", port.name,
                        typeCell(port), side == &NodeType::inputs ? defaultCell(port) : "",
                        hasNotes ? "<td>" + noteCell(family, port) + "</td>" : "");
    return text + "</tbody>";
}

}  // namespace

std::vector<std::string> portTypes(host::Family const& family)
{
    std::vector<std::string> names;
    for (host::ValueType const& type : host::valueTypes()) {
        auto const has = [&type](Port const& port) { return port.type == &type; };
        for (NodeType const* const node : family.nodeTypes)
            if (std::ranges::any_of(node->inputs, has) || std::ranges::any_of(node->outputs, has)) {
                names.emplace_back(type.name);
                break;
            }
    }
    return names;
}

std::string nodeTypes(host::Family const& family)
{
    if (family.nodeTypes.size() == 1)
        return fmt::format("<p class=\"types\">Node type <code>{}</code></p>\n",
                           family.nodeTypes.front()->name);
    NodeType const& first = *family.nodeTypes.front();
    std::string const stem = first.name.substr(0, first.name.size() - first.suffix.size());
    std::string badges;
    for (NodeType const* const type : family.nodeTypes)
        badges += fmt::format(" <a class=\"type\" href=\"#type={}\" title=\"{}\">{}</a>",
                              valueTypeOf(type->suffix), type->name, type->suffix);
    return fmt::format("<p class=\"types\"><code>{}T</code>, where T is{}</p>\n", stem, badges);
}

std::string livePlace(host::Family const& family, host::NodeType const& type)
{
    // In lines of one number each; the style sheet knows how high they are.
    auto const linesOf = [](Port const& port) {
        auto const lanes = static_cast<double>(port.type->laneNames.size());
        if (lanes > 4)
            return 0.95 * lanes / 4;
        return lanes == 1 ? 1.0 : port.unit == "rad" ? 2.6 : 1.7;
    };
    double inputs = type.workspace.empty() ? 0 : 1, outputs = 0;
    for (Port const& port : type.inputs)
        inputs += linesOf(port);
    for (Port const& port : type.outputs)
        outputs += port.type->id == host::TypeId::Quaternion ? 5
                   : port.type->laneNames.size() > 4         ? 4
                                                             : 1;
    return fmt::format("<div class=\"live needs-kernels\" role=\"group\" aria-label=\"Try {}\" "
                       "style=\"--inputs:{:.2f};--ports:{};--outputs:{}\"></div>\n",
                       family.name, inputs, type.inputs.size(), outputs);
}

std::string portTable(host::Family const& family)
{
    // Most families have nothing to say there.
    bool hasNotes = false;
    for (Side const side : {&NodeType::inputs, &NodeType::outputs})
        for (FamilyPort const& port : portsOf(family, side))
            hasNotes = hasNotes || !noteCell(family, port).empty();
    return fmt::format("<div class=\"wide\"><table>\n<thead><tr><th scope=\"col\">Port</th>"
                       "<th scope=\"col\">Type</th><th scope=\"col\">Default</th>{}</tr></thead>\n"
                       "{}{}</table></div>\n",
                       hasNotes ? "<th scope=\"col\">Unit, choices</th>" : "",
                       rows(family, &NodeType::inputs, "Inputs", hasNotes),
                       rows(family, &NodeType::outputs, "Outputs", hasNotes));
}

std::string dependence(host::Family const& family)
{
    if (family.dependsOn.empty())
        return "The same bits on every machine.";
    std::string text;
    for (std::string const& what : family.dependsOn)
        if (what == "libm")
            text += "Calls the C library: machines agree when their libraries do. ";
        else if (what == "estimate")
            text += "Starts from an estimate of the processor: last bits differ between makers of "
                    "processors. ";
        else if (what == "rand")
            text += "The field is drawn from the C library's rand when the process first asks for "
                    "noise: a host that calls srand with a fixed seed before gets the same field "
                    "each time. ";
        else
            throw host::Fault("catalogue: " + family.name + " depends on '" + what +
                              "', which the reference has no words for");
    text.pop_back();
    return text;
}

}  // namespace nodus::reference
