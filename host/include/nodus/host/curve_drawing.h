// Curves over axes with marks, as SVG: the classes are grid, axis, bars, and c1 to c5 for curves.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// Where the curves are in a drawing, in its own units; labels of the axes stand around it.
struct Field {
    double left = 46, top = 10, width = 362, height = 192, right = 12, bottom = 28;

    constexpr double wholeWidth() const { return left + width + right; }
    constexpr double wholeHeight() const { return top + height + bottom; }
};

// From is less than to; isPi: its numbers are multiples of pi.
struct Axis {
    double from, to;
    bool isPi = false;

    double fraction(double value) const { return (value - from) / (to - from); }
};

// The lines of a grid with their numbers, and the axes where they are within the field.
std::string marks(Field const& field, Axis const& x, Axis const& y, std::string_view yUnit);

// A curve, broken where values are not finite, and where it hasSteps at these. The values are those
// at the fractions of the field's width. Single ones are dots, which are no part of the field: they
// would be cut in half at its edge. number: of the curve, from 1.
std::string strokes(Field const& field, std::vector<double> const& fractions,
                    std::vector<double> const& values, Axis const& y, bool hasSteps, int number,
                    std::string& dots);

// All of it; the caption is markup, curves are cut off at the edges of the field.
std::string drawing(Field const& field, std::string_view caption, std::string_view content,
                    std::string_view curves, std::string_view dots);

}  // namespace nodus::host
