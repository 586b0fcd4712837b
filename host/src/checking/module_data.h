// The data that a loaded module may write to: its own variables, which no call may change for good.
#pragma once

#include "nodus/host/module.h"

#include <cstddef>
#include <span>
#include <vector>

namespace nodus::host {

class ModuleData {
public:
    explicit ModuleData(Module const& module);

    // Remembers what it holds now.
    void remember();
    // How many bytes are others than those that are remembered.
    std::size_t countChanges() const;

private:
    std::vector<std::span<std::byte const>> m_places;
    std::vector<std::vector<std::byte>> m_remembered;
};

}  // namespace nodus::host
