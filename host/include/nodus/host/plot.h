// A picture of results over frames.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

struct PlotCurve {
    std::string name, unit;
    std::vector<double> values;  // one a frame; where they are not finite the curve is broken
};

// An SVG of the curves over the frames, which rise. Those of one unit whose ranges are alike share
// axes, up to five; each axes have a legend. Of many frames, the least and the greatest value of
// each stretch are drawn.
std::string drawPlot(std::string_view title, std::vector<std::int32_t> const& frames,
                     std::vector<PlotCurve> const& curves);

}  // namespace nodus::host
