// Pictures of the reference: curves, histograms and shaded fields, drawn from what the kernels
// give.
#include "figures.h"

#include "carried.h"
#include "graphs.h"
#include "markup.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>

namespace nodus::reference {

namespace {

using host::Fault;
using Kind = JsonValue::Kind;

// The drawing, in its own units, and the field of the curves within it.
constexpr double kWidth = 420, kHeight = 230;
constexpr double kLeft = 46, kRight = 12, kTop = 10, kBottom = 28;
constexpr double kFieldWidth = kWidth - kLeft - kRight, kFieldHeight = kHeight - kTop - kBottom;

// Even, and a multiple of every whole number of units in the plots: steps are met exactly.
constexpr int kIntervals = 960;
// How often the interval in which a curve ends is halved: to a ten-thousandth of a sample's.
constexpr int kHalvings = 14;
// What a curve may leave its samples by, in units of the drawing.
constexpr double kVisible = 0.06;

struct Axis {
    double from, to;
    bool isPi = false;

    double fraction(double value) const { return (value - from) / (to - from); }
};

struct Point {
    double x, y;
};

// The distance between marks: 1, 2 or 5 times a power of ten, at most so many over the axis.
double stepOf(Axis const& axis, int most)
{
    double const least = (axis.to - axis.from) / most;
    double const decade = std::pow(10.0, std::floor(std::log10(least)));
    for (double const factor : {1.0, 2.0, 5.0})
        if (factor * decade >= least)
            return factor * decade;
    return 10 * decade;
}

std::string label(Axis const& axis, double value)
{
    bool const isZero = std::fabs(value) < 1e-9;
    std::string text = isZero ? "0" : fmt::format("{:.6g}", std::fabs(value));
    if (axis.isPi && !isZero)
        text = (text == "1" ? "" : text) + "π";
    return (value < 0 && !isZero ? "−" : "") + text;
}

// The multiples of a step along an axis.
std::vector<double> placesOf(Axis const& axis, double step)
{
    double const first = std::ceil(axis.from / step);
    std::vector<double> places;
    for (int i = 0; (first + i) * step <= axis.to + 1e-9; ++i)
        places.push_back((first + i) * step);
    return places;
}

std::string marks(Axis const& x, Axis const& y, std::string_view yUnit)
{
    std::string lines, labels;
    for (double const at : placesOf(x, stepOf(x, 8))) {
        double const px = kLeft + kFieldWidth * x.fraction(at);
        lines += fmt::format("M{:.1f} {}V{}", px, kTop, kTop + kFieldHeight);
        labels += fmt::format("<text x=\"{:.1f}\" y=\"{}\" text-anchor=\"middle\">{}</text>", px,
                              kHeight - 9, label(x, at));
    }
    for (double const at : placesOf(y, stepOf(y, 5))) {
        double const py = kTop + kFieldHeight * (1 - y.fraction(at));
        lines += fmt::format("M{} {:.1f}H{}", kLeft, py, kLeft + kFieldWidth);
        labels += fmt::format("<text x=\"{}\" y=\"{:.1f}\" text-anchor=\"end\">{}{}</text>",
                              kLeft - 7, py + 4, label(y, at), yUnit);
    }
    std::string axes;
    if (x.from < 0 && x.to > 0)
        axes += fmt::format("M{:.1f} {}V{}", kLeft + kFieldWidth * x.fraction(0), kTop,
                            kTop + kFieldHeight);
    if (y.from <= 0 && y.to > 0)
        axes += fmt::format("M{} {:.1f}H{}", kLeft, kTop + kFieldHeight * (1 - y.fraction(0)),
                            kLeft + kFieldWidth);
    return fmt::format("<path class=\"grid\" d=\"{}\"/><path class=\"axis\" d=\"{}\"/>{}", lines,
                       axes, labels);
}

// Fewer points that show the same line: each stretch grows while all it skips stay close to it.
std::vector<Point> thinned(std::vector<Point> const& all)
{
    std::vector<Point> kept;
    for (std::size_t begin = 0; begin < all.size();) {
        kept.push_back(all[begin]);
        std::size_t end = begin + 1;
        auto const isStraight = [&](std::size_t to) {
            double const dx = all[to].x - all[begin].x, dy = all[to].y - all[begin].y;
            for (std::size_t i = begin + 1; i < to; ++i)
                if (std::fabs((all[i].y - all[begin].y) * dx - (all[i].x - all[begin].x) * dy) >
                    kVisible * std::hypot(dx, dy))
                    return false;
            return true;
        };
        while (end + 1 < all.size() && isStraight(end + 1))
            ++end;
        begin = end;
    }
    return kept;
}

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

// The values are those at the fractions of the field's width. Single ones are dots, which are no
// part of the field: they would be cut in half at its edge.
std::string strokes(std::vector<double> const& fractions, std::vector<double> const& values,
                    Axis const& y, bool hasSteps, int number, std::string& dots)
{
    std::string path;
    std::vector<Point> piece;
    auto const finish = [&] {
        if (piece.size() == 1 && piece[0].y >= 0 && piece[0].y <= kFieldHeight)
            dots += fmt::format("<circle class=\"c{}\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"3\"/>",
                                number, kLeft + piece[0].x, kTop + piece[0].y);
        else if (piece.size() > 1)
            for (Point const& point : thinned(piece))
                path +=
                    fmt::format("{}{:.1f} {:.1f}", path.empty() || path.back() == ' ' ? "M" : "L",
                                point.x, point.y);
        if (!path.empty() && path.back() != ' ')
            path += ' ';
        piece.clear();
    };
    for (std::size_t i = 0; i < values.size(); ++i) {
        bool const isBroken =
            !std::isfinite(values[i]) ||
            (hasSteps && i > 0 && std::fabs(values[i] - values[i - 1]) > 0.1 * (y.to - y.from));
        if (isBroken)
            finish();
        // Far outside of the field all heights look the same.
        if (std::isfinite(values[i]))
            piece.push_back({kFieldWidth * fractions[i],
                             kFieldHeight * (1 - std::clamp(y.fraction(values[i]), -9.0, 9.0))});
    }
    finish();
    return fmt::format("<path class=\"c{}\" d=\"{}\"/>", number, path);
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

std::string drawing(std::string_view caption, std::string_view content, std::string_view field,
                    std::string_view dots)
{
    return fmt::format("<svg viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}\">{}"
                       "<svg x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\">{}</svg>{}</svg>",
                       kWidth, kHeight, markupText(caption), content, kLeft, kTop, kFieldWidth,
                       kFieldHeight, field, dots);
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
    for (double const at : xs)
        fractions.push_back(x.fraction(at / unit));
    std::string field, dots;
    int number = 0;
    for (auto const& values : all)
        field += strokes(fractions, values, y, hasSteps, ++number, dots);
    return drawing(caption, marks(x, y, ""), field, dots) + legend(plot, origin);
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
    return drawing(caption, marks(x, y, "%"), fmt::format("<path class=\"bars\" d=\"{}\"/>", bars),
                   "");
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
