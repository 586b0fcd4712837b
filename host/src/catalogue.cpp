// The catalogue as it is looked things up in.
#include "nodus/host/catalogue.h"

#include "catalogue_reader.h"

#include <algorithm>

namespace nodus::host {

namespace {

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
    if (auto const root = parseJson(text, faults))
        CatalogueReader(*this, module, faults).read(*root);
    faults.moveTo(diagnostics);
}

void Catalogue::readCatalogue(Module const& module, Diagnostics& diagnostics)
{
    FileFaults faults(module.cataloguePath());
    try {
        if (auto const root = readJsonFile(module.cataloguePath(), faults))
            CatalogueReader(*this, module, faults).read(*root);
    } catch (Fault const& fault) {
        diagnostics.add(fault);
    }
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
