// From the text of a row to the values that a plan reads.
#include "nodus/host/table.h"

#include "csv_fields.h"
#include "nodus/host/literals.h"
#include "npy_records.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <numbers>

namespace nodus::host {

namespace {

// The common case without a detour; everything else is looked at again with more patience.
template <typename Real> bool readPlain(FieldWalk& walk, std::byte* to)
{
    Real value;
    if (!walk.nextNumber(value))
        return false;
    std::memcpy(to, &value, sizeof value);
    return true;
}

// Where rounding to the type is the last step.
template <typename Real> void storeAs(double value, std::byte* to)
{
    Real const narrow = static_cast<Real>(value);
    std::memcpy(to, &narrow, sizeof narrow);
}

// A number in degrees, as radians. What is wrong, or nothing.
std::string readDegrees(std::string_view text, ValueType const& type, std::byte* to)
{
    if (type.id != TypeId::Float && type.id != TypeId::Double)
        return "is an angle, for Float or Double, not for " + std::string(type.name);
    double degrees = 0;
    std::string wrong =
        readNumber(text, valueType(TypeId::Double), reinterpret_cast<std::byte*>(&degrees));
    double const radians = degrees * (std::numbers::pi / 180);
    if (type.id == TypeId::Float)
        storeAs<float>(radians, to);
    else
        storeAs<double>(radians, to);
    return wrong;
}

bool readPlainNumber(FieldWalk& walk, TypeId type, std::byte* to)
{
    return (type == TypeId::Float && readPlain<float>(walk, to)) ||
           (type == TypeId::Double && readPlain<double>(walk, to));
}

}  // namespace

TableParser::TableParser(TableReader const& reader, Plan const& plan)
    : m_name(reader.name()), m_columns(reader.columns()), m_fields(reader.fields())
{
    std::map<std::int32_t, std::vector<Target>> byShift{{0, {}}};
    for (PlanSource const& source : plan.sources)
        if (source.kind == Source::Kind::column)
            byShift[source.shift].push_back(
                {source.column, source.type, source.place, source.beyond,
                 !reader.inDegrees().empty() && reader.inDegrees()[source.column]});
    for (auto& [shift, targets] : byShift) {
        m_own = shift == 0 ? m_shifts.size() : m_own;
        std::ranges::stable_sort(targets, {}, &Target::column);
        m_shifts.push_back(shift);
        m_targets.push_back(std::move(targets));
    }
}

void TableParser::parse(std::string_view row, std::uint64_t line, Evaluator& evaluator,
                        std::size_t i, Diagnostics& diagnostics, std::size_t shift) const
{
    std::vector<Target> const& targets = m_targets[shift];
    if (m_fields != nullptr)
        return parseRecord(row.data(), line, evaluator, i, diagnostics, targets);
    FieldWalk walk(row);
    std::string scratch;
    std::size_t column = 0;
    for (auto target = targets.begin(); target != targets.end(); ++column) {
        column += walk.skip(target->column - column, scratch);
        if (column != target->column)
            break;
        bool const isOnly = target + 1 == targets.end() || target[1].column != column;
        if (isOnly && !target->inDegrees &&
            readPlainNumber(walk, target->type->id, evaluator.at(target->place, i))) {
            ++target;
            continue;
        }
        if (!walk.next(scratch))
            break;
        for (; target != targets.end() && target->column == column; ++target)
            store(walk.field(), *target, line, evaluator.at(target->place, i), diagnostics);
    }
    column += walk.skip(SIZE_MAX, scratch);
    if (walk.isBroken())
        diagnostics.add(where(line) + ": a quoted field does not end, or goes on behind its quote");
    else if (column != m_columns.size())
        diagnostics.add(where(line) + ": " + std::to_string(column) +
                        (column == 1 ? " field" : " fields") + ", the header has " +
                        std::to_string(m_columns.size()));
}

void TableParser::storeDefaults(Evaluator& evaluator, std::size_t i, std::size_t shift) const
{
    for (Target const& target : m_targets[shift])
        if (target.beyond)
            std::memcpy(evaluator.at(target.place, i), target.beyond->data(), target.type->size);
}

std::string TableParser::where(std::uint64_t line) const
{
    return m_name + (m_fields != nullptr ? ": row " : ":") + std::to_string(line);
}

void TableParser::parseRecord(char const* record, std::uint64_t row, Evaluator& evaluator,
                              std::size_t i, Diagnostics& diagnostics,
                              std::vector<Target> const& targets) const
{
    for (Target const& target : targets) {
        NpyField const& field = (*m_fields)[target.column];
        std::byte* const to = evaluator.at(target.place, i);
        // What is wrong with a number is told as of its text.
        if (!storeNumber(record, field, target.type->id, to))
            store(numberText(record, field), target, row, to, diagnostics);
    }
}

void TableParser::store(std::string_view field, Target const& target, std::uint64_t line,
                        std::byte* to, Diagnostics& diagnostics) const
{
    std::string wrong;
    if (target.type->id == TypeId::Bool) {
        bool const isTrue = field == "true" || field == "1";
        if (!isTrue && field != "false" && field != "0")
            wrong = "'" + std::string(field.substr(0, 40)) + "' is not true, false, 1 or 0";
        *to = static_cast<std::byte>(isTrue);
    } else {
        if (field.starts_with('+') && !field.starts_with("+-"))
            field.remove_prefix(1);
        wrong = target.inDegrees ? readDegrees(field, *target.type, to)
                                 : readNumber(field, *target.type, to);
    }
    if (!wrong.empty())
        diagnostics.add(where(line) + ": column '" + m_columns[target.column] + "': " + wrong);
}

}  // namespace nodus::host
