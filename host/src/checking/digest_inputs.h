// The inputs that digests are made of.
#pragma once

#include "nodus/String.h"
#include "nodus/host/catalogue.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace nodus::host {

// The inputs of one kernel, row by row. The first rows pair special values with each other; after
// them come special values, any bits, small whole numbers and numbers of moderate size in turns,
// with unit quaternions, equal lanes and equal ports among them.
class DigestInputs {
public:
    DigestInputs(std::uint32_t seed, NodeType const& type);

    // Fills the input block, in which Strings live already.
    void fill(int row, std::byte* block);

    // Zero and its neighbours, the first and the last, or one of no importance.
    std::int32_t frame();

private:
    std::uint64_t next();
    std::uint64_t below(std::uint64_t limit) { return next() % limit; }
    template <typename T> T lane(std::span<T const> specials);
    void fillLane(ValueType const& lane, std::byte* to);
    void fillPort(Port const& port, std::byte* block);
    void pairSpecials(int row, std::byte* block);

    NodeType const& m_type;
    std::uint64_t m_state;
    std::vector<String> m_texts;
};

}  // namespace nodus::host
