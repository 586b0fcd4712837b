// Labels of drawn graphs, as Graphviz takes them.
#include "labels.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/result_writer.h"

namespace nodus::host {

std::string_view colourOf(ValueType const& type)
{
    switch (type.id) {
    case TypeId::Bool:
        return "#c2410c";
    case TypeId::UInt8:
    case TypeId::Int32:
    case TypeId::UInt32:
        return "#0f766e";
    case TypeId::Float:
    case TypeId::Double:
        return "#2563eb";
    case TypeId::Float2:
    case TypeId::Float3:
    case TypeId::Float4:
    case TypeId::Translation:
        return "#7c3aed";
    case TypeId::Color:
        return "#b45309";
    case TypeId::Quaternion:
        return "#be185d";
    case TypeId::Matrix4x4:
    case TypeId::Mat44Float:
        return "#4d7c0f";
    case TypeId::TQS:
        return "#0e7490";
    case TypeId::String:
        return "#57534e";
    }
    return kInk;
}

std::string escaped(std::string_view text)
{
    std::string safe;
    for (char const c : markupText(printable(text)))
        safe.append(c == '\\' ? 2 : 1, c);
    return safe;
}

std::string quoted(std::string_view text)
{
    std::string between(1, '"');
    return between.append(escaped(text)).append(1, '"');
}

std::string coloured(std::string_view text, std::string_view colour, int size)
{
    return "<FONT COLOR=\"" + std::string(colour) + "\" POINT-SIZE=\"" + std::to_string(size) +
           "\">" + escaped(text) + "</FONT>";
}

std::string cell(std::string const& content, std::string_view attributes)
{
    return "<TD " + std::string(attributes) + ">" + content + "</TD>";
}

std::string typeText(ValueType const& type) { return coloured(type.name, colourOf(type), 9); }

}  // namespace nodus::host
