// Other frames and rows as sources, and windows of several of them, which become nodes.
#include "graph_reader.h"
#include "windows.h"

#include "nodus/host/literals.h"
#include "nodus/host/result_writer.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

constexpr std::int64_t kLongestWindow = 1001;

std::string rangeText()
{
    return "from " + std::to_string(-kFarthest) + " to " + std::to_string(kFarthest);
}

bool isShift(JsonValue const& json)
{
    return json.is(Kind::integer) && json.integer >= -kFarthest && json.integer <= kFarthest;
}

// What goes with a source of that kind.
std::vector<std::string_view> companions(std::string_view kind)
{
    if (kind == "from")
        return {"frame", "frames", "window"};
    if (kind == "column")
        return {"row", "rows", "default", "window"};
    return {};
}

}  // namespace

bool GraphReader::readShift(Target const& target, JsonValue const& json, std::string const& kind,
                            Source& source)
{
    auto const known = companions(kind);
    for (std::size_t i = 0; i < json.items.size(); ++i) {
        std::string const& key = json.keys[i];
        if (key == kind || key == "comment" || std::ranges::find(known, key) != known.end())
            continue;
        fault({json.items[i].line, target.place.text},
              inQuotes(key) + " does not go with " + inQuotes(kind) +
                  (known.empty() ? "" : ", but " + alternatives(known)));
        return false;
    }
    std::string const one = kind == "from" ? "frame" : "row", many = one + "s";
    JsonValue const* const shift = json.member(one);
    if ((json.member(many) == nullptr) != (json.member("window") == nullptr) ||
        (shift != nullptr && json.member(many) != nullptr)) {
        fault(target.place, "a window is " + inQuotes(many) + " with 'window': {" + jsonText(kind) +
                                ": ..., " + jsonText(many) + R"(: [-2, 2], "window": "mean"})");
        return false;
    }
    if (shift != nullptr) {
        if (!isShift(*shift)) {
            fault({shift->line, target.place.text}, inQuotes(one) + " wants a whole number " +
                                                        rangeText() + ", not " + shift->describe());
            return false;
        }
        source.shift = static_cast<std::int32_t>(shift->integer);
    }
    if (JsonValue const* const beyond = json.member("default")) {
        std::string unused;
        auto& bytes = source.beyond.emplace();
        if (std::string wrong = readScalar(*beyond, target.type, bytes.data(), unused);
            !wrong.empty()) {
            fault({beyond->line, target.place.text}, "'default': " + wrong);
            return false;
        }
    }
    return true;
}

void GraphReader::readWindow(Target const& target, JsonValue const& json, std::string const& kind,
                             Source const& source)
{
    std::string const many = kind == "from" ? "frames" : "rows";
    JsonValue const& ends = *json.member(many);
    if (!ends.is(Kind::array) || ends.items.size() != 2 || !isShift(ends.items[0]) ||
        !isShift(ends.items[1]) || ends.items[0].integer > ends.items[1].integer ||
        ends.items[1].integer - ends.items[0].integer >= kLongestWindow) {
        fault({ends.line, target.place.text},
              inQuotes(many) + " wants the first and the last, [-2, 2]: whole numbers " +
                  rangeText() + ", at most " + std::to_string(kLongestWindow) + " of them");
        return;
    }
    JsonValue const& window = *json.member("window");
    if (std::ranges::find(kFolds, window.text, &Fold::name) == kFolds.end()) {
        fault({window.line, target.place.text},
              "'window' wants \"mean\", \"sum\", \"min\" or \"max\", not " + window.describe());
        return;
    }
    if (!target.type.isOfNumbers()) {
        fault(target.place,
              "a " + window.text + " is of numbers, not of " + std::string(target.type.name));
        return;
    }
    auto const first = static_cast<std::int32_t>(ends.items[0].integer);
    auto const last = static_cast<std::int32_t>(ends.items[1].integer);
    ValueType const& lane = valueType(target.type.lane);
    for (std::size_t i = 0; i < target.type.laneNames.size(); ++i) {
        Source piece = source;
        if (kind == "from")
            piece.offset += i * target.type.laneSize;
        foldWindow(target.piece(lane, target.offset + i * target.type.laneSize, target.place),
                   window.text, first, last, piece);
    }
}

void GraphReader::foldWindow(Target const& target, std::string_view operation, std::int32_t first,
                             std::int32_t last, Source source)
{
    auto const nodeType = [&](std::string_view family) {
        std::string const name = std::string(family) + "_" + std::string(target.type.name);
        NodeType const* const type = m_catalogue.find(name);
        if (type == nullptr)
            fault(target.place, "a " + std::string(operation) + " of " +
                                    std::string(target.type.name) + " needs a node type " + name +
                                    ", which there is not");
        return type;
    };
    bool const isMean = operation == "mean";
    // Whole numbers would be cut off.
    if (isMean && target.type.id != TypeId::Float) {
        fault(target.place, "a mean is of Float, not of " + std::string(target.type.name));
        return;
    }
    NodeType const* const fold =
        nodeType(std::ranges::find(kFolds, operation, &Fold::name)->family);
    NodeType const* const divide = isMean ? nodeType("Div") : fold;
    if (fold == nullptr || divide == nullptr)
        return;
    Source result = source;
    result.shift = first;
    auto const combine = [&](NodeType const& type) -> GraphNode& {
        std::size_t const index = makeFor(target, type);
        made(index).feeds.push_back({type.inputs[0].offset, &target.type, result});
        result = {Source::Kind::node, index, type.outputs[0].offset};
        return made(index);
    };
    for (std::int32_t shift = first + 1; shift <= last; ++shift) {
        source.shift = shift;
        combine(*fold).feeds.push_back({fold->inputs[1].offset, &target.type, source});
    }
    if (isMean && first != last) {
        float const count = static_cast<float>(last - first + 1);
        std::memcpy(combine(*divide).constants.data() + divide->inputs[1].offset, &count,
                    sizeof count);
    }
    target.node.feeds.push_back({target.offset, &target.type, result});
}

}  // namespace nodus::host
