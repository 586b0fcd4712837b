// Reading a range of frames, and cutting it into slices.
#include "nodus/host/frames.h"

#include "nodus/host/diagnostics.h"

#include <charconv>
#include <string>

namespace nodus::host {

FrameRange parseFrames(std::string_view text)
{
    std::string const what = "frames '" + std::string(text) + "': ";
    std::int32_t numbers[3] = {0, 0, 1};
    std::size_t count = 0;
    for (std::string_view rest = text;; ++count) {
        auto const colon = rest.find(':');
        std::string_view const part = rest.substr(0, colon);
        if (count == 3)
            throw Fault(what + "wants FIRST:LAST or FIRST:LAST:STEP");
        auto const [end, error] =
            std::from_chars(part.data(), part.data() + part.size(), numbers[count]);
        if (error == std::errc::result_out_of_range)
            throw Fault(what + "'" + std::string(part) +
                        "' is outside Int32 (-2147483648 to 2147483647)");
        if (error != std::errc{} || end != part.data() + part.size())
            throw Fault(what + "'" + std::string(part) +
                        "' is not a whole number; write FIRST:LAST or FIRST:LAST:STEP");
        if (colon == rest.npos)
            break;
        rest.remove_prefix(colon + 1);
    }
    FrameRange const range{numbers[0], count == 0 ? numbers[0] : numbers[1], numbers[2]};
    if (range.step < 1)
        throw Fault(what + "the step is " + std::to_string(range.step) + ", it wants 1 or more");
    if (range.last < range.first)
        throw Fault(what + "the last frame comes before the first");
    return range;
}

Shard parseShard(std::string_view text)
{
    constexpr std::int32_t kMost = 1'000'000;
    Shard shard{0, 0};
    char const* const last = text.data() + text.size();
    auto const index = std::from_chars(text.data(), last, shard.index);
    bool const hasSlash = index.ec == std::errc{} && index.ptr != last && *index.ptr == '/';
    auto const count = std::from_chars(hasSlash ? index.ptr + 1 : last, last, shard.count);
    if (count.ec != std::errc{} || count.ptr != last || shard.count < 1 || shard.count > kMost ||
        shard.index < 1 || shard.index > shard.count)
        throw Fault("shard '" + std::string(text) +
                    "': wants I/N, slice I of N slices; I is from 1 to N, N at most 1000000");
    return shard;
}

FrameRange sliceOf(FrameRange const& frames, Shard const& shard)
{
    auto const border = [&](std::int32_t slice) {
        return frames.count() * static_cast<std::uint64_t>(slice) /
               static_cast<std::uint64_t>(shard.count);
    };
    std::uint64_t const begin = border(shard.index - 1), end = border(shard.index);
    if (begin == end)
        return {0, -1, frames.step};
    return {frames.at(begin), frames.at(end - 1), frames.step};
}

}  // namespace nodus::host
