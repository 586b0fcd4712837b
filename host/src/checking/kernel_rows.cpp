// Kernels by rows: values in, bits out; and the ports that the compiled functions tell.
#include "nodus/host/kernel_rows.h"

#include "nodus/String.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"
#include "nodus/runtime/EvaluationScope.h"
#include "nodus/runtime/LocalServiceTable.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace nodus::host {

namespace {

constexpr char kShape[] = "wants KERNELS INPUTS = OUTPUTS : WHY";
constexpr std::byte kUntouched{0xA5};

using Words = std::vector<std::string>;
using Mistake = std::runtime_error;  // of who wrote a row: never left out in silence

struct Row {
    int line;
    std::string text;
};

std::vector<Row> readRows(std::string const& path)
{
    std::ifstream file(path);
    if (!file)
        throw Fault("cannot read " + path + ": " + systemError(errno));
    std::vector<Row> rows;
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        if (text.starts_with(' ') && !rows.empty())
            rows.back().text += text;
        else if (!text.empty() && !text.starts_with('#'))
            rows.push_back({line, text});
    }
    return rows;
}

// Splits where the separator stands outside of brackets and quotes; blanks around a part go.
Words split(std::string const& text, char separator)
{
    Words parts(1);
    bool isQuoted = false;
    int depth = 0;
    for (char const c : text) {
        isQuoted ^= c == '"';
        depth += !isQuoted && (c == '[' || c == '{');
        depth -= !isQuoted && (c == ']' || c == '}');
        if (c == separator && depth == 0 && !isQuoted)
            parts.emplace_back();
        else if (c != ' ' || !parts.back().empty())
            parts.back() += c;
    }
    if (depth != 0 || isQuoted)
        throw Mistake("brackets or quotes do not close");
    for (std::string& part : parts)
        part.erase(part.find_last_not_of(' ') + 1);
    return parts;
}

// Node types by name, each with the place of its alternative in the first braces.
std::vector<std::pair<std::string, std::size_t>> expanded(std::string const& names)
{
    auto const open = names.find('{'), close = names.find('}');
    if (open == names.npos || close == names.npos)
        return {{names, 0}};
    std::vector<std::pair<std::string, std::size_t>> all;
    auto const alternatives = split(names.substr(open + 1, close - open - 1), ',');
    for (std::size_t i = 0; i < alternatives.size(); ++i)
        for (auto const& [rest, choice] : expanded(names.substr(close + 1)))
            all.emplace_back(names.substr(0, open) + alternatives[i] + rest, i);
    return all;
}

// Writes one lane, or a String.
void readLane(std::string const& text, ValueType const& type, std::byte* to)
{
    auto const store = [to](auto number) { std::memcpy(to, &number, sizeof number); };
    char* end = nullptr;
    std::string fault = text.empty() ? "is empty" : "";
    if (text.starts_with('"') != (type.id == TypeId::String)) {
        fault = type.id == TypeId::String ? "without quotes" : "but a String";
    } else if (type.id == TypeId::String) {
        *reinterpret_cast<String*>(to) = String(text.substr(1, text.size() - 2));
    } else if (text.starts_with('#')) {
        auto const pattern = std::strtoull(text.c_str() + 1, &end, 16);
        std::memcpy(to, &pattern, type.size);
    } else if (type.id == TypeId::Float) {
        store(std::strtof(text.c_str(), &end));
    } else if (type.id == TypeId::Double) {
        store(std::strtod(text.c_str(), &end));
    } else {
        fault = readNumber(text, type.id == TypeId::Bool ? valueType(TypeId::UInt8) : type, to);
    }
    if (!fault.empty() || (end != nullptr && *end != '\0'))
        throw Mistake("'" + text + "' is no " + std::string(type.name) + " " + fault);
}

// A text for each lane of a port. One value stands for all lanes; of "a/b" the lane of that number
// takes b, the others a; a tolerance behind the brackets is one for each lane.
Words lanesOf(std::string const& text, ValueType const& type, std::size_t widest, std::size_t odd)
{
    auto const sides = split(text, '/');
    Words lanes;
    std::size_t const count = type.laneNames.size();
    for (std::size_t lane = 0; lane < count; ++lane) {
        std::string const& side = sides[sides.size() > 1 && lane == odd];
        auto const end = side.find(']');
        auto words = end == side.npos ? Words(count, side) : split(side.substr(1, end - 1), ' ');
        std::erase(words, "");
        if (words.size() != count && words.size() != std::max(widest, count))
            throw Mistake(side + " has not the lanes of " + std::string(type.name));
        lanes.push_back(words[lane] + (end == side.npos ? "" : side.substr(end + 1)));
    }
    return lanes;
}

std::string textOf(ValueType const& type, std::byte const* at)
{
    if (type.id != TypeId::String)
        return {};
    return static_cast<std::string const&>(*reinterpret_cast<String const*>(at));
}

bool isWanted(ValueType const& type, std::byte const* is, std::string const& text)
{
    auto const number = [&](auto* bytes) { return std::stod(valueText(type, bytes, "")); };
    auto const parts = split(text, '~');
    if (text == "_")
        return true;
    if (type.id == TypeId::String)
        return text == '"' + textOf(type, is) + '"';
    std::byte should[8];
    readLane(text == "untouched" ? "#A5A5A5A5A5A5A5A5" : parts[0], type, should);
    if (std::memcmp(is, should, type.size) == 0)
        return true;
    if (parts.size() > 1)
        return std::abs(number(is) - number(should)) <= std::stod(parts[1]);
    return parts[0] == "nan" && std::isnan(number(is));
}

struct Listener : nodus::runtime::LogService {
    Words messages;
    void message(char const* text) override { messages.push_back('"' + std::string(text) + '"'); }
};

// A block of a node; its String ports hold references until its end.
class Block {
public:
    Block(std::vector<Port> const& ports, std::size_t extent, std::byte filling)
        : m_ports(ports), m_chunks(extent / sizeof(Chunk) + 1)
    {
        std::memset(bytes(), std::to_integer<int>(filling), m_chunks.size() * sizeof(Chunk));
        for (Port const& port : m_ports)
            if (port.type->id == TypeId::String)
                ::new (bytes() + port.offset) String();
    }
    ~Block()
    {
        for (Port const& port : m_ports)
            if (port.type->id == TypeId::String)
                reinterpret_cast<String*>(bytes() + port.offset)->~String();
    }
    Block(Block const&) = delete;
    Block& operator=(Block const&) = delete;

    std::byte* bytes() { return m_chunks.front().bytes; }

private:
    struct alignas(16) Chunk {
        std::byte bytes[16];
    };
    std::vector<Port> const& m_ports;
    std::vector<Chunk> m_chunks;
};

// One call of a row: everything that is wrong with what the kernel does.
std::string faultOf(NodeType const& type, std::int32_t frame, Words const& inputs,
                    Words const& outputs, std::size_t widest, std::size_t odd)
{
    auto const forLanes = [=](auto& ports, Block& block, Words const& texts, auto visit) {
        for (std::size_t port = 0; port < ports.size(); ++port) {
            ValueType const& whole = *ports[port].type;
            auto const lanes = lanesOf(texts[port], whole, widest, odd);
            for (std::size_t lane = 0; lane < lanes.size(); ++lane)
                visit(lanes[lane], valueType(whole.lane),
                      block.bytes() + ports[port].offset + lane * whole.laneSize);
        }
    };
    if (inputs.size() != type.inputs.size() || outputs.size() < type.outputs.size())
        throw Mistake("wrong number of ports for " + type.name);
    Block in(type.inputs, type.inputExtent, {}), out(type.outputs, type.outputExtent, kUntouched);
    Block workspace(type.workspace, type.workspaceExtent, {});
    forLanes(type.inputs, in, inputs, readLane);
    Listener listener;
    runtime::LocalServiceTable services;
    services.log = &listener;
    runtime::EvaluationScope const scope(frame, &services);
    if (type.init == nullptr) {
        type.solve(in.bytes(), out.bytes());
    } else {
        type.init(in.bytes(), workspace.bytes());
        type.solveWithWorkspace(in.bytes(), workspace.bytes(), out.bytes());
    }
    std::string faults;
    auto const compare = [&](std::string const& text, ValueType const& lane, std::byte* at) {
        if (!isWanted(lane, at, text))
            faults += " is " + valueText(lane, at, textOf(lane, at)) + ", should be " + text + ";";
    };
    forLanes(type.outputs, out, outputs, compare);
    if (listener.messages != Words(outputs.begin() + std::ssize(type.outputs), outputs.end()))
        faults += fmt::format(" says {};", fmt::join(listener.messages, ", "));
    return faults;
}

// KERNELS[@FRAME] INPUTS = OUTPUTS : WHY
void tryRow(Row const& row, std::string const& place, Catalogue const& catalogue,
            RowsReport& report)
{
    auto const blank = row.text.find(' '), colon = row.text.rfind(" : ");
    if (blank == row.text.npos || colon == row.text.npos || colon < blank)
        throw Mistake(kShape);
    auto const sides = split(row.text.substr(blank, colon - blank), '=');
    if (sides.size() != 2)
        throw Mistake(kShape);
    auto const kernels = split(row.text.substr(0, blank), '@');
    auto const calls = split(sides[0], ';'), results = split(sides[1], ';');
    if (results.size() != 1 && results.size() != calls.size())
        throw Mistake("not one result for each call");
    bool const hasOdd = sides[0].find('/') != std::string::npos;
    auto const names = expanded(kernels[0]);
    std::size_t widest = 0;
    for (auto const& [name, choice] : names) {
        NodeType const* const type = catalogue.find(name);
        if (type == nullptr)
            throw Mistake("there is no " + name + catalogue.suggestion(name));
        report.tried.insert(type->name);
        for (Port const& port : type->inputs)
            widest = std::max(names.size() > 1 ? port.type->laneNames.size() : 0, widest);
    }
    std::int32_t const frame = kernels.size() > 1 ? std::stoi(kernels[1]) : 0;
    for (auto const& [name, choice] : names) {
        NodeType const& type = *catalogue.find(name);
        std::size_t const lanes =
            type.inputs.empty() ? 0 : type.inputs.front().type->laneNames.size();
        for (std::size_t call = 0; call < calls.size(); ++call)
            for (std::size_t odd = hasOdd ? 0 : lanes; odd <= lanes; ++odd) {
                auto outputs = split(results[results.size() > 1 ? call : 0], ',');
                for (std::string& output : outputs) {
                    if (auto const end = output.rfind('}'); output.starts_with('{'))
                        output = split(output.substr(1, end - 1), ',').at(choice) +
                                 output.substr(end + 1);
                    if (hasOdd)
                        output = split(output, '/').at(odd < lanes);
                }
                ++report.calls;
                auto const faults =
                    faultOf(type, frame, split(calls[call], ','), outputs, widest, odd);
                if (!faults.empty())
                    report.faults.push_back(fmt::format(
                        "{}: {} {}{}:{}{}", place, name, calls[call], row.text.substr(colon),
                        faults, odd < lanes ? fmt::format(" odd lane {}", odd) : ""));
            }
    }
}

std::string namesOf(std::vector<Port> const& ports)
{
    std::string text;
    for (Port const& port : ports)
        text += (text.empty() ? "" : ", ") + std::string(port.type->name);
    return text;
}

}  // namespace

void tryRows(Catalogue const& catalogue, std::string const& path, RowsReport& report)
{
    std::size_t const before = report.rows;
    for (Row const& row : readRows(path)) {
        std::string const place = path + ":" + std::to_string(row.line);
        ++report.rows;
        try {
            tryRow(row, place, catalogue, report);
        } catch (std::exception const& mistake) {
            report.faults.push_back(place + ": not a row: " + mistake.what());
        }
    }
    if (report.rows == before)
        report.faults.push_back(path + ": has no rows");
}

std::vector<std::string> portFaults(Catalogue const& catalogue, std::string const& described)
{
    std::unique_ptr<void, int (*)(void*)> const library(
        ::dlopen(std::filesystem::absolute(described).c_str(), RTLD_NOW | RTLD_LOCAL), &::dlclose);
    if (!library)
        throw Fault("cannot load " + described + ": " + ::dlerror());
    std::vector<std::string> faults;
    for (NodeType const& type : catalogue.nodeTypes()) {
        auto const compare = [&](char const* suffix, auto function, std::string const& expected,
                                 auto... unused) {
            std::string const name = "Nodus" + type.name + suffix;
            std::string told = "nothing: it has no such function";
            if (void* const entry = ::dlsym(library.get(), name.c_str()))
                reinterpret_cast<decltype(function)>(entry)(nullptr, unused..., &told);
            if (told != expected)
                faults.push_back(
                    fmt::format("{}: the catalogue has {}, the function {}", name, expected, told));
        };
        std::string const inputs = namesOf(type.inputs) + " -> ";
        std::string const ports = inputs + namesOf(type.outputs);
        if (type.init == nullptr) {
            compare("_Solve", type.solve, ports);
        } else {
            compare("_Init", type.init, inputs);
            compare("_Solve", type.solveWithWorkspace, ports, nullptr);
        }
    }
    return faults;
}

}  // namespace nodus::host
