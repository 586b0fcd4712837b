// Which frames to evaluate: "A:B", "A:B:STEP" or "A".
#pragma once

#include <cstdint>
#include <string_view>

namespace nodus::host {

// From first to last, last included, every step frames.
struct FrameRange {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int32_t step = 1;

    std::uint64_t count() const
    {
        return static_cast<std::uint64_t>(std::int64_t{last} - first) /
                   static_cast<std::uint64_t>(step) +
               1;
    }
    std::int32_t at(std::uint64_t index) const
    {
        return static_cast<std::int32_t>(first + static_cast<std::int64_t>(index) * step);
    }
};

// Throws Fault when the text is no range, a number leaves Int32, the step is below 1 or the last
// frame comes before the first.
FrameRange parseFrames(std::string_view text);

}  // namespace nodus::host
