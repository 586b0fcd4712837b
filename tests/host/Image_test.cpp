// Pictures: which value becomes which pixel, on any number of threads.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/image.h"

#include <png.h>

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

std::string fileOf(std::string const& graph, ImageOptions const& options)
{
    TemporaryFolder const folder;
    GraphSurroundings surroundings;
    surroundings.pixels = true;
    Plan const plan = compile(graphOf(graph, surroundings));
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

TEST(Image, BytesDoNotDependOnThreads)
{
    std::string const one = fileOf(kRamp, {{131, 67}, {0, 100}, 0, 1});
    EXPECT_EQ(fileOf(kRamp, {{131, 67}, {0, 100}, 0, 2}), one);
    EXPECT_EQ(fileOf(kRamp, {{131, 67}, {0, 100}, 0, 7}), one);
}
