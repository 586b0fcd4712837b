// The catalogue as it is looked things up in.
#include "nodus/host/catalogue.h"

#include "catalogue_reader.h"

#include <algorithm>

namespace nodus::host {

namespace {

// Half of a catalogue; only the node reference reads it.
constexpr std::string_view kOfThePage = "reference";

Port const* findPort(std::vector<Port> const& ports, std::string_view name)
{
    auto const found = std::ranges::find(ports, name, &Port::name);
    return found != ports.end() ? &*found : nullptr;
}

}  // namespace

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
    FileFaults faults(origin);
    if (auto const root = parseJson(text, faults, 1, kOfThePage))
        CatalogueReader(*this, module, faults).read(*root);
    faults.moveTo(diagnostics);
}

void Catalogue::readCatalogue(Module const& module, Diagnostics& diagnostics)
{
    FileFaults faults(module.cataloguePath());
    diagnostics.gather([&] {
        if (auto const root = readJsonFile(module.cataloguePath(), faults, kOfThePage))
            CatalogueReader(*this, module, faults).read(*root);
    });
    faults.moveTo(diagnostics);
}

std::string_view withoutKernelAffixes(std::string_view name)
{
    constexpr std::string_view kBefore = "Nodus", kAfter = "_Solve";
    if (name.starts_with(kBefore) && name.ends_with(kAfter) &&
        name.size() > kBefore.size() + kAfter.size())
        return name.substr(kBefore.size(), name.size() - kBefore.size() - kAfter.size());
    return name;
}

std::string kernelName(NodeType const& type) { return "Nodus" + type.name + "_Solve"; }

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
    std::string_view const wrong = withoutKernelAffixes(name);
    auto const comesAs = [](Family const& family) {
        std::vector<std::string_view> types;
        for (NodeType const* const type : family.nodeTypes)
            types.push_back(type->name);
        return " comes as " + alternatives(types);
    };
    if (Family const* const family = findFamily(wrong))
        return "; it" + comesAs(*family);
    std::vector<std::string_view> types, families;
    for (NodeType const& type : m_nodeTypes)
        types.push_back(type.name);
    if (std::string near = didYouMean(wrong, types); !near.empty())
        return near;
    for (Family const& family : m_families)
        families.push_back(family.name);
    std::string const near = didYouMean(wrong, families);
    return near.empty() ? "; nodus list tells which there are"
                        : near + " It" + comesAs(*findFamily(nearestName(wrong, families)));
}

}  // namespace nodus::host
