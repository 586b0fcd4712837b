// One evaluation a pixel, a row of the picture at a time.
#include "nodus/host/image.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/evaluator.h"

#include <png.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

namespace nodus::host {

namespace {

constexpr std::size_t kLargestSide = 8192;

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

std::uint8_t channelOf(float value, ValueRange map)
{
    float const level = (value - map.black) / (map.white - map.black);
    // The comparisons are written so that NaN is black.
    float const cut = level > 0.0f ? (level < 1.0f ? level : 1.0f) : 0.0f;
    return static_cast<std::uint8_t>(std::lround(cut * 255.0f));
}

template <typename Output> std::string whyNoPictureOf(std::vector<Output> const& outputs)
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
    if (std::string const why = whyNoPictureOf(plan.outputs); !why.empty())
        throw Fault(why);
    return plan.outputs[0];
}

class Renderer {
public:
    Renderer(Plan const& plan, ImageOptions const& options)
        : m_plan(plan), m_options(options), m_output(onlyPicture(plan)),
          m_channels(m_output.type->size / sizeof(float)),
          m_pixels(options.size.width * options.size.height * m_channels),
          m_evaluators([&plan] { return std::make_unique<Evaluator>(plan, nullptr); })
    {
    }

    void render()
    {
        tbb::global_control const limit(tbb::global_control::max_allowed_parallelism,
                                        m_options.threads);
        tbb::task_arena arena(static_cast<int>(m_options.threads));
        arena.execute([&] {
            tbb::parallel_for(std::size_t{0}, m_options.size.height,
                              [&](std::size_t y) { renderRow(y); });
        });
    }

    void write(OutputFile& file) const
    {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = static_cast<png_uint_32>(m_options.size.width);
        image.height = static_cast<png_uint_32>(m_options.size.height);
        image.format = m_channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGBA;
        png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
        std::string encoded(size, '\0');
        if (png_image_write_to_memory(&image, encoded.data(), &size, 0, m_pixels.data(), 0,
                                      nullptr) == 0)
            throw Fault(std::string("the image cannot be encoded: ") + image.message);
        file.write(std::string_view(encoded).substr(0, size));
    }

private:
    void renderRow(std::size_t y)
    {
        Evaluator& evaluator = *m_evaluators.local();
        std::size_t const inBlock = m_plan.framesPerBlock;
        std::vector<std::int32_t> const frames(inBlock, m_options.frame);
        for (std::size_t first = 0; first < m_options.size.width; first += inBlock) {
            std::size_t const count = std::min(inBlock, m_options.size.width - first);
            for (PlanSource const& source : m_plan.sources)
                for (std::size_t i = 0; i < count; ++i)
                    placeCentre(source, evaluator.at(source.place, i), first + i, y);
            evaluator.evaluate(std::span(frames).first(count));
            for (std::size_t i = 0; i < count; ++i)
                keepPixel(evaluator.at(m_output.place, i), first + i, y);
        }
    }

    static void placeCentre(PlanSource const& source, std::byte* place, std::size_t x,
                            std::size_t y)
    {
        if (source.kind != Source::Kind::pixelX && source.kind != Source::Kind::pixelY)
            return;
        std::size_t const index = source.kind == Source::Kind::pixelX ? x : y;
        float const centre = static_cast<float>(index) + 0.5f;
        std::memcpy(place, &centre, sizeof centre);
    }

    void keepPixel(std::byte const* value, std::size_t x, std::size_t y)
    {
        std::size_t const first = (y * m_options.size.width + x) * m_channels;
        for (std::size_t channel = 0; channel < m_channels; ++channel) {
            float lane = 0;
            std::memcpy(&lane, value + channel * sizeof lane, sizeof lane);
            m_pixels[first + channel] =
                channelOf(lane, channel == 3 ? ValueRange{} : m_options.map);
        }
    }

    Plan const& m_plan;
    ImageOptions const& m_options;
    PlanOutput const& m_output;
    std::size_t m_channels;
    std::vector<std::uint8_t> m_pixels;
    tbb::enumerable_thread_specific<std::unique_ptr<Evaluator>> m_evaluators;
};

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

std::string whyNoPicture(Graph const& graph) { return whyNoPictureOf(graph.outputs); }

void renderImage(Plan const& plan, ImageOptions const& options, OutputFile& file)
{
    Renderer renderer(plan, options);
    renderer.render();
    renderer.write(file);
}

}  // namespace nodus::host
