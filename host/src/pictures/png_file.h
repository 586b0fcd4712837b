// PNG files (ISO/IEC 15948).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace nodus::host {

// Rows of samples from top to bottom, left to right, the channels of a pixel side by side. In front
// of each row there is a byte that is left to the writer.
struct PngPixels {
    std::size_t width, height;
    std::size_t channels;  // 1: grey, 4: red, green, blue, alpha
    std::size_t depth;     // bits of a sample: 8, or 16 with the upper byte first
    std::span<std::uint8_t> bytes;

    std::size_t rowSize() const { return 1 + width * channels * depth / 8; }
};

// The file. Samples are those of sRGB. What stood in pixels is lost. Throws Fault.
std::string pngFile(PngPixels const& pixels);

}  // namespace nodus::host
