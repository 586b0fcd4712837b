// Pictures: which value becomes which pixel, on any number of threads.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/image.h"

#include <png.h>

#include <cstring>
#include <vector>

using namespace fixtures;
using support::TemporaryFolder;
using Pixels = std::vector<std::uint8_t>;

namespace {

struct Picture {
    std::size_t width = 0, height = 0;
    bool isGrey = false;
    Pixels pixels;
};

// The samples of a PNG file, whatever their depth, as they are in it.
std::vector<unsigned> samplesOf(std::string const& file)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::string_view rest = file;
    png_set_read_fn(png, &rest, [](png_structp reader, png_bytep to, png_size_t size) {
        auto& left = *static_cast<std::string_view*>(png_get_io_ptr(reader));
        left.copy(reinterpret_cast<char*>(to), size);
        left.remove_prefix(size);
    });
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    std::size_t const bytes = png_get_bit_depth(png, info) / 8u;
    std::vector<unsigned> samples;
    for (std::size_t y = 0; y < png_get_image_height(png, info); ++y)
        for (std::size_t i = 0; i < png_get_rowbytes(png, info); i += bytes) {
            png_const_bytep const row = png_get_rows(png, info)[y];
            samples.push_back(bytes == 1 ? row[i] : 256u * row[i] + row[i + 1]);
        }
    png_destroy_read_struct(&png, &info, nullptr);
    return samples;
}

Picture pictureOf(std::string const& file)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, file.data(), file.size()), 0);
    Picture picture{image.width, image.height, image.format == PNG_FORMAT_GRAY, {}};
    picture.pixels.resize(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr), 0);
    return picture;
}

std::string fileOf(std::string const& graph, ImageOptions const& options,
                   Plan (*compiled)(Graph const&, std::size_t) = &compile)
{
    TemporaryFolder const folder;
    GraphSurroundings surroundings;
    surroundings.pixels = true;
    Plan const plan = compiled(graphOf(graph, surroundings), 0);
    auto file = OutputFile::open(folder / "picture");
    renderImage(plan, options, file);
    file.commit();
    return folder.read("picture");
}

constexpr char kRamp[] = R"({"nodes": {
    "x": {"type": "Mul_Float", "inputs": {"a": {"pixel": "x"}, "b": 0.2}},
    "y": {"type": "Mul_Float", "inputs": {"a": {"pixel": "y"}, "b": 10}},
    "sum": {"type": "Add_Float", "inputs": {"a": {"from": "x"}, "b": {"from": "y"}}}},
    "outputs": ["sum"]})";

}  // namespace

// Centres are halves: 0.1, 0.3, 0.5 in the first row, ten more a row.
TEST(Image, ValuesAtPixelCentresBecomeGrey)
{
    Picture const plain = pictureOf(fileOf(kRamp, {{3, 2}, {-5, -4}, 0, 1}));
    EXPECT_EQ(plain.width, 3u);
    EXPECT_EQ(plain.height, 2u);
    EXPECT_TRUE(plain.isGrey);
    EXPECT_EQ(plain.pixels, (Pixels{255, 255, 255, 255, 255, 255})) << "cut at white";

    Picture const mapped = pictureOf(fileOf(kRamp, {{3, 2}, {5, 15.6f}, 0, 1}));
    EXPECT_EQ(mapped.pixels, (Pixels{2, 7, 12, 243, 248, 253}));
    Picture const reversed = pictureOf(fileOf(kRamp, {{3, 2}, {15.6f, 5}, 0, 1}));
    EXPECT_EQ(reversed.pixels, (Pixels{253, 248, 243, 12, 7, 2}));
}

TEST(Image, ColoursKeepTheirAlphaWhateverTheMap)
{
    constexpr char kColour[] = R"({"nodes": {
        "c": {"type": "RandomGenerator_Color",
              "inputs": {"value": [0.2, 0.4, 0.8, 0.6], "range": 0}}}, "outputs": ["c"]})";
    EXPECT_EQ(pictureOf(fileOf(kColour, {{1, 1}, {}, 0, 1})).pixels, (Pixels{51, 102, 204, 153}));
    EXPECT_EQ(pictureOf(fileOf(kColour, {{1, 1}, {0, 2}, 0, 1})).pixels,
              (Pixels{26, 51, 102, 153}));
}

TEST(Image, NaNIsBlack)
{
    constexpr char kNaN[] = R"({"nodes": {
        "n": {"type": "Sqrt_Float", "inputs": {"value": -1}}}, "outputs": ["n"]})";
    EXPECT_EQ(pictureOf(fileOf(kNaN, {{2, 1}, {-1, 1}, 0, 1})).pixels, (Pixels{0, 0}));
}

TEST(Image, SixteenBitsHaveTwoHundredAndFiftySevenTimesTheLevels)
{
    EXPECT_EQ(samplesOf(fileOf(kRamp, {{3, 2}, {5, 15.6f}, 0, 1, ImageFormat::png, 16})),
              (std::vector<unsigned>{618, 1855, 3091, 62444, 63680, 64917}));
}

// Left to right, but the last row first.
TEST(Image, FloatsAreWrittenAsTheyAre)
{
    float const ramp[] = {15.1f, 15.3f, 15.5f, 5.1f, 5.3f, 5.5f};
    std::string const file = fileOf(kRamp, {{3, 2}, {}, 0, 1, ImageFormat::pfm});
    ASSERT_TRUE(file.starts_with("Pf\n3 2\n-1.0\n"));
    ASSERT_EQ(file.size(), 12 + sizeof ramp);
    for (std::size_t i = 0; i < std::size(ramp); ++i) {
        float value = 0;
        std::memcpy(&value, file.data() + 12 + 4 * i, sizeof value);
        EXPECT_NEAR(value, ramp[i], 1e-6);
    }
    constexpr char kColour[] = R"({"nodes": {
        "c": {"type": "Abs_Float4", "inputs": {"value": [-2, 4, 8, 6]}}}, "outputs": ["c"]})";
    float const colour[] = {2, 4, 8};
    EXPECT_EQ(fileOf(kColour, {{1, 1}, {}, 0, 1, ImageFormat::pfm}),
              "PF\n1 1\n-1.0\n" +
                  std::string(reinterpret_cast<char const*>(colour), sizeof colour));
}

TEST(Image, BytesDependNeitherOnThreadsNorOnKernelsOverRows)
{
    for (ImageFormat const format : {ImageFormat::png, ImageFormat::pfm}) {
        ImageOptions options{{2100, 67}, {0, 1000}, 0, 1, format};
        std::string const one = fileOf(kRamp, options);
        for (std::size_t const threads : {2u, 7u}) {
            options.threads = threads;
            EXPECT_EQ(fileOf(kRamp, options), one);
            EXPECT_EQ(fileOf(kRamp, options, &compileRows), one);
        }
    }
}
