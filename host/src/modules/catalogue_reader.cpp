// Reading catalogues: families to node types, node types to kernels.
#include "catalogue_reader.h"

#include "catalogue_shape.h"

#include "nodus/host/literals.h"

#include <algorithm>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

std::string textMember(JsonValue const& object, std::string_view key)
{
    JsonValue const* const member = object.member(key);
    return member != nullptr && member->is(Kind::text) ? member->text : std::string();
}

std::vector<std::string> textList(JsonValue const& object, std::string_view key)
{
    std::vector<std::string> texts;
    if (JsonValue const* const member = object.member(key))
        for (JsonValue const& item : member->items)
            texts.push_back(item.text);
    return texts;
}

std::string unknownType(std::string const& name)
{
    if (name.empty())
        return "wants a 'type'";
    std::vector<std::string_view> known;
    for (ValueType const& type : valueTypes())
        known.push_back(type.name);
    return "there is no value type " + inQuotes(name) + didYouMean(name, known);
}

}  // namespace

CatalogueReader::CatalogueReader(Catalogue& catalogue, Module const& module, FileFaults& faults)
    : m_catalogue(catalogue), m_module(module), m_faults(faults)
{
    for (Kernel const& kernel : module.kernels())
        m_kernels.emplace(kernel.name, &kernel);
}

void CatalogueReader::read(JsonValue const& root)
{
    JsonValue const* const families = root.member("families");
    if (families == nullptr) {
        m_faults.add(root.line, "wants an array 'families'");
        return;
    }
    checkOutermost(root, m_faults);
    for (JsonValue const& family : families->items)
        if (family.is(Kind::object))
            readFamily(family);
    for (Kernel const& kernel : m_module.kernels())
        if (!m_described.contains(kernel.name))
            m_faults.add(0, "does not describe " + std::string(kernel.name) + ", which " +
                                m_module.path() + " registers");
}

void CatalogueReader::readFamily(JsonValue const& json)
{
    Family& family = m_catalogue.m_families.emplace_back();
    family.name = textMember(json, "name");
    family.group = textMember(json, "group");
    family.doc = textMember(json, "doc");
    family.edges = textMember(json, "edges");
    family.searchWords = textList(json, "searchWords");
    family.dependsOn = textList(json, "dependsOn");
    if (JsonValue const* const may = json.member("mayKeepOutputs"))
        family.mayKeepOutputs = may->boolean;
    if (JsonValue const* const may = json.member("mayDivideByZero"))
        family.mayDivideByZero = may->boolean;
    std::size_t const faultsBefore = m_faults.faults().size();
    checkFamily(json, "family " + inQuotes(family.name), m_faults);
    m_familyIsSound = m_faults.faults().size() == faultsBefore;
    if (family.name.empty()) {
        m_faults.add(json.line,
                     "family " + std::to_string(m_catalogue.m_families.size()) + " wants a 'name'");
        return;
    }
    JsonValue const* const separator = json.member("separator");
    std::string const start = family.name + (separator != nullptr ? separator->text : "_");
    if (json.member("types") == nullptr)
        readNodeType(json, family, family.name, "");
    for (std::string const& suffix : textList(json, "types"))
        readNodeType(json, family, start + suffix, suffix);
}

void CatalogueReader::readNodeType(JsonValue const& json, Family& family, std::string name,
                                   std::string const& suffix)
{
    std::size_t const faultsBefore = m_faults.faults().size();
    NodeType& type = m_catalogue.m_nodeTypes.emplace_back();
    type.name = std::move(name);
    type.suffix = suffix;
    type.family = &family;
    type.module = &m_module;
    type.inputExtent = readPorts(json, "inputs", type, type.inputs);
    type.outputExtent = readPorts(json, "outputs", type, type.outputs);
    type.workspaceExtent = readPorts(json, "workspace", type, type.workspace);
    if (type.outputs.empty())
        m_faults.add(json.line, "'" + type.name + "' wants at least one output");
    findKernels(type, json.line);
    if (m_catalogue.m_byName.emplace(type.name, &type).second)
        family.nodeTypes.push_back(&type);
    else
        m_faults.add(json.line, "'" + type.name + "' is described twice");
    // What is known of a node type with a fault may be wrong: nobody shall call it.
    if (!m_familyIsSound || m_faults.faults().size() != faultsBefore) {
        type.solve = nullptr;
        type.solveWithWorkspace = nullptr;
        type.init = nullptr;
    }
}

std::size_t CatalogueReader::readPorts(JsonValue const& json, std::string_view key,
                                       NodeType const& type, std::vector<Port>& ports)
{
    std::size_t end = 0;
    JsonValue const* const list = json.member(key);
    if (list == nullptr)
        return 0;
    for (JsonValue const& item : list->items) {
        auto const notFor = textList(item, "notFor");
        if (std::ranges::find(notFor, type.suffix) != notFor.end())
            continue;
        Port port;
        port.name = textMember(item, "name");
        port.unit = textMember(item, "unit");
        std::string typeName = textMember(item, "type");
        if (JsonValue const* const typeFor = item.member("typeFor"))
            if (JsonValue const* const own = typeFor->member(type.suffix))
                typeName = own->text;
        if (typeName == "T")
            typeName = type.suffix == "Quat" ? "Quaternion" : type.suffix;
        std::string const place = "'" + type.name + "', port '" + port.name + "': ";
        port.type = findValueType(typeName);
        if (port.type == nullptr) {
            m_faults.add(item.line, place + unknownType(typeName));
            continue;
        }
        if (port.name.empty() || port.name.find('.') != port.name.npos ||
            std::ranges::find(ports, port.name, &Port::name) != ports.end())
            m_faults.add(item.line, place + "wants a name of its own, without dots");
        port.offset = placePort(*port.type, end);
        readDetails(item, place, port);
        ports.push_back(std::move(port));
    }
    return end;
}

void CatalogueReader::readDetails(JsonValue const& item, std::string const& place, Port& port)
{
    port.standard = neutralValue(*port.type);
    JsonValue const* const standard = item.member("default");
    if (standard != nullptr && standard->isNumber() && !port.type->isScalar()) {
        // One number stands for every lane.
        JsonValue lanes{Kind::array};
        lanes.line = standard->line;
        lanes.items.assign(port.type->laneNames.size(), *standard);
        setStandard(lanes, place, port);
    } else if (standard != nullptr) {
        setStandard(*standard, place, port);
    }
    if (JsonValue const* const choices = item.member("choices"))
        for (JsonValue const& choice : choices->items)
            if (JsonValue const* const value = choice.member("value"))
                port.choices.push_back({value->integer, textMember(choice, "name")});
}

void CatalogueReader::setStandard(JsonValue const& literal, std::string const& place, Port& port)
{
    if (std::string const wrong = readValue(literal, port.standard); !wrong.empty())
        m_faults.add(literal.line, place + "default " + wrong);
}

void CatalogueReader::findKernels(NodeType& type, std::size_t line)
{
    std::string const base = "Nodus" + type.name;
    type.solve = nullptr;
    type.solveWithWorkspace = nullptr;
    type.init = nullptr;
    if (type.workspace.empty()) {
        type.solve = reinterpret_cast<Solve>(entry(base + "_Solve", "(*,*)", line));
        return;
    }
    type.init = reinterpret_cast<InitWorkspace>(entry(base + "_Init", "(*,*)", line));
    type.solveWithWorkspace =
        reinterpret_cast<SolveWithWorkspace>(entry(base + "_Solve", "(*,*,*)", line));
}

void* CatalogueReader::entry(std::string const& name, std::string_view signature, std::size_t line)
{
    auto const found = m_kernels.find(name);
    if (found == m_kernels.end()) {
        m_faults.add(line,
                     "describes " + name + ", which " + m_module.path() + " does not register");
        return nullptr;
    }
    m_described.insert(found->first);
    if (found->second->signature != signature)
        m_faults.add(line, name + " is described as " + std::string(signature) +
                               ", but registered as " + std::string(found->second->signature));
    return const_cast<void*>(found->second->entry);
}

}  // namespace nodus::host
