// Graphs of the reference: written as text, and evaluated by the kernels of the module.
#include "graphs.h"

#include "nodus/String.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "nodus/host/image.h"
#include "nodus/host/literals.h"
#include "nodus/host/output_file.h"
#include "nodus/host/result_writer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <numeric>

namespace nodus::reference {

namespace {

using Kind = JsonValue::Kind;

constexpr std::size_t kLineWidth = 84;

std::string broken(JsonValue const& value, std::size_t depth)
{
    std::string const margin(2 * depth, ' ');
    std::string line = inlineJson(value);
    bool const isOuter = value.is(Kind::object) && depth < 2;
    if (!isOuter && (margin.size() + line.size() <= kLineWidth || value.items.empty()))
        return line;
    bool const isObject = value.is(Kind::object);
    std::string text = isObject ? "{" : "[";
    for (std::size_t i = 0; i < value.items.size(); ++i) {
        text += (i == 0 ? "\n" : ",\n") + margin + "  ";
        if (isObject)
            text += host::jsonText(value.keys[i]) + ": ";
        text += broken(value.items[i], depth + 1);
    }
    return text + "\n" + margin + (isObject ? "}" : "]");
}

host::Plan planOf(host::Catalogue const& catalogue, JsonValue const& graph,
                  std::string const& origin, host::GraphSurroundings const& surroundings)
{
    host::Diagnostics diagnostics;
    host::Graph const checked =
        host::parseGraph(graphText(graph), origin, catalogue, surroundings, diagnostics);
    diagnostics.throwIfAny();
    return host::compile(checked);
}

double numberAt(host::ValueType const& type, std::byte const* bytes)
{
    auto const load = [bytes]<typename T>(T value) {
        std::memcpy(&value, bytes, sizeof value);
        return static_cast<double>(value);
    };
    switch (type.lane) {
    case host::TypeId::Double:
        return load(double{});
    case host::TypeId::Int32:
        return load(std::int32_t{});
    case host::TypeId::UInt32:
        return load(std::uint32_t{});
    case host::TypeId::Bool:
    case host::TypeId::UInt8:
        return load(std::uint8_t{});
    default:
        return load(float{});
    }
}

void writeX(host::ValueType const& type, double x, std::string const& origin, std::byte* to)
{
    float const narrow = static_cast<float>(x);
    if (type.id == host::TypeId::Double)
        std::memcpy(to, &x, sizeof x);
    else if (type.id == host::TypeId::Float)
        std::memcpy(to, &narrow, sizeof narrow);
    else
        throw host::Fault(origin + ": the column x goes to a " + std::string(type.name) +
                          "; it is for Float and Double");
}

// A value for people. The sign of a computed NaN is not promised, so it is not shown.
std::string shown(host::PlanOutput const& output, std::byte const* bytes)
{
    if (output.type->id == host::TypeId::String)
        return output.name + " = " + std::string(*reinterpret_cast<String const*>(bytes));
    std::string text = host::valueText(*output.type, bytes, {});
    for (std::size_t at = 0; (at = text.find("-nan", at)) != text.npos;)
        text.erase(at, 1);
    return output.name + " = " + text;
}

// A file in memory, gone with this object.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(memfd_create("picture", MFD_CLOEXEC))
    {
        if (m_descriptor < 0)
            throw host::Fault("no memory for a picture: " + host::systemError(errno));
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    int descriptor() const { return m_descriptor; }

    std::string content() const
    {
        std::string bytes(static_cast<std::size_t>(lseek(m_descriptor, 0, SEEK_END)), '\0');
        if (pread(m_descriptor, bytes.data(), bytes.size(), 0) !=
            static_cast<ssize_t>(bytes.size()))
            throw host::Fault("a picture cannot be read back: " + host::systemError(errno));
        return bytes;
    }

private:
    int m_descriptor;
};

}  // namespace

JsonValue textValue(std::string_view text)
{
    JsonValue value(Kind::text);
    value.text = text;
    return value;
}

JsonValue listValue(std::vector<JsonValue> items)
{
    JsonValue value(Kind::array);
    value.items = std::move(items);
    return value;
}

JsonValue objectValue(std::vector<std::pair<std::string, JsonValue>>&& members)
{
    JsonValue value(Kind::object);
    for (auto& [key, item] : members) {
        value.keys.push_back(std::move(key));
        value.items.push_back(std::move(item));
    }
    return value;
}

JsonValue nodeValue(std::string_view type, JsonValue const* inputs)
{
    JsonValue node = objectValue({{"type", textValue(type)}});
    if (inputs != nullptr) {
        node.keys.emplace_back("inputs");
        node.items.push_back(*inputs);
    }
    return node;
}

JsonValue graphValue(JsonValue nodes, std::vector<std::string> const& outputs)
{
    std::vector<JsonValue> names;
    names.reserve(outputs.size());
    for (std::string const& output : outputs)
        names.push_back(textValue(output));
    return objectValue({{"nodes", std::move(nodes)}, {"outputs", listValue(std::move(names))}});
}

std::string inlineJson(JsonValue const& value)
{
    switch (value.kind) {
    case Kind::null:
        return "null";
    case Kind::boolean:
        return value.boolean ? "true" : "false";
    case Kind::integer:
        return std::to_string(value.integer);
    case Kind::real:
        return value.text;
    case Kind::text:
        return host::jsonText(value.text);
    case Kind::array:
    case Kind::object:
        break;
    }
    bool const isObject = value.is(Kind::object);
    if (value.items.empty())
        return isObject ? "{}" : "[]";
    std::string text;
    for (std::size_t i = 0; i < value.items.size(); ++i) {
        text += i == 0 ? "" : ", ";
        if (isObject)
            text += host::jsonText(value.keys[i]) + ": ";
        text += inlineJson(value.items[i]);
    }
    return isObject ? "{ " + text + " }" : "[" + text + "]";
}

std::string graphText(JsonValue const& graph) { return broken(graph, 0) + "\n"; }

std::string evaluated(host::Catalogue const& catalogue, JsonValue const& graph,
                      std::string const& origin, std::size_t frames)
{
    host::Plan const plan = planOf(catalogue, graph, origin, {});
    host::FrameLog log;
    host::Evaluator evaluator(plan, &log);
    std::string text;
    for (std::size_t i = 0; i < frames; ++i) {
        auto const frame = static_cast<std::int32_t>(i);
        evaluator.evaluate(std::span(&frame, 1));
        if (frames > 1)
            text += "frame " + std::to_string(frame) + ": ";
        std::string_view const separator = frames > 1 ? ", " : "\n";
        for (host::PlanOutput const& output : plan.outputs)
            text += (&output == plan.outputs.data() ? "" : std::string(separator)) +
                    shown(output, evaluator.at(output.place, 0));
        text += "\n";
    }
    host::TextBuffer lines;
    log.takeLines(lines);
    return text + std::string(lines.view());
}

std::vector<std::vector<double>> sampled(host::Catalogue const& catalogue, JsonValue const& graph,
                                         std::string const& origin, std::vector<double> const& xs)
{
    std::vector<std::string> const columns{"x"};
    host::Plan const plan = planOf(catalogue, graph, origin, {"x", &columns, false});
    host::Evaluator evaluator(plan, nullptr);
    std::vector<std::vector<double>> values(plan.outputs.size());
    std::vector<std::int32_t> frames(plan.framesPerBlock);
    for (std::size_t begin = 0; begin < xs.size(); begin += frames.size()) {
        std::size_t const count = std::min(frames.size(), xs.size() - begin);
        std::iota(frames.begin(), frames.end(), static_cast<std::int32_t>(begin));
        for (host::PlanSource const& source : plan.sources)
            for (std::size_t i = 0; i < count && source.kind == host::Source::Kind::column; ++i)
                writeX(*source.type, xs[begin + i], origin, evaluator.at(source.place, i));
        evaluator.evaluate(std::span(frames.data(), count));
        for (std::size_t curve = 0; curve < values.size(); ++curve) {
            host::PlanOutput const& output = plan.outputs[curve];
            for (std::size_t i = 0; i < count; ++i)
                values[curve].push_back(numberAt(*output.type, evaluator.at(output.place, i)));
        }
    }
    return values;
}

std::string painted(host::Catalogue const& catalogue, JsonValue const& graph,
                    std::string const& origin, Shades const& shades)
{
    host::Plan const plan = planOf(catalogue, graph, origin, {"", nullptr, true});
    MemoryFile const memory;
    auto file = host::OutputFile::onDescriptor(memory.descriptor(), origin);
    host::renderImage(
        plan, {.size = {shades.width, shades.height}, .map = {shades.black, shades.white}}, file);
    file.commit();
    return memory.content();
}

}  // namespace nodus::reference
