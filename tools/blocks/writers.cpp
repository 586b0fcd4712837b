// The three files: a header for C, one for C++, and data for all others.
#include "blocks.h"

#include "modules/load.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <iterator>

namespace nodus::blocks {

namespace {

using host::NodeType;
using host::Port;
using host::TypeId;
using Json = nlohmann::ordered_json;

std::string docOf(NodeType const& type)
{
    std::string text = type.name + ": " + type.family->doc;
    return type.family->edges.empty() ? text : text + " " + type.family->edges;
}

std::string upper(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// "void const* in, void* workspace": as an entry point takes its blocks.
std::string parametersOf(NodeType const& type, std::string const& entry)
{
    if (type.workspace.empty())
        return "void const* in, void* out";
    return entry.ends_with("_Init") ? "void const* in, void* workspace"
                                    : "void const* in, void* workspace, void* out";
}

std::string prototypes(host::Catalogue const& catalogue, std::string const& qualifier)
{
    std::string text;
    for (NodeType const& type : catalogue.nodeTypes())
        for (std::string const& entry : entryPointsOf(type))
            text += fmt::format("void {}({}){};\n", entry, parametersOf(type, entry), qualifier);
    return text;
}

void appendCBlock(std::string& text, NodeType const& type, Block const& block)
{
    std::string const name = fmt::format("Nodus{}_{}", type.name, block.role);
    text += "typedef struct " + name + " {\n";
    for (Port const& port : *block.ports)
        text += fmt::format("    {}Nodus{} {};  // {}\n", port.offset == 0 ? "alignas(16) " : "",
                            port.type->name, port.name, portComment(port, block));
    text += "} " + name + ";\n";
    for (Port const& port : *block.ports)
        text += fmt::format("NODUS_PORT({}, {}, {}, {});\n", name, port.name, port.offset,
                            port.type->size);
    if (block.key != "in")
        return;
    text += "#define " + name + "_STANDARD {";
    for (Port const& port : *block.ports)
        text += fmt::format("{}.{} = {}", &port == &block.ports->front() ? "" : ", ", port.name,
                            initializer(port, Language::c));
    text += "}\n";
}

void appendCppBlock(std::string& text, Block const& block)
{
    text += fmt::format("    struct {} {{\n", block.role);
    for (Port const& port : *block.ports)
        text += fmt::format("        {}{} {}{};  // {}\n", port.offset == 0 ? "alignas(16) " : "",
                            port.type->name, port.name,
                            block.key == "in" ? initializer(port, Language::cpp) : "{}",
                            portComment(port, block));
    text += "    };\n";
}

// "In const& in, Out& out", and with "&in, &out" what is handed on.
std::string typedEntry(NodeType const& type, std::string const& entry)
{
    std::string parameters, arguments;
    for (std::string_view const block : {"in", "workspace", "out"}) {
        if (parametersOf(type, entry).find(std::string("* ") + std::string(block)) ==
            std::string::npos)
            continue;
        bool const isThere = std::ranges::any_of(
            blocksOf(type), [&](Block const& each) { return each.key == block; });
        std::string name(block);
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        if (isThere)
            parameters += (parameters.empty() ? "" : ", ") + name +
                          (block == "in" ? " const& " : "& ") + std::string(block);
        arguments += (arguments.empty() ? "" : ", ") +
                     (isThere ? "&" + std::string(block) : std::string("nullptr"));
    }
    return fmt::format("    static void {}({}) noexcept {{ {}({}); }}\n",
                       entry.ends_with("_Init") ? "init" : "solve", parameters, entry, arguments);
}

// A value as JSON has it: a number, a boolean, a text, or the lanes in memory order.
Json valueOf(Port const& port)
{
    auto const lane = [&](std::size_t index) -> Json {
        std::byte const* const from = port.standard.bytes.data() + index * port.type->laneSize;
        switch (port.type->lane) {
        case TypeId::Bool:
            return host::load<std::uint8_t>(from) != 0;
        case TypeId::UInt8:
            return host::load<std::uint8_t>(from);
        case TypeId::Int32:
            return host::load<std::int32_t>(from);
        case TypeId::UInt32:
            return host::load<std::uint32_t>(from);
        case TypeId::Double:
            return host::load<double>(from);
        case TypeId::String:
            return port.standard.text;
        default:
            return host::load<float>(from);
        }
    };
    if (port.type->isScalar())
        return lane(0);
    Json lanes = Json::array();
    for (std::size_t i = 0; i < port.type->laneNames.size(); ++i)
        lanes.push_back(lane(i));
    return lanes;
}

Json blockAsJson(Block const& block)
{
    Json ports = Json::array();
    for (Port const& port : *block.ports) {
        Json entry{{"name", port.name},
                   {"type", port.type->name},
                   {"offset", port.offset},
                   {"size", port.type->size}};
        if (!port.unit.empty())
            entry["unit"] = port.unit;
        if (block.key == "in")
            entry["default"] = valueOf(port);
        for (host::Choice const& choice : port.choices)
            entry["choices"].push_back({{"value", choice.value}, {"name", choice.name}});
        ports.push_back(entry);
    }
    return {{"size", block.extent}, {"alignment", 16}, {"ports", ports}};
}

}  // namespace

std::string cHeader(host::Catalogue const& catalogue, std::string const& module)
{
    std::string const guard = upper(module) + "_BLOCKS_H";
    std::string text =
        comment(
            "The blocks of every kernel of " + module +
            " for hosts in C; written from its catalogue. Blocks are structures that start at "
            "a multiple of 16; X_In_STANDARD initialises an input block as a graph does that "
            "gives no input. The bytes of a NodusString are never copied (<nodus/runtime.h>).") +
        fmt::format("#ifndef {0}\n#define {0}\n\n#include <nodus/port_values.h>\n\n", guard) +
        "#define NODUS_PORT(block, port, offset, size) \\\n"
        "    static_assert(offsetof(block, port) == offset && sizeof(((block*)0)->port) == size, "
        "\\\n"
        "                  #block \".\" #port)\n";
    for (NodeType const& type : catalogue.nodeTypes()) {
        text += "\n" + comment(docOf(type));
        for (Block const& block : blocksOf(type))
            appendCBlock(text, type, block);
    }
    return text + "\n#undef NODUS_PORT\n\n#ifdef __cplusplus\n" +
           "#define NODUS_NOEXCEPT noexcept\nextern \"C\" {\n#else\n#define "
           "NODUS_NOEXCEPT\n#endif\n\n" +
           prototypes(catalogue, " NODUS_NOEXCEPT") +
           "\n#undef NODUS_NOEXCEPT\n#ifdef __cplusplus\n}\n#endif\n\n#endif\n";
}

std::string cppHeader(host::Catalogue const& catalogue, std::string const& module)
{
    std::string text =
        comment("The blocks of every kernel of " + module +
                " for hosts in C++; written from its catalogue. Each node type has its blocks, "
                "whose inputs have their standard values, the names of its entry points, and "
                "functions that call these in a host which links the module.") +
        "#pragma once\n\n#include <nodusmath/values.h>\n\n#include <cstddef>\n#include "
        "<cstdint>\n\n"
        "extern \"C\" {\n" +
        prototypes(catalogue, " noexcept") + "}\n\nnamespace " + module + "::blocks {\n\n" +
        (module == "nodusmath" ? "" : "using namespace nodusmath;\n\n");
    for (NodeType const& type : catalogue.nodeTypes()) {
        text += comment(docOf(type)) + "struct " + type.name + " {\n";
        for (Block const& block : blocksOf(type))
            appendCppBlock(text, block);
        for (std::string const& entry : entryPointsOf(type))
            text += fmt::format("    static constexpr char {}[] = \"{}\";\n",
                                entry.ends_with("_Init") ? "kInit" : "kSolve", entry);
        for (std::string const& entry : entryPointsOf(type))
            text += typedEntry(type, entry);
        text += "};\n";
        for (Block const& block : blocksOf(type))
            for (Port const& port : *block.ports)
                text += fmt::format("static_assert(offsetof({0}::{1}, {2}) == {3} && "
                                    "sizeof({0}::{1}::{2}) == {4});\n",
                                    type.name, block.role, port.name, port.offset, port.type->size);
        text += "\n";
    }
    return text + "}  // namespace " + module + "::blocks\n";
}

std::string json(host::Catalogue const& catalogue, std::string const& module)
{
    Json types = Json::object(), kernels = Json::object();
    for (host::ValueType const& type : host::valueTypes()) {
        Json entry{{"size", type.size}, {"alignment", type.alignment}};
        if (!type.isScalar()) {
            entry["lane"] = host::valueType(type.lane).name;
            entry["lanes"] = type.laneNames;
        }
        types[std::string(type.name)] = entry;
    }
    for (NodeType const& type : catalogue.nodeTypes()) {
        Json entry{{"doc", type.family->doc}, {"entryPoints", entryPointsOf(type)}};
        for (Block const& block : blocksOf(type))
            entry[std::string(block.key)] = blockAsJson(block);
        kernels[type.name] = entry;
    }
    return Json{{"module", module}, {"types", types}, {"kernels", kernels}}.dump(1) + "\n";
}

}  // namespace nodus::blocks
