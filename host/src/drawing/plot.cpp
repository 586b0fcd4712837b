// Results over frames: curves sorted into axes, and a legend beneath each.
#include "nodus/host/plot.h"

#include "nodus/host/curve_drawing.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/result_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace nodus::host {

namespace {

constexpr Field kField{70, 10, 720, 192, 30, 28};
constexpr double kTitleHeight = 34, kLegendHeight = 26;
constexpr std::size_t kMostCurves = 5;  // as many as there are styles
// Curves whose ranges differ by more do not share an axis: one would look flat.
constexpr double kMostDifference = 10;
constexpr std::size_t kStretches = 720;  // one for each unit of the width
// Beyond it differences overflow.
constexpr double kGreatest = 1e300;

constexpr std::string_view kStyle =
    "svg{background:#fff;font:12px sans-serif}text{fill:#5a616c}.title{font-size:15px;fill:#1e2126}"
    ".grid{stroke:#e2e4e7;fill:none}.axis{stroke:#5a616c;fill:none;opacity:.6}"
    "path[class^=c]{fill:none;stroke-width:2;stroke-linejoin:round;stroke-linecap:round}"
    ".c1{stroke:#1d5cb8}.c2{stroke:#b9531a;stroke-dasharray:7 5}"
    ".c3{stroke:#2b8455;stroke-dasharray:2 5}.c4{stroke:#8449ad;stroke-dasharray:10 4 2 4}"
    ".c5{stroke:#6a7280;stroke-dasharray:14 4}circle{fill:#fff;stroke-width:2}";

bool isDrawn(double value) { return std::fabs(value) <= kGreatest; }

// Indices into the frames.
std::vector<std::size_t> chosen(std::vector<double> const& values)
{
    std::vector<std::size_t> indices;
    std::size_t const count = values.size();
    std::size_t const stretches = count > 2 * kStretches ? kStretches : count;
    for (std::size_t stretch = 0; stretch < stretches; ++stretch) {
        std::size_t const begin = count * stretch / stretches;
        std::size_t const end = count * (stretch + 1) / stretches;
        std::size_t least = begin, most = begin;
        for (std::size_t i = begin; i < end; ++i) {
            if (!isDrawn(values[i]))
                continue;
            if (!isDrawn(values[least]) || values[i] < values[least])
                least = i;
            if (!isDrawn(values[most]) || values[i] > values[most])
                most = i;
        }
        indices.push_back(std::min(least, most));
        if (least != most)
            indices.push_back(std::max(least, most));
    }
    return indices;
}

struct Range {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();

    bool isEmpty() const { return least > most; }
    double span() const { return isEmpty() ? 0 : most - least; }
    Range with(Range const& other) const
    {
        return {std::min(least, other.least), std::max(most, other.most)};
    }
};

Range rangeOf(std::vector<double> const& values)
{
    Range range;
    for (double const value : values)
        if (isDrawn(value))
            range = range.with({value, value});
    return range;
}

// Some room above and beneath, and some height for what is constant.
Axis axisOf(Range const& range)
{
    if (range.isEmpty())
        return {0, 1};
    double const magnitude = std::max(std::fabs(range.least), std::fabs(range.most));
    double const constant = magnitude == 0 ? 1 : magnitude * 1e-3;
    double const room = std::max(0.05 * range.span(), range.span() < constant ? constant / 2 : 0);
    return {range.least - room, range.most + room};
}

struct Axes {
    std::string unit;
    Range range;
    double leastSpan = std::numeric_limits<double>::infinity();
    std::vector<PlotCurve const*> curves{};

    bool takes(PlotCurve const& curve, Range const& more) const
    {
        double const spans = more.span() > 0 ? std::min(leastSpan, more.span()) : leastSpan;
        return curve.unit == unit && curves.size() < kMostCurves &&
               range.with(more).span() <= kMostDifference * spans;
    }
    void add(PlotCurve const& curve, Range const& more)
    {
        curves.push_back(&curve);
        range = range.with(more);
        if (more.span() > 0)
            leastSpan = std::min(leastSpan, more.span());
    }
};

std::vector<Axes> sorted(std::vector<PlotCurve> const& curves)
{
    std::vector<Axes> all;
    for (PlotCurve const& curve : curves) {
        Range const range = rangeOf(curve.values);
        auto place =
            std::ranges::find_if(all, [&](Axes const& axes) { return axes.takes(curve, range); });
        if (place == all.end())
            place = all.insert(all.end(), Axes{curve.unit, {}});
        place->add(curve, range);
    }
    return all;
}

// In letters of the width of most; those of three bytes and more are as wide as two.
std::size_t widthOf(char byte)
{
    auto const first = static_cast<unsigned char>(byte);
    return (first & 0xC0u) == 0x80u ? 0 : first < 0xE0u ? 1 : 2;
}

std::size_t widthOf(std::string_view name)
{
    std::size_t width = 0;
    for (char const byte : name)
        width += widthOf(byte);
    return width;
}

// The end of a name that is too long for its place; the whole of it is seen when pointed at.
std::string shortEnough(std::string const& name, std::size_t most)
{
    std::size_t width = widthOf(name);
    if (width <= most)
        return name;
    std::size_t begin = 0;
    for (; width >= most || widthOf(name[begin]) == 0; ++begin)
        width -= widthOf(name[begin]);
    return "…" + name.substr(begin);
}

// As many names in a row as there is room for.
struct Legend {
    explicit Legend(Axes const& axes)
    {
        for (PlotCurve const* const curve : axes.curves) {
            names.push_back(printable(curve->name));
            if (widthOf(names.back()) > kLetters / kMostCurves - kLineLetters)
                inRow = 3;
        }
    }
    double height() const
    {
        return kLegendHeight + kRowHeight * static_cast<double>((names.size() - 1) / inRow);
    }

    std::string drawn(double top) const
    {
        std::string text;
        double const width = kField.width / static_cast<double>(inRow);
        for (std::size_t i = 0; i < names.size(); ++i) {
            double const x = kField.left + width * static_cast<double>(i % inRow);
            double const y = top + kRowHeight * static_cast<double>(i / inRow);
            text += fmt::format("<path class=\"c{}\" d=\"M{:.1f} {:.1f}h26\"/><text x=\"{:.1f}\" "
                                "y=\"{:.1f}\">{}<title>{}</title></text>",
                                i + 1, x, y, x + 32, y + 4,
                                markupText(shortEnough(names[i], kLetters / inRow - kLineLetters)),
                                markupText(names[i]));
        }
        return text;
    }

    // Across the field, and those that the line in front of a name takes.
    static constexpr std::size_t kLetters = 100, kLineLetters = 5;
    static constexpr double kRowHeight = 18;
    std::size_t inRow = kMostCurves;
    std::vector<std::string> names;
};

std::string drawn(Axes const& axes, std::vector<std::int32_t> const& frames, Axis const& x)
{
    Axis const y = axisOf(axes.range);
    std::string curves, dots, caption;
    int number = 0;
    for (PlotCurve const* const curve : axes.curves) {
        std::vector<double> fractions, values;
        for (std::size_t const i : chosen(curve->values)) {
            fractions.push_back(x.fraction(frames[i]));
            values.push_back(isDrawn(curve->values[i]) ? curve->values[i]
                                                       : std::numeric_limits<double>::quiet_NaN());
        }
        curves += strokes(kField, fractions, values, y, false, ++number, dots);
        caption += (caption.empty() ? "" : ", ") + markupText(printable(curve->name));
    }
    std::string const unit = axes.unit.empty() ? "" : " " + markupText(axes.unit);
    return drawing(kField, caption, marks(kField, x, y, unit), curves, dots);
}

}  // namespace

std::string drawPlot(std::string_view title, std::vector<std::int32_t> const& frames,
                     std::vector<PlotCurve> const& curves)
{
    std::vector<Axes> const all = sorted(curves);
    bool const isOne = frames.size() < 2;
    double const first = frames.empty() ? 0 : frames.front();
    Axis const x{isOne ? first - 1 : first, isOne ? first + 1 : frames.back()};
    std::string content;
    double top = kTitleHeight;
    for (Axes const& axes : all) {
        content += fmt::format("<svg y=\"{}\" width=\"{}\" height=\"{}\">{}</svg>", top,
                               kField.wholeWidth(), kField.wholeHeight(), drawn(axes, frames, x));
        Legend const legend(axes);
        content += legend.drawn(top + kField.wholeHeight() + kLegendHeight / 3);
        top += kField.wholeHeight() + legend.height();
    }
    return fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
        "viewBox=\"0 0 {0} {1}\"><style>{2}</style>"
        "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>"
        "<text class=\"title\" x=\"{3}\" y=\"22\">{4}, over frames</text>{5}</svg>\n",
        kField.wholeWidth(), top, kStyle, kField.left, markupText(printable(title)), content);
}

}  // namespace nodus::host
