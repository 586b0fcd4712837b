// Draws peers beside kernels: a row for each kernel, a panel for each way of calling, a dot for
// each peer on a logarithmic axis. Right of the line in the middle the kernel is faster.
#include "results.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

namespace nodus::bench {

namespace {

constexpr double kNames = 330, kPanel = 210, kGap = 40, kTop = 92, kRow = 17, kBottom = 44;
constexpr double kLeast = 0.25, kMost = 16;  // dots beyond are drawn at the edge
constexpr char const* kColours[] = {"#0072B2", "#D55E00", "#009E73", "#CC79A7",
                                    "#E69F00", "#56B4E9", "#000000"};

double panelStart(std::size_t way) { return kNames + static_cast<double>(way) * (kPanel + kGap); }

double along(double ratio)
{
    double const clamped = std::clamp(ratio, kLeast, kMost);
    return std::log(clamped / kLeast) / std::log(kMost / kLeast) * kPanel;
}

class Svg {
public:
    Svg(double width, double height)
    {
        print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" "
              "font-family=\"sans-serif\" font-size=\"11\">\n",
              width, height);
        print("<rect width=\"%.0f\" height=\"%.0f\" fill=\"#ffffff\"/>\n", width, height);
    }

    void text(double x, double y, char const* anchor, std::string const& words, int size = 11)
    {
        print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\" font-size=\"%d\">%s</text>\n", x, y,
              anchor, size, words.c_str());
    }
    void line(double x1, double y1, double x2, double y2, char const* colour)
    {
        print("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\"/>\n", x1, y1, x2,
              y2, colour);
    }
    // Hollow where the peer computes something else.
    void dot(double x, double y, char const* colour, bool filled)
    {
        print("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"4\" stroke=\"%s\" fill=\"%s\"/>\n", x, y, colour,
              filled ? colour : "#ffffff");
    }
    std::string finished() { return m_text.str() + "</svg>\n"; }

private:
    template <typename... Values> void print(char const* format, Values... values)
    {
        char text[512];
        std::snprintf(text, sizeof text, format, values...);
        m_text << text;
    }
    std::ostringstream m_text;
};

std::string shortName(std::string name)
{
    if (name.starts_with("Nodus"))
        name.erase(0, 5);
    if (std::size_t const at = name.find("_Solve"); at != std::string::npos)
        name.erase(at, 6);
    return name;
}

}  // namespace

std::string drawn(Results const& results)
{
    std::vector<KernelResult const*> rows;
    std::map<std::string, char const*> colours;
    for (KernelResult const& kernel : results.kernels) {
        if (!kernel.peers.empty())
            rows.push_back(&kernel);
        for (PeerResult const& peer : kernel.peers)
            if (!colours.contains(peer.library))
                colours[peer.library] = kColours[colours.size() % std::size(kColours)];
    }
    double const bottom = kTop + kRow * static_cast<double>(rows.size());
    Svg svg(panelStart(kWayNames.size()), bottom + kBottom);

    svg.text(16, 26, "start", "Time of other libraries over the time of the kernel, same blocks",
             16);
    double x = 20;
    for (auto const& [library, colour] : colours) {
        svg.dot(x, 46, colour, true);
        svg.text(x + 8, 50, "start", library);
        x += 30 + 7 * static_cast<double>(library.size());
    }
    svg.dot(x, 46, "#666666", false);
    svg.text(x + 8, 50, "start", "computes something else");

    auto const middleOf = [](std::size_t row) {
        return kTop + kRow * (static_cast<double>(row) + 0.5);
    };
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t way = 0; way < kWayNames.size(); ++way)
            svg.line(panelStart(way), middleOf(row), panelStart(way) + kPanel, middleOf(row),
                     "#eeeeee");
    for (std::size_t way = 0; way < kWayNames.size(); ++way) {
        double const start = panelStart(way);
        svg.text(start + kPanel / 2, kTop - 20, "middle", kWayNames[way].title, 13);
        for (double tick = kLeast; tick <= kMost; tick *= 2) {
            svg.line(start + along(tick), kTop - 4, start + along(tick), bottom,
                     tick == 1 ? "#000000" : "#dddddd");
            char label[16];
            std::snprintf(label, sizeof label, "%g", tick);
            svg.text(start + along(tick), bottom + 14, "middle", label);
        }
    }
    svg.text(kNames + 1.5 * kPanel + kGap, bottom + 34, "middle",
             "left of 1: the other library is faster; right of 1: the kernel is faster");

    for (std::size_t row = 0; row < rows.size(); ++row) {
        double const y = middleOf(row);
        svg.text(kNames - 12, y + 4, "end", shortName(rows[row]->name));
        for (std::size_t way = 0; way < kWayNames.size(); ++way)
            for (PeerResult const& peer : rows[row]->peers)
                svg.dot(panelStart(way) + along(peer.overKernel[way]), y, colours[peer.library],
                        comparable(peer));
    }
    return svg.finished();
}

}  // namespace nodus::bench
