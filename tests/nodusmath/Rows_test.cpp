// Kernels by rows: values in, bits out. rows/README.md explains how a row is written.
#include "host/fixtures.h"
#include "support/block.h"
#include "support/text_files.h"

#include "nodus/String.h"
#include "nodus/host/literals.h"
#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

using namespace fixtures;
using nodus::test::Block;

namespace {

// Kernels that no row can hold: their values come from the C library of the machine.
constexpr char const* kTestedByCode[] = {
    "{Sin,Cos,Tan,ASin,ACos,ATan,SinCos,Exp,Ln,Log10,Pow,Sqrt}_{Float,Double}",
    "LogValueString",
};

// A row that is written wrongly: never left out in silence.
struct Mistake : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Row {
    std::string file;
    int line;
    std::string text;
};

std::string trimmed(std::string const& text)
{
    auto const first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Splits where the separator stands outside of brackets and quotes.
std::vector<std::string> split(std::string const& text, char separator)
{
    std::vector<std::string> parts(1);
    bool isQuoted = false;
    int depth = 0;
    for (char const c : text) {
        isQuoted ^= c == '"';
        if (!isQuoted && std::strchr("[{(", c) != nullptr)
            ++depth;
        if (!isQuoted && std::strchr("]})", c) != nullptr)
            --depth;
        if (c == separator && depth == 0 && !isQuoted)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    if (depth != 0 || isQuoted)
        throw Mistake("brackets or quotes do not close");
    for (std::string& part : parts)
        part = trimmed(part);
    return parts;
}

std::string inner(std::string const& text) { return text.substr(1, text.size() - 2); }

// A node type, and which name of the row's first braces it came from.
struct Named {
    std::string name;
    std::size_t choice;
};

std::vector<Named> expanded(std::string const& names)
{
    auto const open = names.find('{'), close = names.find('}');
    if (open == names.npos)
        return {{names, 0}};
    if (close == names.npos)
        throw Mistake("braces do not close");
    std::vector<Named> all;
    auto const alternatives = split(names.substr(open + 1, close - open - 1), ',');
    for (std::size_t i = 0; i < alternatives.size(); ++i)
        for (Named const& rest : expanded(names.substr(close + 1)))
            all.push_back({names.substr(0, open) + alternatives[i] + rest.name, i});
    return all;
}

std::vector<Row> readRows(std::filesystem::path const& path)
{
    std::ifstream file(path);
    std::vector<Row> rows;
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        if (text.starts_with('#') || trimmed(text).empty())
            continue;
        if (text.starts_with(' ') && !rows.empty())
            rows.back().text += text;
        else
            rows.push_back({path.string(), line, text});
    }
    return rows;
}

template <typename Number> void store(Number number, std::byte* to)
{
    std::memcpy(to, &number, sizeof number);
}

void readLane(std::string const& text, ValueType const& type, std::byte* to)
{
    std::string const number = text == "true" ? "1" : text == "false" ? "0" : text;
    bool const isFloat = type.id == TypeId::Float, isDouble = type.id == TypeId::Double;
    bool const isPattern = number.starts_with('#') && (isFloat || isDouble);
    char const* const from = number.c_str() + isPattern;
    char* end = nullptr;
    if (isPattern || !(isFloat || isDouble)) {
        long long const whole = isPattern ? static_cast<long long>(std::strtoull(from, &end, 16))
                                          : std::strtoll(from, &end, 0);
        long long const count = type.size < 8 ? 1LL << 8 * type.size : 0;
        long long const lowest = type.id == TypeId::Int32 ? -count / 2 : 0;
        if (count != 0 && (whole < lowest || whole >= lowest + count))
            throw Mistake(text + " is outside " + std::string(type.name));
        std::memcpy(to, &whole, type.size);
    } else if (isFloat) {
        store(std::strtof(from, &end), to);
    } else {
        store(std::strtod(from, &end), to);
    }
    if (end == from || *end != '\0')
        throw Mistake("'" + text + "' is no " + std::string(type.name));
}

// A text for each lane of the port. One value stands for all lanes; of "a/b" the lane of that
// number takes b, the others a; a tolerance behind the brackets is one for each lane.
std::vector<std::string> lanesOf(std::string const& text, ValueType const& type, std::size_t widest,
                                 std::size_t odd)
{
    auto const sides = split(text, '/');
    if (sides.size() > 2)
        throw Mistake("two sides at most: " + text);
    std::vector<std::string> lanes;
    std::size_t const count = type.laneNames.size();
    for (std::size_t lane = 0; lane < count; ++lane) {
        std::string const& side = sides[sides.size() == 2 && lane == odd];
        if (!side.starts_with('[')) {
            lanes.push_back(side);
            continue;
        }
        auto const end = side.find(']');
        auto words = split(side.substr(1, end - 1), ' ');
        std::erase(words, "");
        if (words.size() != count && words.size() != std::max(widest, count))
            throw Mistake(side + " has not the lanes of " + std::string(type.name));
        lanes.push_back(words[lane] + side.substr(end + 1));
    }
    return lanes;
}

std::string shown(ValueType const& type, std::byte const* bytes)
{
    std::uint64_t pattern = 0;
    std::memcpy(&pattern, bytes, type.size);
    char text[32];
    std::snprintf(text, sizeof text, " (#%0*lX)", static_cast<int>(2 * type.size), pattern);
    return valueText(type, bytes, "") + text;
}

template <typename Number> Number load(std::byte const* from)
{
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
}
double number(ValueType const& type, std::byte const* bytes)
{
    return type.id == TypeId::Float ? double{load<float>(bytes)} : load<double>(bytes);
}

bool isWanted(ValueType const& type, std::byte const* is, std::string const& text)
{
    auto const mark = std::min(text.find('~'), text.size());
    std::string const value = text.substr(0, mark);
    if (value == "_")
        return true;
    std::byte should[8], tolerance[8];
    readLane(value, type, should);
    readLane(mark < text.size() ? text.substr(mark + 1) : "0", valueType(TypeId::Double),
             tolerance);
    if (std::memcmp(is, should, type.size) == 0)
        return true;
    if (type.id != TypeId::Float && type.id != TypeId::Double)
        return false;
    if (value == "nan")
        return std::isnan(number(type, is));
    return mark < text.size() &&
           std::abs(number(type, is) - number(type, should)) <= load<double>(tolerance);
}

struct Listener : nodus::runtime::LogService {
    std::vector<std::string> messages;
    void message(char const* text) override { messages.push_back('"' + std::string(text) + '"'); }
};

// One row, taken apart: KERNELS[@FRAME] INPUTS = OUTPUTS : WHY
struct Parsed {
    std::string kernels, why;
    std::int32_t frame = 0;
    std::vector<std::string> inputs, outputs;

    explicit Parsed(std::string const& text)
    {
        auto const colon = text.rfind(" : ");
        auto const sides = split(text.substr(0, colon), '=');
        auto const end = text.find(' ');
        if (colon == text.npos || sides.size() != 2)
            throw Mistake("a row is KERNEL INPUTS = OUTPUTS : WHY");
        kernels = text.substr(0, end);
        if (auto const at = kernels.find('@'); at != kernels.npos) {
            readLane(kernels.substr(at + 1), valueType(TypeId::Int32),
                     reinterpret_cast<std::byte*>(&frame));
            kernels.resize(at);
        }
        inputs = split(sides[0].substr(end), ',');
        outputs = split(sides[1], ',');
        why = trimmed(text.substr(colon + 3));
    }
};

// The texts of a block's String ports, where the block has them.
class Texts {
public:
    ~Texts()
    {
        for (nodus::String* const text : m_texts)
            text->~String();
    }
    void put(std::byte* at, std::string const& quoted)
    {
        m_texts.push_back(new (at) nodus::String(inner(quoted)));
    }

private:
    std::vector<nodus::String*> m_texts;
};

// Everything that is wrong with what the kernel does, odd being the lane that differs.
std::string faultOf(NodeType const& type, Parsed const& row, std::vector<std::string> outputs,
                    std::size_t widest, std::size_t odd)
{
    Block in(type.inputExtent), workspace(type.workspaceExtent), out(type.outputExtent);
    Texts texts;
    for (std::size_t port = 0; port < type.inputs.size(); ++port) {
        ValueType const& portType = *type.inputs[port].type;
        std::byte* const at = in.data() + type.inputs[port].offset;
        if (portType.id == TypeId::String) {
            texts.put(at, row.inputs[port]);
            continue;
        }
        auto const lanes = lanesOf(row.inputs[port], portType, widest, odd);
        for (std::size_t lane = 0; lane < lanes.size(); ++lane)
            readLane(lanes[lane], valueType(portType.lane), at + lane * portType.laneSize);
    }
    auto const inBefore = in.bytes();
    auto outAllowed = out.bytes();
    Listener listener;
    nodus::runtime::LocalServiceTable services;
    services.log = &listener;
    {
        nodus::runtime::EvaluationScope const scope(row.frame, &services);
        if (type.init != nullptr) {
            type.init(in.data(), workspace.data());
            type.solveWithWorkspace(in.data(), workspace.data(), out.data());
        } else {
            type.solve(in.data(), out.data());
        }
    }
    if (in.bytes() != inBefore)
        return "wrote to its input block";
    for (std::size_t port = 0; port < type.outputs.size(); ++port) {
        Port const& output = type.outputs[port];
        if (outputs[port] == "untouched")
            continue;
        ValueType const& laneType = valueType(output.type->lane);
        auto const wanted = lanesOf(outputs[port], *output.type, widest, odd);
        for (std::size_t lane = 0; lane < wanted.size(); ++lane) {
            std::size_t const offset = output.offset + lane * laneType.size;
            std::byte const* const at = out.data() + offset;
            if (!isWanted(laneType, at, wanted[lane]))
                return output.name + " " + std::string(output.type->laneNames[lane]) + " is " +
                       shown(laneType, at) + ", should be " + wanted[lane];
            std::memcpy(outAllowed.data() + out.offset() + offset, at, laneType.size);
        }
    }
    if (out.bytes() != outAllowed)
        return "wrote around its outputs, or to what it should not touch";
    outputs.erase(outputs.begin(), outputs.begin() + static_cast<long>(type.outputs.size()));
    if (listener.messages != outputs)
        return "says " + testing::PrintToString(listener.messages);
    return {};
}

void expectRow(Row const& line)
{
    Parsed const row(line.text);
    auto const names = expanded(row.kernels);
    std::vector<NodeType const*> types;
    std::size_t widest = 0;
    for (Named const& named : names) {
        types.push_back(catalogue().find(named.name));
        if (types.back() == nullptr)
            throw Mistake("there is no " + named.name);
        if (names.size() > 1)
            for (Port const& port : types.back()->inputs)
                widest = std::max(widest, port.type->laneNames.size());
    }
    bool const hasOdd = std::ranges::any_of(
        row.inputs, [](std::string const& input) { return split(input, '/').size() > 1; });
    for (std::size_t i = 0; i < types.size(); ++i) {
        NodeType const& type = *types[i];
        auto outputs = row.outputs;
        for (std::string& output : outputs)
            if (output.starts_with('{')) {
                auto const each = split(inner(output), ',');
                if (each.size() != names.back().choice + 1)
                    throw Mistake("not one result for each name: " + output);
                output = each[names[i].choice];
            }
        if (row.inputs.size() != type.inputs.size() || outputs.size() < type.outputs.size())
            throw Mistake("wrong number of ports for " + type.name);
        std::size_t const lanes = type.inputs[0].type->laneNames.size();
        for (std::size_t odd = hasOdd ? 0 : lanes; odd <= lanes; ++odd) {
            auto expected = outputs;
            for (std::string& output : expected) {
                auto const sides = split(output, '/');
                if (sides.size() != (hasOdd ? 2 : 1))
                    throw Mistake("two results where an input has two sides, else one: " + output);
                output = sides[hasOdd && odd < lanes];
            }
            std::string const fault = faultOf(type, row, expected, widest, odd);
            if (!fault.empty())
                ADD_FAILURE_AT(line.file.c_str(), line.line)
                    << type.name << (odd < lanes ? ", odd lane " + std::to_string(odd) : "") << ": "
                    << row.why << ": " << fault;
        }
    }
}

class Rows : public support::TextFiles {};

}  // namespace

TEST_P(Rows, GiveTheBitsOfTheRows)
{
    std::srand(1);  // what noise draws its tables from
    auto const rows = readRows(GetParam());
    EXPECT_FALSE(rows.empty());
    for (Row const& row : rows) {
        try {
            expectRow(row);
        } catch (std::exception const& mistake) {
            ADD_FAILURE_AT(row.file.c_str(), row.line) << "not a row: " << mistake.what();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, Rows, Rows::in(ROWS_FOLDER), Rows::name);

TEST(Kernels, NoneIsForgotten)
{
    std::set<std::string> tested;
    auto const add = [&tested](std::string const& names) {
        for (Named const& named : expanded(names))
            tested.insert(named.name);
    };
    for (auto const& file : std::filesystem::directory_iterator(ROWS_FOLDER))
        if (file.path().extension() == ".txt")
            for (Row const& row : readRows(file.path()))
                add(Parsed(row.text).kernels);
    for (char const* const names : kTestedByCode)
        add(names);
    for (NodeType const& type : catalogue().nodeTypes())
        EXPECT_TRUE(tested.contains(type.name)) << type.name << " has no test";
}
