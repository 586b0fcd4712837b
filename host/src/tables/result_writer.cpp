// Formatting results. What a line is made of is settled beforehand, lane by lane.
#include "nodus/host/result_writer.h"

#include "modules/load.h"
#include "nodus/String.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "npy_header.h"

#include <cmath>
#include <filesystem>
#include <limits>

namespace nodus::host {

namespace {

// Every NaN is the same one: its sign says nothing and may differ between equal results.
template <typename Real> void appendBits(std::byte const* from, TextBuffer& to)
{
    Real value = load<Real>(from);
    if (std::isnan(value))
        value = std::numeric_limits<Real>::quiet_NaN();
    to.appendUnchecked({reinterpret_cast<char const*>(&value), sizeof value});
}

std::string laneName(PlanOutput const& output, std::string_view lane)
{
    return output.name + (lane.empty() ? "" : ".") + std::string(lane);
}

}  // namespace

ResultFormat resultFormatOf(std::string const& path)
{
    std::string const extension = std::filesystem::path(path).extension().string();
    if (extension == ".csv" || isStandardStream(path))
        return ResultFormat::csv;
    if (extension == ".jsonl")
        return ResultFormat::jsonLines;
    if (extension == ".npy")
        return ResultFormat::npy;
    if (extension == ".npz")
        return ResultFormat::npz;
    throw Fault(path + ": results are written as .csv, .jsonl, .npy or .npz");
}

std::string csvField(std::string_view text)
{
    if (text.find_first_of(",\"\r\n") == text.npos)
        return std::string(text);
    std::string quoted = "\"";
    for (char const c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

std::string jsonText(std::string_view text)
{
    constexpr char kHex[] = "0123456789abcdef";
    std::string quoted = "\"";
    for (char const c : text) {
        auto const code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (quoted += '\\') += c;
        else if (c == '\n')
            quoted += "\\n";
        else if (c == '\t')
            quoted += "\\t";
        else if (c == '\r')
            quoted += "\\r";
        else if (code < 0x20)
            ((quoted += "\\u00") += kHex[code >> 4]) += kHex[code & 15];
        else
            quoted += c;
    }
    return quoted + '"';
}

std::string markupText(std::string_view text)
{
    std::string safe;
    for (char const c : text)
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += c;
        }
    return safe;
}

ResultWriter::ResultWriter(Plan const& plan, ResultFormat format) : m_format(format)
{
    bool const isCsv = format == ResultFormat::csv;
    m_header = isCsv ? "frame" : "";
    m_columns.push_back({"frame", TypeId::Int32});
    m_start = isCsv ? "" : "{\"frame\":";
    for (PlanOutput const& output : plan.outputs)
        addCells(output);
    m_header += isCsv ? "\n" : "";
    m_end += isCsv ? "\n" : "}\n";
    m_fixedSize = m_start.size() + m_end.size() + kNumberRoom;
    for (Cell const& cell : m_cells)
        m_fixedSize += cell.before.size() + kNumberRoom;
}

ResultWriter::~ResultWriter() = default;

std::string ResultWriter::header(std::uint64_t rows) const
{
    return m_format == ResultFormat::npy ? recordsHeader(m_columns, rows) : m_header;
}

void ResultWriter::addCells(PlanOutput const& output)
{
    ValueType const& type = *output.type;
    bool const isTqs = type.id == TypeId::TQS;
    bool const isArray = m_format == ResultFormat::npy || m_format == ResultFormat::npz;
    if (isArray && type.id == TypeId::String)
        throw Fault("output '" + output.name + "' is a text, for which " +
                    (m_format == ResultFormat::npy ? "an .npy" : "an .npz") + " file has no room");
    for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane) {
        std::string_view const name = type.laneNames[lane];
        Cell cell{output.place, type.lane, ""};
        cell.place.offset += static_cast<std::uint32_t>(lane * type.laneSize);
        if (m_format == ResultFormat::csv) {
            m_header += "," + csvField(laneName(output, name));
            cell.before = ",";
        } else if (isArray) {
            if (m_format == ResultFormat::npy)
                m_columns.push_back({laneName(output, name), type.lane});
            else if (lane == 0)
                m_columns.push_back({output.name, type.lane, type.laneNames.size()});
        } else if (lane == 0) {
            cell.before = m_end + "," + jsonText(output.name) + ":";
            cell.before += isTqs ? "{\"t\":[" : type.isScalar() ? "" : "[";
            m_end = isTqs ? "]}" : type.isScalar() ? "" : "]";
        } else if (isTqs && lane % 4 == 0) {
            cell.before = "],\"" + std::string(name.substr(0, 1)) + "\":[";
        } else {
            cell.before = ",";
        }
        m_cells.push_back(std::move(cell));
    }
}

void ResultWriter::appendText(std::string_view text, TextBuffer& to) const
{
    to.append(m_format == ResultFormat::csv ? csvField(text) : jsonText(text));
    to.reserve(m_fixedSize);
}

template <typename Real> void ResultWriter::appendReal(Real value, TextBuffer& to) const
{
    if (std::isfinite(value)) [[likely]]
        return to.appendNumberUnchecked(value);
    // The sign of a NaN says nothing and may differ between equal results.
    std::string_view const word = std::isnan(value) ? "\"nan\""
                                  : value > 0       ? "\"inf\""
                                                    : "\"-inf\"";
    to.appendUnchecked(m_format == ResultFormat::csv ? word.substr(1, word.size() - 2) : word);
}

void ResultWriter::append(Evaluator const& evaluator, std::size_t i, std::int32_t frame,
                          TextBuffer& to) const
{
    to.reserve(m_fixedSize);
    if (m_format == ResultFormat::npy || m_format == ResultFormat::npz)
        return appendRecord(evaluator, i, frame, to);
    to.appendUnchecked(m_start);
    to.appendNumberUnchecked(frame);
    for (Cell const& cell : m_cells) {
        if (cell.before.size() == 1)
            to.appendUnchecked(cell.before.front());
        else
            to.appendUnchecked(cell.before);
        std::byte const* const from = evaluator.at(cell.place, i);
        switch (cell.type) {
        case TypeId::Float:
            appendReal(load<float>(from), to);
            break;
        case TypeId::Double:
            appendReal(load<double>(from), to);
            break;
        case TypeId::Int32:
            to.appendNumberUnchecked(load<std::int32_t>(from));
            break;
        case TypeId::UInt32:
            to.appendNumberUnchecked(load<std::uint32_t>(from));
            break;
        case TypeId::UInt8:
            to.appendNumberUnchecked(unsigned{load<std::uint8_t>(from)});
            break;
        case TypeId::Bool:
            to.appendUnchecked(load<std::uint8_t>(from) != 0 ? std::string_view("true") : "false");
            break;
        default: {
            std::string const& text = *reinterpret_cast<String const*>(from);
            appendText({text.data(), text.size()}, to);
        }
        }
    }
    to.appendUnchecked(m_end);
}

void ResultWriter::appendRecord(Evaluator const& evaluator, std::size_t i, std::int32_t frame,
                                TextBuffer& to) const
{
    to.appendUnchecked({reinterpret_cast<char const*>(&frame), sizeof frame});
    for (Cell const& cell : m_cells) {
        std::byte const* const from = evaluator.at(cell.place, i);
        if (cell.type == TypeId::Float)
            appendBits<float>(from, to);
        else if (cell.type == TypeId::Double)
            appendBits<double>(from, to);
        else if (cell.type == TypeId::Bool)
            to.appendUnchecked(load<std::uint8_t>(from) != 0 ? '\1' : '\0');
        else
            to.appendUnchecked({reinterpret_cast<char const*>(from), valueType(cell.type).size});
    }
}

}  // namespace nodus::host
