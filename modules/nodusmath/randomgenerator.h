// What a host keeps for each random generator node.
#pragma once

#include <cstdint>

namespace binary::Math {

// Owned by one node: filled by its Init kernel, read and updated by its Solve kernel. A Solve that
// finds the seed unchanged and its first index within 15 places of the last one steps from the last
// number instead of starting at the seed.
struct RandomGenerator_Workspace {
    std::int32_t m_nSeed;       // the node seed that the two others belong to
    std::int32_t m_nLastIndex;  // index in the node's sequence of the last number drawn
    std::int32_t m_nLastValue;  // that number
};
static_assert(sizeof(RandomGenerator_Workspace) == 12 && alignof(RandomGenerator_Workspace) == 4);

}  // namespace binary::Math
