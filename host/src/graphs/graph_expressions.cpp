// Expressions as inputs: each operator and function becomes a node of the catalogue.
#include "expression.h"
#include "graph_reader.h"

#include "nodus/host/literals.h"
#include "nodus/host/search.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

// What an expression comes to: a source, or bytes that are known.
struct GraphReader::Operand {
    std::optional<Source> source;
    std::array<std::byte, 64> bytes{};

    void give(GraphNode& node, std::size_t offset, ValueType const& type) const
    {
        if (source)
            node.feeds.push_back({offset, &type, *source});
        else
            std::memcpy(node.constants.data() + offset, bytes.data(), type.size);
    }
};

void GraphReader::readExpression(Target const& target, std::string const& text)
{
    constexpr std::size_t kSign = 1;  // behind "="
    try {
        Expression const expression = parseExpression(std::string_view(text).substr(kSign));
        if (auto const operand = compile(target, expression, target.type))
            operand->give(target.node, target.offset, target.type);
    } catch (ExpressionFault const& wrong) {
        fault(target.place, inQuotes(text) + ", column " + std::to_string(wrong.at + kSign + 1) +
                                ": " + wrong.text);
    }
}

std::optional<GraphReader::Operand>
GraphReader::compile(Target const& target, Expression const& expression, ValueType const& type)
{
    if (expression.kind == Expression::Kind::name)
        return compileName(target, expression, type);
    Operand operand;
    if (expression.kind == Expression::Kind::number) {
        // One number stands for all lanes.
        if (!type.isOfNumbers())
            throw ExpressionFault{expression.at, "wants " + std::string(type.name) + ", " +
                                                     expression.text + " is a number"};
        for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
            if (std::string wrong = readNumber(expression.text, valueType(type.lane),
                                               operand.bytes.data() + lane * type.laneSize);
                !wrong.empty())
                throw ExpressionFault{expression.at, wrong};
        return operand;
    }
    NodeType const& function = *findFunction(target, expression, type);
    std::vector<std::optional<Operand>> arguments;
    for (std::size_t i = 0; i < expression.arguments.size(); ++i)
        arguments.push_back(compile(target, expression.arguments[i], *function.inputs[i].type));
    if (std::ranges::any_of(arguments, [](auto const& argument) { return !argument; }))
        return std::nullopt;
    std::size_t const index = makeFor(target, function);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        arguments[i]->give(made(index), function.inputs[i].offset, *function.inputs[i].type);
    operand.source = Source{Source::Kind::node, index, function.outputs.front().offset};
    return operand;
}

std::optional<GraphReader::Operand>
GraphReader::compileName(Target const& target, Expression const& expression, ValueType const& type)
{
    std::string const& name = m_columnNames.emplace_back(expression.text);
    std::string const first = name.substr(0, name.find('.'));
    Place const place{target.place.line,
                      target.place.text + ", column " + std::to_string(expression.at + 2)};
    Operand operand;
    if (m_nodes.contains(first)) {
        operand.source = readFrom(name, type, place);
    } else if (findParameter(first) != nullptr) {
        operand.source = readParameterSource(name, type, place);
    } else if (name == "frame") {
        operand.source = Source{Source::Kind::frame};
        NodeType const* const cast = m_catalogue.find("CastInt32ToFloat");
        if (type.id == TypeId::Float && cast != nullptr) {
            std::size_t const index = makeFor(target, *cast);
            made(index).feeds.push_back({0, cast->inputs.front().type, *operand.source});
            operand.source = Source{Source::Kind::node, index, 0};
        } else if (type.id != TypeId::Int32) {
            throw ExpressionFault{expression.at,
                                  "wants " + std::string(type.name) + ", the frame is Int32"};
        }
    } else {
        bool const mayBeColumn =
            m_surroundings.anyColumn || m_columns.contains(name) || m_nodes.empty();
        bool const hasTable = m_surroundings.columns != nullptr;
        if (hasTable && !mayBeColumn) {
            std::vector<std::string_view> known;
            for (std::string const& column : *m_surroundings.columns)
                known.push_back(column);
            for (GraphNode const& node : m_graph.nodes)
                known.push_back(node.name);
            for (Parameter const& parameter : m_graph.parameters)
                known.push_back(parameter.port.name);
            throw ExpressionFault{expression.at, "there is no node, parameter or column " +
                                                     inQuotes(name) + nearest(name, known, {})};
        }
        operand.source = readColumn(name, type, place);
    }
    return operand.source ? std::optional(operand) : std::nullopt;
}

// What a name stands for, if it stands for a value of one type.
ValueType const* GraphReader::knownType(Expression const& expression) const
{
    if (expression.kind == Expression::Kind::call) {
        // Of an operator: that of its operands.
        for (Expression const& argument : expression.arguments)
            if (ValueType const* const type = knownType(argument))
                return type;
        return nullptr;
    }
    if (expression.kind == Expression::Kind::number)
        return nullptr;
    std::string const& name = expression.text;
    auto const dot = name.find('.');
    if (auto const node = m_nodes.find(std::string_view(name).substr(0, dot));
        node != m_nodes.end()) {
        NodeType const* const type = m_graph.nodes[node->second].type;
        if (type == nullptr || type->outputs.empty())
            return nullptr;
        std::string const rest = dot == name.npos ? "" : name.substr(dot + 1);
        for (Port const& port : type->outputs)
            if (rest == port.name || rest.starts_with(port.name + ".")) {
                auto const piece = findPiece(
                    *port.type, rest == port.name ? "" : rest.substr(port.name.size() + 1));
                return piece ? piece->type : nullptr;
            }
        return rest.empty() ? type->outputs.front().type : nullptr;
    }
    Parameter const* const parameter = findParameter(name.substr(0, dot));
    auto const piece =
        parameter != nullptr
            ? findPiece(*parameter->port.type, dot == name.npos ? "" : name.substr(dot + 1))
            : std::nullopt;
    return piece ? piece->type : nullptr;
}

// The node type of a family that gives what is wanted; of several, the one for the first argument
// whose type is known, else the one that takes what it gives.
NodeType const* GraphReader::findFunction(Target const& target, Expression const& expression,
                                          ValueType const& type)
{
    std::string const name = lower(expression.text);
    Family const* family = nullptr;
    std::vector<std::string_view> names;
    for (Family const& known : m_catalogue.families()) {
        names.push_back(known.name);
        if (lower(known.name) == name)
            family = &known;
    }
    if (family == nullptr)
        throw ExpressionFault{expression.at, "there is no function " + inQuotes(expression.text) +
                                                 nearest(expression.text, names, {})};
    std::size_t const count = expression.arguments.size();
    std::vector<NodeType const*> fitting;
    for (NodeType const* const known : family->nodeTypes)
        if (known->outputs.size() == 1 && known->outputs.front().type->id == type.id &&
            known->inputs.size() == count)
            fitting.push_back(known);
    for (std::size_t i = 0; i < count; ++i)
        if (ValueType const* const given = knownType(expression.arguments[i]);
            given != nullptr && fitting.size() > 1)
            std::erase_if(fitting, [&](NodeType const* known) {
                return known->inputs[i].type->id != given->id;
            });
    if (fitting.empty())
        throw ExpressionFault{expression.at, family->name + " of " + std::to_string(count) +
                                                 (count == 1 ? " value" : " values") +
                                                 " gives no " + std::string(type.name) + " (" +
                                                 target.node.type->name + " wants one)"};
    auto const same = std::ranges::find_if(fitting, [&](NodeType const* known) {
        return std::ranges::all_of(known->inputs,
                                   [&](Port const& port) { return port.type->id == type.id; });
    });
    return same != fitting.end() ? *same : fitting.front();
}

}  // namespace nodus::host
