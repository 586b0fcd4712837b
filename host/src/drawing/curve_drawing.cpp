// Curves over axes with marks, as SVG.
#include "nodus/host/curve_drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace nodus::host {

namespace {

// What a curve may leave its samples by, in units of the drawing.
constexpr double kVisible = 0.06;

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
    bool const isZero = std::fabs(value) < 1e-9 * (axis.to - axis.from);
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
    for (int i = 0; (first + i) * step <= axis.to + 1e-9 * step; ++i)
        places.push_back((first + i) * step);
    return places;
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

}  // namespace

std::string marks(Field const& field, Axis const& x, Axis const& y, std::string_view yUnit)
{
    std::string lines, labels;
    for (double const at : placesOf(x, stepOf(x, 8))) {
        double const px = field.left + field.width * x.fraction(at);
        lines += fmt::format("M{:.1f} {}V{}", px, field.top, field.top + field.height);
        labels += fmt::format("<text x=\"{:.1f}\" y=\"{}\" text-anchor=\"middle\">{}</text>", px,
                              field.wholeHeight() - 9, label(x, at));
    }
    for (double const at : placesOf(y, stepOf(y, 5))) {
        double const py = field.top + field.height * (1 - y.fraction(at));
        lines += fmt::format("M{} {:.1f}H{}", field.left, py, field.left + field.width);
        labels += fmt::format("<text x=\"{}\" y=\"{:.1f}\" text-anchor=\"end\">{}{}</text>",
                              field.left - 7, py + 4, label(y, at), yUnit);
    }
    std::string axes;
    if (x.from < 0 && x.to > 0)
        axes += fmt::format("M{:.1f} {}V{}", field.left + field.width * x.fraction(0), field.top,
                            field.top + field.height);
    if (y.from <= 0 && y.to > 0)
        axes +=
            fmt::format("M{} {:.1f}H{}", field.left, field.top + field.height * (1 - y.fraction(0)),
                        field.left + field.width);
    return fmt::format("<path class=\"grid\" d=\"{}\"/><path class=\"axis\" d=\"{}\"/>{}", lines,
                       axes, labels);
}

std::string strokes(Field const& field, std::vector<double> const& fractions,
                    std::vector<double> const& values, Axis const& y, bool hasSteps, int number,
                    std::string& dots)
{
    std::string path;
    std::vector<Point> piece;
    auto const finish = [&] {
        if (piece.size() == 1 && piece[0].y >= 0 && piece[0].y <= field.height)
            dots += fmt::format("<circle class=\"c{}\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"3\"/>",
                                number, field.left + piece[0].x, field.top + piece[0].y);
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
            piece.push_back({field.width * fractions[i],
                             field.height * (1 - std::clamp(y.fraction(values[i]), -9.0, 9.0))});
    }
    finish();
    return fmt::format("<path class=\"c{}\" d=\"{}\"/>", number, path);
}

std::string drawing(Field const& field, std::string_view caption, std::string_view content,
                    std::string_view curves, std::string_view dots)
{
    return fmt::format("<svg viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}\">{}"
                       "<svg x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\">{}</svg>{}</svg>",
                       field.wholeWidth(), field.wholeHeight(), caption, content, field.left,
                       field.top, field.width, field.height, curves, dots);
}

}  // namespace nodus::host
