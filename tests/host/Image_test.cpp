// Pictures: which value becomes which pixel, on any number of threads.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/image.h"

#include <png.h>

#include <cstring>
#include <vector>

using namespace fixtures;
using support::TemporaryFolder;

namespace {

struct Picture {
    std::size_t width, height, channels;
    std::vector<unsigned> samples;  // as they are in the file, whatever their depth

    bool operator==(Picture const&) const = default;
};

Picture pictureOf(std::string const& file)
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
    Picture picture{png_get_image_width(png, info),
                    png_get_image_height(png, info),
                    png_get_channels(png, info),
                    {}};
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t i = 0; i < png_get_rowbytes(png, info); i += bytes) {
            png_const_bytep const row = png_get_rows(png, info)[y];
            picture.samples.push_back(bytes == 1 ? row[i] : 256u * row[i] + row[i + 1]);
        }
    png_destroy_read_struct(&png, &info, nullptr);
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
constexpr char kColour[] = R"({"nodes": {
    "c": {"type": "RandomGenerator_Color", "inputs": {"value": [0.2, 0.4, 0.8, 0.6], "range": 0}}},
    "outputs": ["c"]})";
constexpr char kNaN[] = R"({"nodes": {
    "n": {"type": "Sqrt_Float", "inputs": {"value": -1}}}, "outputs": ["n"]})";

}  // namespace

// Centres are halves: 0.1, 0.3, 0.5 in the first row, ten more a row.
TEST(Image, ValuesAtPixelCentresBecomeSamples)
{
    struct {
        char const *why, *graph;
        ImageOptions options;
        Picture expected;
    } const rows[] = {
        {"cut at white",
         kRamp,
         {{3, 2}, {-5, -4}, 0, 1},
         {3, 2, 1, {255, 255, 255, 255, 255, 255}}},
        {"mapped", kRamp, {{3, 2}, {5, 15.6f}, 0, 1}, {3, 2, 1, {2, 7, 12, 243, 248, 253}}},
        {"reversed", kRamp, {{3, 2}, {15.6f, 5}, 0, 1}, {3, 2, 1, {253, 248, 243, 12, 7, 2}}},
        {"257 times the levels",
         kRamp,
         {{3, 2}, {5, 15.6f}, 0, 1, ImageFormat::png, 16},
         {3, 2, 1, {618, 1855, 3091, 62444, 63680, 64917}}},
        {"a colour", kColour, {{1, 1}, {}, 0, 1}, {1, 1, 4, {51, 102, 204, 153}}},
        {"alpha has no map", kColour, {{1, 1}, {0, 2}, 0, 1}, {1, 1, 4, {26, 51, 102, 153}}},
        {"NaN is black", kNaN, {{2, 1}, {-1, 1}, 0, 1}, {2, 1, 1, {0, 0}}},
    };
    for (auto const& row : rows)
        EXPECT_TRUE(pictureOf(fileOf(row.graph, row.options)) == row.expected) << row.why;
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
    constexpr char kLanes[] = R"({"nodes": {
        "v": {"type": "Abs_Float4", "inputs": {"value": [-2, 4, 8, 6]}}}, "outputs": ["v"]})";
    float const colour[] = {2, 4, 8};
    EXPECT_EQ(fileOf(kLanes, {{1, 1}, {}, 0, 1, ImageFormat::pfm}),
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
