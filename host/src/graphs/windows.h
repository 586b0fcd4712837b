// What windows and shifts may be.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace nodus::host {

// Frames or rows away from here. The rows between the first and the last that a frame reads are
// kept in memory.
inline constexpr std::int64_t kFarthest = 10'000;

// What a window comes to, and the family that does it two by two.
struct Fold {
    std::string_view name, family;
};
inline constexpr std::array kFolds = {Fold{"mean", "Add"}, Fold{"sum", "Add"}, Fold{"min", "Min"},
                                      Fold{"max", "Max"}};

}  // namespace nodus::host
