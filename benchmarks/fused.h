// Graphs of cheap Float nodes as loops over rows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nodus::bench {

// Node n takes from the last three values: the first one is the frame, and node 0 takes it thrice.
// By n modulo 4: last + second, last * 0.5, last - third, last clamped to 100 on both sides.
void fused100(std::int32_t const* frames, float* to, std::size_t rows);
void fused1000(std::int32_t const* frames, float* to, std::size_t rows);

}  // namespace nodus::bench
