// One evaluation a pixel, a row of the picture at a time.
#include "nodus/host/image.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/evaluator.h"
#include "png_file.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace nodus::host {

namespace {

constexpr std::size_t kLargestSide = 8192;
constexpr std::size_t kBandSize = std::size_t{1} << 20;  // floats

template <typename Number> std::optional<Number> numberIn(std::string_view text)
{
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

// The two numbers of "A<separator>B".
template <typename Number>
std::optional<std::pair<Number, Number>> pairIn(std::string_view text, char separator)
{
    std::size_t const middle = text.find(separator);
    if (middle == std::string_view::npos)
        return std::nullopt;
    auto const first = numberIn<Number>(text.substr(0, middle));
    auto const second = numberIn<Number>(text.substr(middle + 1));
    if (!first || !second)
        return std::nullopt;
    return std::pair(*first, *second);
}

// From 0 for black to most for white.
std::uint32_t levelOf(float value, ValueRange map, float most)
{
    float const level = (value - map.black) / (map.white - map.black);
    // The comparisons are written so that NaN is black.
    float const cut = level > 0.0f ? (level < 1.0f ? level : 1.0f) : 0.0f;
    // To the nearest, halves up: in Double the sum is exact.
    constexpr double kHalf = 0.5;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(double{cut * most} + kHalf));
}

// Every NaN is the same one: its sign says nothing and may differ between equal results.
float unified(float value)
{
    return std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value;
}

// The samples of one channel of some pixels, each so many channels behind the one before.
void storeLevels(float const* lanes, std::size_t stride, std::size_t count, std::size_t depth,
                 ValueRange map, std::uint8_t* to, std::size_t channels)
{
    // A few at a time, side by side, so that compilers make vectors of the arithmetic.
    constexpr std::size_t kAtATime = 64;
    float values[kAtATime] = {};
    std::uint32_t levels[kAtATime];
    float const most = depth == 16 ? 65535.0f : 255.0f;
    for (std::size_t first = 0; first < count; first += kAtATime) {
        std::size_t const some = std::min(kAtATime, count - first);
        for (std::size_t i = 0; i < some; ++i)
            values[i] = lanes[(first + i) * stride];
        for (std::size_t i = 0; i < kAtATime; ++i)
            levels[i] = levelOf(values[i], map, most);
        for (std::size_t i = 0; i < some; ++i) {
            if (depth == 16)
                *to++ = static_cast<std::uint8_t>(levels[i] >> 8);
            *to = static_cast<std::uint8_t>(levels[i]);
            to += channels * depth / 8 - (depth / 8 - 1);
        }
    }
}

template <typename Output> std::string whyNoPicture(std::vector<Output> const& outputs)
{
    auto const isPicture = [](ValueType const& type) {
        return type.id == TypeId::Float || type.id == TypeId::Color || type.id == TypeId::Float4;
    };
    if (outputs.size() == 1 && isPicture(*outputs[0].type))
        return {};
    std::string found = outputs.empty() ? "none" : "";
    for (Output const& output : outputs)
        found +=
            (found.empty() ? "" : ", ") + output.name + " (" + std::string(output.type->name) + ")";
    return "an image wants one output that is a Float, a Color or a Float4; the graph has " + found;
}

PlanOutput const& onlyPicture(Plan const& plan)
{
    if (std::string const why = whyNoPicture(plan.outputs); !why.empty())
        throw Fault(why);
    return plan.outputs[0];
}

// The rows of a picture, evaluated by any number of threads.
class Renderer {
public:
    Renderer(Plan const& plan, ImageOptions const& options)
        : m_plan(plan), m_options(options), m_output(onlyPicture(plan)),
          m_evaluators([&plan] { return std::make_unique<Evaluator>(plan, nullptr); })
    {
    }

    // Of a pixel of the output.
    std::size_t channels() const { return m_output.type->size / sizeof(float); }

    // Calls keep(lanes, stride, x, y, count) for stretches of rows first to first + count: lanes
    // are those of pixel x, stride floats before those of the next one.
    template <typename Keep> void render(std::size_t first, std::size_t count, Keep keep)
    {
        tbb::global_control const limit(tbb::global_control::max_allowed_parallelism,
                                        m_options.threads);
        tbb::task_arena arena(static_cast<int>(m_options.threads));
        arena.execute([&] {
            tbb::parallel_for(first, first + count, [&](std::size_t y) { renderRow(y, keep); });
        });
    }

private:
    template <typename Keep> void renderRow(std::size_t y, Keep keep)
    {
        Evaluator& evaluator = *m_evaluators.local();
        std::size_t const inBlock = m_plan.framesPerBlock;
        std::vector<std::int32_t> const frames(inBlock, m_options.frame);
        for (std::size_t first = 0; first < m_options.size.width; first += inBlock) {
            std::size_t const count = std::min(inBlock, m_options.size.width - first);
            for (PlanSource const& source : m_plan.sources)
                placeCentres(source, evaluator.at(source.place, 0), first, y, count);
            evaluator.evaluate(std::span(frames).first(count));
            keep(reinterpret_cast<float const*>(evaluator.at(m_output.place, 0)),
                 m_output.place.stride / sizeof(float), first, y, count);
        }
    }

    static void placeCentres(PlanSource const& source, std::byte* place, std::size_t x,
                             std::size_t y, std::size_t count)
    {
        bool const isX = source.kind == Source::Kind::pixelX;
        if (!isX && source.kind != Source::Kind::pixelY)
            return;
        for (std::size_t i = 0; i < count; ++i) {
            float const centre = static_cast<float>(isX ? x + i : y) + 0.5f;
            std::memcpy(place + i * source.place.stride, &centre, sizeof centre);
        }
    }

    Plan const& m_plan;
    ImageOptions const& m_options;
    PlanOutput const& m_output;
    tbb::enumerable_thread_specific<std::unique_ptr<Evaluator>> m_evaluators;
};

void renderPng(Renderer& renderer, ImageOptions const& options, OutputFile& file)
{
    std::size_t const channels = renderer.channels();
    PngPixels pixels{options.size.width, options.size.height, channels, options.depth, {}};
    std::vector<std::uint8_t> bytes(pixels.rowSize() * pixels.height);
    pixels.bytes = bytes;
    auto const keep = [&](float const* lanes, std::size_t stride, std::size_t x, std::size_t y,
                          std::size_t count) {
        std::uint8_t* const row = bytes.data() + y * pixels.rowSize() + 1;
        for (std::size_t channel = 0; channel < channels; ++channel)
            storeLevels(lanes + channel, stride, count, options.depth,
                        channel == 3 ? ValueRange{} : options.map,
                        row + (x * channels + channel) * options.depth / 8, channels);
    };
    renderer.render(0, pixels.height, keep);
    file.write(pngFile(pixels));
}

// The last row comes first, in this machine's byte order, of which the sign of the scale tells.
void renderPfm(Renderer& renderer, ImageOptions const& options, OutputFile& file)
{
    auto const [width, height] = options.size;
    std::size_t const channels = renderer.channels() == 1 ? 1 : 3;
    file.write((channels == 1 ? "Pf\n" : "PF\n") + std::to_string(width) + " " +
               std::to_string(height) + "\n-1.0\n");
    std::size_t const rowSize = width * channels;
    std::size_t const inBand = std::max<std::size_t>(1, kBandSize / rowSize);
    std::vector<float> band(inBand * rowSize);
    for (std::size_t end = height; end > 0;) {
        std::size_t const count = std::min(inBand, end);
        renderer.render(end - count, count,
                        [&](float const* lanes, std::size_t stride, std::size_t x, std::size_t y,
                            std::size_t pixels) {
                            float* to = band.data() + (end - 1 - y) * rowSize + x * channels;
                            for (std::size_t i = 0; i < pixels; ++i)
                                for (std::size_t channel = 0; channel < channels; ++channel)
                                    *to++ = unified(lanes[i * stride + channel]);
                        });
        file.write({reinterpret_cast<char const*>(band.data()), count * rowSize * sizeof(float)});
        end -= count;
    }
}

}  // namespace

ImageSize parseImageSize(std::string_view text)
{
    auto const sides = pairIn<std::size_t>(text, 'x');
    auto const fits = [](std::size_t side) { return side >= 1 && side <= kLargestSide; };
    if (!sides || !fits(sides->first) || !fits(sides->second))
        throw Fault("--size wants WIDTHxHEIGHT, each from 1 to " + std::to_string(kLargestSide) +
                    ", not '" + printable(text) + "'");
    return {sides->first, sides->second};
}

ValueRange parseValueRange(std::string_view text)
{
    auto const ends = pairIn<float>(text, ':');
    if (!ends || !std::isfinite(ends->first) || !std::isfinite(ends->second) ||
        ends->first == ends->second)
        throw Fault("--map wants MIN:MAX, two different finite numbers, not '" + printable(text) +
                    "'");
    return {ends->first, ends->second};
}

void requirePicture(Graph const& graph, std::string const& origin)
{
    FileFaults faults(origin);
    if (std::string const why = whyNoPicture(graph.outputs); !why.empty())
        faults.add(graph.outputsLine, why);
    faults.throwIfAny();
}

void renderImage(Plan const& plan, ImageOptions const& options, OutputFile& file)
{
    Renderer renderer(plan, options);
    if (options.format == ImageFormat::png)
        renderPng(renderer, options, file);
    else
        renderPfm(renderer, options, file);
}

}  // namespace nodus::host
