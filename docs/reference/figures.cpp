// Pictures of the reference: curves, histograms and shaded fields, drawn from what the kernels
// give.
#include "figures.h"

#include "carried.h"
#include "graphs.h"
#include "markup.h"

#include "nodus/host/curve_drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>

namespace nodus::reference {

namespace {

using host::Axis;
using host::Fault;
using Kind = JsonValue::Kind;

constexpr host::Field kField;
constexpr double kFieldWidth = kField.width, kFieldHeight = kField.height;

// Even, and a multiple of every whole number of units in the plots: steps are met exactly.
constexpr int kIntervals = 960;
// How often the interval in which a curve ends is halved: to a ten-thousandth of a sample's.
constexpr int kHalvings = 14;

using Curves = std::vector<std::vector<double>>;

// Halves the interval in which a curve ends or begins, again and again: it is drawn to its very
// end, and to the edge of the field when it ends in an infinity.
template <typename Sample> Curves sampledToTheEnds(std::vector<double>& xs, Sample const& sample)
{
    Curves values = sample(xs);
    for (int round = 0; round < kHalvings; ++round) {
        std::vector<double> finer;
        for (std::size_t i = 0; i < xs.size(); ++i) {
            auto const ends = [i](std::vector<double> const& curve) {
                return std::isfinite(curve[i - 1]) != std::isfinite(curve[i]);
            };
            if (i > 0 && std::ranges::any_of(values, ends))
                finer.push_back(std::midpoint(xs[i - 1], xs[i]));
            finer.push_back(xs[i]);
        }
        if (finer.size() == xs.size())
            break;
        xs = std::move(finer);
        values = sample(xs);
    }
    return values;
}

Axis axisOf(JsonValue const& plot, std::string_view key, std::string const& origin)
{
    JsonValue const& ends = wanted(plot, key, Kind::array, origin);
    if (ends.items.size() != 2)
        throw Fault(origin + ": '" + std::string(key) + "' wants two numbers, from and to");
    Axis const axis{numberOf(ends.items[0], origin), numberOf(ends.items[1], origin)};
    if (!(axis.from < axis.to))
        throw Fault(origin + ": '" + std::string(key) + "' wants the lesser number first");
    return axis;
}

std::int64_t countOf(JsonValue const& plot, std::string_view key, std::string const& origin)
{
    std::int64_t const count = wanted(plot, key, Kind::integer, origin).integer;
    if (count < 1)
        throw Fault(origin + ": '" + std::string(key) + "' wants a number above 0");
    return count;
}

// The plot's own nodes with one more for each curve, and those curves as outputs.
JsonValue graphOf(JsonValue const& plot, std::string_view type, std::string const& origin)
{
    JsonValue nodes = plot.member("nodes") != nullptr ? wanted(plot, "nodes", Kind::object, origin)
                                                      : JsonValue(Kind::object);
    std::vector<std::string> outputs;
    for (JsonValue const& curve : wanted(plot, "curves", Kind::array, origin).items) {
        refuseUnknownKeys(curve, {"label", "type", "inputs", "output"}, origin);
        std::string const name = "curve" + std::to_string(outputs.size());
        nodes.keys.push_back(name);
        nodes.items.push_back(
            nodeValue(textOr(curve, "type", type, origin), curve.member("inputs")));
        outputs.push_back(name + "." + textOr(curve, "output", "result", origin));
    }
    return graphValue(std::move(nodes), outputs);
}

std::string legend(JsonValue const& plot, std::string const& origin)
{
    std::string items;
    int number = 0;
    for (JsonValue const& curve : plot.member("curves")->items)
        if (++number; curve.member("label") != nullptr)
            items += fmt::format("<li><svg viewBox=\"0 0 26 8\" aria-hidden=\"true\"><path "
                                 "class=\"c{}\" d=\"M0 4H26\"/></svg>{}</li>",
                                 number, markupText(textOr(curve, "label", "", origin)));
    return items.empty() ? "" : "<ul class=\"legend\">" + items + "</ul>";
}

std::string curves(host::Catalogue const& catalogue, JsonValue const& plot, std::string_view type,
                   std::string_view caption, std::string const& origin)
{
    Axis x = axisOf(plot, "x", origin);
    Axis const y = axisOf(plot, "y", origin);
    x.isPi = textOr(plot, "unit", "", origin) == "pi";
    bool const hasSteps = plot.member("steps") != nullptr;
    double const unit = x.isPi ? std::numbers::pi : 1.0;
    std::vector<double> xs;
    for (int i = 0; i <= kIntervals; ++i)
        xs.push_back((x.from + (x.to - x.from) * i / kIntervals) * unit);
    JsonValue const graph = graphOf(plot, type, origin);
    Curves const all = sampledToTheEnds(
        xs, [&](std::vector<double> const& at) { return sampled(catalogue, graph, origin, at); });
    std::vector<double> fractions;
    fractions.reserve(xs.size());
    for (double const at : xs)
        fractions.push_back(x.fraction(at / unit));
    std::string field, dots;
    int number = 0;
    for (auto const& values : all)
        field += host::strokes(kField, fractions, values, y, hasSteps, ++number, dots);
    return host::drawing(kField, markupText(caption), host::marks(kField, x, y, ""), field, dots) +
           legend(plot, origin);
}

std::string histogram(host::Catalogue const& catalogue, JsonValue const& plot,
                      std::string_view type, std::string_view caption, std::string const& origin)
{
    Axis const x = axisOf(plot, "x", origin);
    auto const bins = static_cast<std::size_t>(countOf(plot, "bins", origin));
    std::vector<double> const frames(static_cast<std::size_t>(countOf(plot, "frames", origin)));
    auto const draws = sampled(catalogue, graphOf(plot, type, origin), origin, frames);
    std::vector<double> shares(bins);
    for (double const draw : draws.at(0)) {
        double const bin = std::floor(x.fraction(draw) * static_cast<double>(bins));
        if (bin >= 0 && bin < static_cast<double>(bins))
            shares[static_cast<std::size_t>(bin)] += 100.0 / static_cast<double>(frames.size());
    }
    Axis const y{0, std::ranges::max(shares) * 1.1 + 1e-6};
    std::string bars;
    double const width = kFieldWidth / static_cast<double>(bins);
    for (std::size_t bin = 0; bin < bins; ++bin)
        if (shares[bin] > 0)
            bars += fmt::format("M{:.2f} {}V{:.2f}h{:.2f}V{}z", width * static_cast<double>(bin),
                                kFieldHeight, kFieldHeight * (1 - y.fraction(shares[bin])),
                                width - 1, kFieldHeight);
    return host::drawing(kField, markupText(caption), host::marks(kField, x, y, "%"),
                         fmt::format("<path class=\"bars\" d=\"{}\"/>", bars), "");
}

std::string image(host::Catalogue const& catalogue, JsonValue const& plot, std::string_view caption,
                  std::string const& origin)
{
    JsonValue const& size = wanted(plot, "size", Kind::array, origin);
    if (size.items.size() != 2)
        throw Fault(origin + ": 'size' wants a width and a height");
    auto const end = [&](std::string_view key) {
        JsonValue const* const member = plot.member(key);
        if (member == nullptr)
            throw Fault(origin + ": '" + std::string(key) + "' is missing");
        return static_cast<float>(numberOf(*member, origin));
    };
    auto const pixels = [&](std::size_t side) {
        double const count = numberOf(size.items[side], origin);
        if (!(count >= 1 && count <= 1024))
            throw Fault(origin + ": 'size' wants sides of 1 to 1024 pixels");
        return static_cast<std::size_t>(count);
    };
    Shades const shades{pixels(0), pixels(1), end("black"), end("white")};
    JsonValue const graph = graphValue(wanted(plot, "nodes", Kind::object, origin),
                                       {wanted(plot, "output", Kind::text, origin).text});
    return fmt::format(
        "<img width=\"{}\" height=\"{}\" alt=\"{}\" src=\"data:image/png;base64,{}\">",
        shades.width, shades.height, markupText(caption),
        base64(painted(catalogue, graph, origin, shades)));
}

}  // namespace

std::string figure(host::Catalogue const& catalogue, JsonValue const& plot, std::string_view type,
                   std::string const& origin)
{
    refuseUnknownKeys(plot,
                      {"kind", "caption", "x", "y", "unit", "steps", "nodes", "curves", "bins",
                       "frames", "size", "black", "white", "output"},
                      origin);
    std::string const kind = textOr(plot, "kind", "curves", origin);
    std::string const caption = wanted(plot, "caption", Kind::text, origin).text;
    std::string content;
    if (kind == "curves")
        content = curves(catalogue, plot, type, caption, origin);
    else if (kind == "histogram")
        content = histogram(catalogue, plot, type, caption, origin);
    else if (kind == "image")
        content = image(catalogue, plot, caption, origin);
    else
        throw Fault(origin + ": unknown kind '" + kind + "'; it is curves, histogram or image");
    return "<figure>" + content + "<figcaption>" + markupText(caption) + "</figcaption></figure>\n";
}

}  // namespace nodus::reference
