// The values of inputs, as drawn graphs show them.
#include "constant_text.h"

#include "labels.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"
#include "nodus/host/result_writer.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace nodus::host {

namespace {

// In lines of four lanes where there are more.
std::string lanesText(Port const& port, std::byte const* bytes, std::set<Spot> const& fed,
                      std::string_view colour)
{
    ValueType const& type = *port.type;
    constexpr std::size_t kInLine = 4;
    std::size_t const inLine = std::min(type.laneNames.size(), kInLine);
    std::string lines;
    bool hasConstant = false;
    for (std::size_t first = 0; first < type.laneNames.size(); first += inLine) {
        std::string line;
        bool isWorthIt = type.id != TypeId::TQS;
        for (std::size_t lane = first; lane < first + inLine; ++lane) {
            bool const isFed =
                fed.contains({port.offset + lane * type.laneSize, type.lane}) ||
                (type.id == TypeId::TQS && fed.contains({port.offset + first * type.laneSize,
                                                         partsOfTqs()[first / kInLine].type}));
            hasConstant = hasConstant || !isFed;
            isWorthIt = isWorthIt || !isFed;
            std::string const own(type.laneNames[lane]);
            line += (lane == first ? "" : ", ") +
                    (isFed ? own.substr(own.find('.') + 1)
                           : valueText(valueType(type.lane), bytes + lane * type.laneSize, {}));
        }
        std::string before =
            type.id == TypeId::TQS ? std::string(partsOfTqs()[first / kInLine].name) + " " : "";
        if (isWorthIt)
            lines += (lines.empty() ? "" : "<BR ALIGN=\"LEFT\"/>") +
                     coloured(before.append("(").append(line).append(")"), colour, 10);
    }
    if (!hasConstant)
        return "";
    return lines.find("<BR") == lines.npos ? lines : lines + "<BR ALIGN=\"LEFT\"/>";
}

}  // namespace

std::string constantText(GraphNode const& node, Port const& port, std::set<Spot> const& fed)
{
    ValueType const& type = *port.type;
    std::byte const* const bytes = node.constants.data() + port.offset;
    auto const known =
        std::ranges::find(node.texts, port.offset, [](auto const& text) { return text.first; });
    std::string const text = known == node.texts.end() ? "" : known->second;
    bool const isStandard = fed.empty() && text == port.standard.text &&
                            (type.id == TypeId::String ||
                             std::memcmp(bytes, port.standard.bytes.data(), type.size) == 0);
    std::string_view const colour = isStandard ? kQuiet : kInk;
    if (type.id == TypeId::String)
        return coloured(shortened(jsonText(text), 40), colour, 10);
    if (type.isScalar())
        return coloured(valueText(type, bytes, {}), colour, 10);
    Value const neutral = neutralValue(type);
    bool const hasIdentity = neutral.bytes != std::array<std::byte, 64>{};
    if (hasIdentity && fed.empty() && std::memcmp(bytes, neutral.bytes.data(), type.size) == 0)
        return coloured("identity", colour, 10);
    return lanesText(port, bytes, fed, colour);
}

}  // namespace nodus::host
