// What the headers in both languages have in common: blocks, comments and initialisers.
#include "blocks.h"

#include "modules/load.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"
#include "nodus/host/shortest.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace nodus::blocks {

namespace {

using host::TypeId;
using host::ValueType;

constexpr std::size_t kColumns = 100;

template <typename T> std::string floatingLiteral(std::byte const* bytes, char const* suffix)
{
    T const value = host::load<T>(bytes);
    if (!std::isfinite(value))
        throw host::Fault("a header cannot hold a default that is not finite");
    char digits[host::kNumberRoom];
    std::string text(digits, host::writeShortest(digits, value));
    if (text.find_first_of(".e") == text.npos)
        text += ".0";
    return text + suffix;
}

std::string scalarLiteral(TypeId type, std::byte const* bytes)
{
    switch (type) {
    case TypeId::Float:
        return floatingLiteral<float>(bytes, "f");
    case TypeId::Double:
        return floatingLiteral<double>(bytes, "");
    case TypeId::Int32:
        // The least one has no literal of its own.
        return host::load<std::int32_t>(bytes) == INT32_MIN
                   ? "INT32_MIN"
                   : std::to_string(host::load<std::int32_t>(bytes));
    case TypeId::UInt32:
        return std::to_string(host::load<std::uint32_t>(bytes)) + "u";
    default:
        return std::to_string(host::load<std::uint8_t>(bytes));
    }
}

std::string lanesLiteral(std::byte const* bytes, std::size_t count)
{
    std::string text;
    for (std::size_t lane = 0; lane < count; ++lane)
        text +=
            (text.empty() ? "" : ", ") + floatingLiteral<float>(bytes + lane * sizeof(float), "f");
    return "{" + text + "}";
}

bool isZero(host::Port const& port)
{
    return std::all_of(port.standard.bytes.begin(), port.standard.bytes.end(),
                       [](std::byte byte) { return byte == std::byte{}; });
}

}  // namespace

std::vector<Block> blocksOf(host::NodeType const& type)
{
    std::vector<Block> blocks;
    for (Block const& block :
         {Block{"In", "in", &type.inputs, type.inputExtent},
          Block{"Workspace", "workspace", &type.workspace, type.workspaceExtent},
          Block{"Out", "out", &type.outputs, type.outputExtent}})
        if (!block.ports->empty())
            blocks.push_back(block);
    return blocks;
}

std::vector<std::string> entryPointsOf(host::NodeType const& type)
{
    if (type.workspace.empty())
        return {kernelName(type)};
    return {"Nodus" + type.name + "_Init", kernelName(type)};
}

std::string comment(std::string const& text)
{
    std::string lines, line = "//";
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (line.size() + 1 + word.size() > kColumns) {
            lines += line + "\n";
            line = "//";
        }
        line += " " + word;
    }
    return lines + line + "\n";
}

std::string portComment(host::Port const& port, Block const& block)
{
    std::string text = std::string(port.type->name) + " at " + std::to_string(port.offset);
    if (!port.unit.empty())
        text += ", in " + port.unit;
    if (block.key == "in" && port.type->id != TypeId::String)
        text += isZero(port)
                    ? ", default 0"
                    : ", default " + host::valueText(*port.type, port.standard.bytes.data(), {});
    for (std::size_t i = 0; i < port.choices.size(); ++i)
        text += (i == 0 ? "; " : ", ") + std::to_string(port.choices[i].value) + " " +
                port.choices[i].name;
    return text;
}

std::string initializer(host::Port const& port, Language language)
{
    ValueType const& type = *port.type;
    std::byte const* const bytes = port.standard.bytes.data();
    if (type.id == TypeId::String && !port.standard.text.empty())
        throw host::Fault("a header cannot hold the default of " + port.name + ", a text");
    if (language == Language::cpp && isZero(port))
        return "{}";
    if (isZero(port) && (!type.isScalar() || type.id == TypeId::String))
        return "{0}";
    switch (type.id) {
    case TypeId::Matrix4x4: {
        std::string rows;
        for (std::size_t row = 0; row < 4; ++row)
            rows += (row == 0 ? "" : ", ") + lanesLiteral(bytes + row * 16, 4);
        return "{{" + rows + "}}";
    }
    case TypeId::TQS:
        return "{" + lanesLiteral(bytes, 4) + ", " + lanesLiteral(bytes + 16, 4) + ", " +
               lanesLiteral(bytes + 32, 4) + "}";
    case TypeId::Mat44Float:
        return "{" + lanesLiteral(bytes, 16) + "}";
    default:
        break;
    }
    if (!type.isScalar())
        return lanesLiteral(bytes, type.laneNames.size());
    std::string const literal = scalarLiteral(type.id, bytes);
    return language == Language::cpp ? "{" + literal + "}" : literal;
}

}  // namespace nodus::blocks
