// Evaluating a graph once a pixel, to look at it instead of reading numbers.
#pragma once

#include "nodus/host/output_file.h"
#include "nodus/host/plan.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nodus::host {

struct ImageSize {
    std::size_t width, height;
};
// "WxH", each from 1 to 8192. Throws Fault.
ImageSize parseImageSize(std::string_view text);

// The values that become black and white.
struct ValueRange {
    float black = 0, white = 1;
};
// "MIN:MAX", two different finite numbers; MIN may be the greater one. Throws Fault.
ValueRange parseValueRange(std::string_view text);

// PNG has unsigned samples, PFM the outputs' own floats.
enum class ImageFormat { png, pfm };

struct ImageOptions {
    ImageSize size;
    ValueRange map;
    std::int32_t frame = 0;
    std::size_t threads = 1;
    ImageFormat format = ImageFormat::png;
    std::size_t depth = 8;  // bits of a PNG picture's sample, 8 or 16
};

// Throws Fault when no picture can be made of what the graph lists; origin is its file in messages.
void requirePicture(Graph const& graph, std::string const& origin);

// Writes the plan's one output as a picture. PNG: a Float in grey, a Color or Float4 with its
// fourth lane, which no map touches, as alpha; values beyond the map's ends are cut, NaN is black.
// PFM: the values as they are, of a Color or Float4 the first three lanes; map and depth are of no
// effect, and memory does not grow with the picture. The pixel sources are the pixel's centre, from
// (0.5, 0.5) in the upper left corner. Nobody hears the logging nodes. The bytes do not depend on
// the number of threads; the file is left to the caller to commit. Throws Fault when the plan has
// no such output or the file is refused.
void renderImage(Plan const& plan, ImageOptions const& options, OutputFile& file);

}  // namespace nodus::host
