// Reading catalogues: families to node types, node types to kernels.
#include "nodus/host/catalogue.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/json.h"
#include "nodus/host/literals.h"

#include <algorithm>
#include <unordered_set>

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

Port const* findPort(std::vector<Port> const& ports, std::string_view name)
{
    auto const found = std::ranges::find(ports, name, &Port::name);
    return found != ports.end() ? &*found : nullptr;
}

}  // namespace

// Reads the families of one module's catalogue into the whole.
class CatalogueReader {
public:
    CatalogueReader(Catalogue& catalogue, Module const& module, std::string origin,
                    Diagnostics& diagnostics)
        : m_catalogue(catalogue), m_module(module), m_path(std::move(origin)),
          m_diagnostics(diagnostics)
    {
        for (Kernel const& kernel : module.kernels())
            m_kernels.emplace(kernel.name, &kernel);
    }

    void read(std::optional<JsonValue> const& root)
    {
        if (!root)
            return;
        JsonValue const* const families = root->member("families");
        if (families == nullptr || !families->is(Kind::array)) {
            fault("wants an array 'families'");
            return;
        }
        for (JsonValue const& family : families->items)
            readFamily(family);
        for (Kernel const& kernel : m_module.kernels())
            if (!m_described.contains(kernel.name))
                fault("does not describe " + std::string(kernel.name) + ", which " +
                      m_module.path() + " registers");
    }

private:
    void fault(std::string const& text) { m_diagnostics.add(m_path + ": " + text); }

    void readFamily(JsonValue const& json)
    {
        Family& family = m_catalogue.m_families.emplace_back();
        family.name = textMember(json, "name");
        family.group = textMember(json, "group");
        family.doc = textMember(json, "doc");
        family.edges = textMember(json, "edges");
        family.dependsOn = textList(json, "dependsOn");
        if (JsonValue const* const may = json.member("mayKeepOutputs"))
            family.mayKeepOutputs = may->boolean;
        if (JsonValue const* const may = json.member("mayDivideByZero"))
            family.mayDivideByZero = may->boolean;
        if (family.name.empty()) {
            fault("family " + std::to_string(m_catalogue.m_families.size()) + " wants a 'name'");
            return;
        }
        JsonValue const* const separator = json.member("separator");
        std::string const between = separator != nullptr ? separator->text : "_";
        std::vector<std::string> suffixes = textList(json, "types");
        if (json.member("types") == nullptr)
            readNodeType(json, family, family.name, "");
        for (std::string const& suffix : suffixes)
            readNodeType(json, family, family.name + between + suffix, suffix);
    }

    void readNodeType(JsonValue const& json, Family& family, std::string name,
                      std::string const& suffix)
    {
        std::size_t const faultsBefore = m_diagnostics.lines().size();
        NodeType& type = m_catalogue.m_nodeTypes.emplace_back();
        type.name = std::move(name);
        type.suffix = suffix;
        type.family = &family;
        type.inputExtent = readPorts(json, "inputs", type, type.inputs);
        type.outputExtent = readPorts(json, "outputs", type, type.outputs);
        type.workspaceExtent = readPorts(json, "workspace", type, type.workspace);
        if (type.outputs.empty())
            fault("'" + type.name + "' wants at least one output");
        findKernels(type);
        if (m_catalogue.m_byName.emplace(type.name, &type).second)
            family.nodeTypes.push_back(&type);
        else
            fault("'" + type.name + "' is described twice");
        if (m_diagnostics.lines().size() != faultsBefore) {
            type.solve = nullptr;
            type.solveWithWorkspace = nullptr;
            type.init = nullptr;
        }
    }

    std::size_t readPorts(JsonValue const& json, std::string_view key, NodeType const& type,
                          std::vector<Port>& ports)
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
                fault(place + "there is no value type '" + typeName + "'");
                continue;
            }
            if (port.name.empty() || port.name.find('.') != port.name.npos ||
                findPort(ports, port.name) != nullptr)
                fault(place + "wants a name of its own, without dots");
            port.offset = placePort(*port.type, end);
            readDetails(item, place, port);
            ports.push_back(std::move(port));
        }
        return end;
    }

    void readDetails(JsonValue const& item, std::string const& place, Port& port)
    {
        port.standard = neutralValue(*port.type);
        JsonValue const* const standard = item.member("default");
        if (standard != nullptr && standard->isNumber() && !port.type->isScalar()) {
            // One number stands for every lane.
            JsonValue lanes{Kind::array};
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

    void setStandard(JsonValue const& literal, std::string const& place, Port& port)
    {
        if (std::string const wrong = readValue(literal, port.standard); !wrong.empty())
            fault(place + "default " + wrong);
    }

    void findKernels(NodeType& type)
    {
        std::string const base = "Nodus" + type.name;
        type.solve = nullptr;
        type.solveWithWorkspace = nullptr;
        type.init = nullptr;
        if (type.workspace.empty()) {
            type.solve = reinterpret_cast<Solve>(entry(base + "_Solve", "(*,*)"));
            return;
        }
        type.init = reinterpret_cast<InitWorkspace>(entry(base + "_Init", "(*,*)"));
        type.solveWithWorkspace =
            reinterpret_cast<SolveWithWorkspace>(entry(base + "_Solve", "(*,*,*)"));
    }

    void* entry(std::string const& name, std::string_view signature)
    {
        auto const found = m_kernels.find(name);
        if (found == m_kernels.end()) {
            fault("describes " + name + ", which " + m_module.path() + " does not register");
            return nullptr;
        }
        m_described.insert(found->first);
        if (found->second->signature != signature)
            fault(name + " is described as " + std::string(signature) + ", but registered as " +
                  std::string(found->second->signature));
        return const_cast<void*>(found->second->entry);
    }

    Catalogue& m_catalogue;
    Module const& m_module;
    std::string m_path;
    Diagnostics& m_diagnostics;
    std::unordered_map<std::string_view, Kernel const*> m_kernels;
    std::unordered_set<std::string_view> m_described;
};

Port const* NodeType::findInput(std::string_view port) const { return findPort(inputs, port); }
Port const* NodeType::findOutput(std::string_view port) const { return findPort(outputs, port); }

Catalogue::Catalogue(std::span<Module const* const> modules)
{
    Diagnostics diagnostics;
    for (Module const* const module : modules)
        readCatalogue(*module, diagnostics);
    diagnostics.throwIfAny();
}

Catalogue::Catalogue(Module const& module, Diagnostics& diagnostics)
{
    readCatalogue(module, diagnostics);
}

Catalogue::Catalogue(Module const& module, std::string_view text, std::string const& origin,
                     Diagnostics& diagnostics)
{
    CatalogueReader(*this, module, origin, diagnostics).read(parseJson(text, origin, diagnostics));
}

void Catalogue::readCatalogue(Module const& module, Diagnostics& diagnostics)
{
    std::string const path = module.cataloguePath();
    CatalogueReader(*this, module, path, diagnostics).read(readJsonFile(path, diagnostics));
}

std::string_view withoutKernelAffixes(std::string_view name)
{
    constexpr std::string_view kBefore = "Nodus", kAfter = "_Solve";
    if (name.starts_with(kBefore) && name.ends_with(kAfter) &&
        name.size() > kBefore.size() + kAfter.size())
        return name.substr(kBefore.size(), name.size() - kBefore.size() - kAfter.size());
    return name;
}

NodeType const* Catalogue::find(std::string_view name) const
{
    auto const found = m_byName.find(withoutKernelAffixes(name));
    return found != m_byName.end() ? found->second : nullptr;
}

Family const* Catalogue::findFamily(std::string_view name) const
{
    auto const found = std::ranges::find(m_families, name, &Family::name);
    return found != m_families.end() ? &*found : nullptr;
}

std::string Catalogue::suggestion(std::string_view name) const
{
    if (Family const* const family = findFamily(withoutKernelAffixes(name))) {
        std::vector<std::string_view> types;
        for (NodeType const* const type : family->nodeTypes)
            types.push_back(type->name);
        return "; it comes as " + alternatives(types);
    }
    std::vector<std::string_view> names;
    for (NodeType const& type : m_nodeTypes)
        names.push_back(type.name);
    return didYouMean(withoutKernelAffixes(name), names);
}

}  // namespace nodus::host
