// Inputs that find faults: special values in every lane, and random bit patterns.
#pragma once

#include "ledger.h"

#include "nodus/host/catalogue.h"

#include <cstdint>
#include <vector>

namespace nodus::host {

class Inputs {
public:
    explicit Inputs(std::vector<Port> const& ports);

    // How many inputs put each special value into each lane, the others being ordinary or special.
    std::size_t specialCount() const { return 2 * m_specialCount; }
    void special(std::size_t i, CallInProgress& call);
    void random(CallInProgress& call);

private:
    struct Lane {
        std::size_t offset;
        TypeId type;
    };
    std::uint64_t next();
    void ordinary(CallInProgress& call);
    void store(Lane const& lane, std::uint64_t bits, CallInProgress& call) const;

    std::vector<Lane> m_lanes;
    std::size_t m_textCount = 0, m_specialCount = 0;
    std::uint64_t m_state = 0;
};

}  // namespace nodus::host
