// Chunks, the filter and the compression of PNG files. Neighbouring rows are alike: differences to
// the row above, found by the fastest level of compression, make smaller files than slow levels
// make without them.
#include "png_file.h"

#include "nodus/host/diagnostics.h"

#include <libdeflate.h>

#include <memory>
#include <string_view>

namespace nodus::host {

namespace {

constexpr int kCompressionLevel = 1;
constexpr std::uint8_t kUp = 2;  // the filter: differences to the row above
// A chunk may be larger, but not every reader has room for it.
constexpr std::size_t kLargestChunk = std::size_t{1} << 30;

std::string bigEndian(std::size_t number)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift & 0xFF);
    return bytes;
}

void addChunk(std::string& file, char const (&type)[5], std::string_view data)
{
    file += bigEndian(data.size());
    std::size_t const checked = file.size();
    file += type;
    file.append(data.data(), data.size());
    file += bigEndian(libdeflate_crc32(0, file.data() + checked, file.size() - checked));
}

// From the last row up, since each wants the one above it as it was.
void filter(PngPixels const& pixels)
{
    std::size_t const size = pixels.rowSize();
    for (std::size_t y = pixels.height; y-- > 0;) {
        std::uint8_t* const row = pixels.bytes.data() + y * size;
        row[0] = kUp;
        for (std::size_t i = 1; i < size && y > 0; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] - (row - size)[i]);
    }
}

std::string compressed(std::span<std::uint8_t const> bytes)
{
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> const compressor(
        libdeflate_alloc_compressor(kCompressionLevel), &libdeflate_free_compressor);
    if (compressor == nullptr)
        throw std::bad_alloc();
    std::string result(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()), '\0');
    result.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(),
                                           result.data(), result.size()));
    return result;
}

}  // namespace

std::string pngFile(PngPixels const& pixels)
{
    filter(pixels);
    std::string const data = compressed(pixels.bytes);
    std::string file = "\x89PNG\r\n\x1A\n";
    file.reserve(data.size() + 128);
    constexpr char kGrey = 0, kColourAndAlpha = 6;
    std::string header = bigEndian(pixels.width) + bigEndian(pixels.height);
    header += static_cast<char>(pixels.depth);
    header += pixels.channels == 1 ? kGrey : kColourAndAlpha;
    header += std::string(3, '\0');  // the only compression, the only filters, not interlaced
    addChunk(file, "IHDR", header);
    addChunk(file, "sRGB", std::string_view("\0", 1));  // perceptual
    for (std::size_t begin = 0; begin < data.size(); begin += kLargestChunk)
        addChunk(file, "IDAT", std::string_view(data).substr(begin, kLargestChunk));
    addChunk(file, "IEND", {});
    return file;
}

}  // namespace nodus::host
