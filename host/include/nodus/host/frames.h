// Which frames to evaluate: "A:B", "A:B:STEP" or "A", and which share of them: "I/N".
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace nodus::host {

// From first to last, last included, every step frames; none when last comes before first.
struct FrameRange {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int32_t step = 1;

    std::uint64_t count() const
    {
        std::int64_t const span = std::int64_t{last} - first;
        return span < 0 ? 0 : static_cast<std::uint64_t>(span / step) + 1;
    }
    std::int32_t at(std::uint64_t index) const
    {
        return static_cast<std::int32_t>(first + static_cast<std::int64_t>(index) * step);
    }
};

// The frame that lies so many behind another; the first or the last there is, where that is none.
inline std::int32_t shiftedFrame(std::int32_t frame, std::int32_t shift)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{frame} + shift, Limits::min(), Limits::max()));
}

// One of count slices of the frames, counted from 1.
struct Shard {
    std::int32_t index = 1;
    std::int32_t count = 1;
};

// Throws Fault when the text is no range, a number leaves Int32, the step is below 1 or the last
// frame comes before the first.
FrameRange parseFrames(std::string_view text);

// Throws Fault when the text is no "I/N" with I from 1 to N, and N up to a million.
Shard parseShard(std::string_view text);

// The shard's frames: the slices lie one behind the other and differ by at most one frame. There
// are none for some when there are more slices than frames.
FrameRange sliceOf(FrameRange const& frames, Shard const& shard);

}  // namespace nodus::host
