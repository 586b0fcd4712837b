// Reading the families of one module's catalogue into the whole.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/json.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace nodus::host {

class CatalogueReader {
public:
    // All of these outlive the reader.
    CatalogueReader(Catalogue& catalogue, Module const& module, FileFaults& faults);

    void read(JsonValue const& root);

private:
    void readFamily(JsonValue const& json);
    void readNodeType(JsonValue const& json, Family& family, std::string name,
                      std::string const& suffix);
    // Returns where the last port ends.
    std::size_t readPorts(JsonValue const& json, std::string_view key, NodeType const& type,
                          std::vector<Port>& ports);
    void readDetails(JsonValue const& item, std::string const& place, Port& port);
    void setStandard(JsonValue const& literal, std::string const& place, Port& port);
    void findKernels(NodeType& type, std::size_t line);
    void* entry(std::string const& name, std::string_view signature, std::size_t line);

    Catalogue& m_catalogue;
    Module const& m_module;
    FileFaults& m_faults;
    std::unordered_map<std::string_view, Kernel const*> m_kernels;
    std::unordered_set<std::string_view> m_described;
    bool m_familyIsSound = true;  // the one that is read now: nothing in it is misspelt
};

}  // namespace nodus::host
