// nodus call: one node, once.
#include "command_line.h"
#include "environment.h"

#include "nodus/String.h"
#include "nodus/host/diagnostics.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "nodus/host/literals.h"
#include "nodus/host/output_file.h"

#include <unistd.h>

#include <cstring>
#include <limits>

namespace nodus::tools {

namespace {

struct CallOptions {
    std::string type;
    std::vector<std::string> values;
    std::int32_t frame = 0;
};

void setInput(host::GraphNode& node, std::string const& argument)
{
    auto const equals = argument.find('=');
    std::string const name = argument.substr(0, equals);
    host::Port const* const port = node.type->findInput(name);
    if (equals == argument.npos || port == nullptr) {
        std::vector<std::string_view> names;
        for (host::Port const& known : node.type->inputs)
            names.push_back(known.name);
        std::string const known = " has " + host::alternatives(names);
        throw host::Fault(
            equals == argument.npos
                ? host::inQuotes(argument) + " is no PORT=VALUE; " + node.type->name + known
                : node.type->name + " has no input " + host::inQuotes(name) + "; it" + known);
    }
    host::Value value = port->standard;
    std::string const wrong = host::readArgument(argument.substr(equals + 1), *port, value);
    if (!wrong.empty())
        throw host::Fault("input '" + name + "': " + wrong);
    std::memcpy(node.constants.data() + port->offset, value.bytes.data(), port->type->size);
    if (port->type->id == host::TypeId::String)
        host::setText(node, port->offset, value.text);
}

int call(CallOptions const& options, Shared const& shared)
{
    Environment const environment(shared);
    host::NodeType const* const type = environment.catalogue().find(options.type);
    if (type == nullptr)
        throw host::Fault("unknown node type '" + options.type + "'" +
                          environment.catalogue().suggestion(options.type));

    host::Graph graph;
    host::GraphNode& node = graph.nodes.emplace_back(host::makeNode("call", *type));
    host::Diagnostics diagnostics;
    for (std::string const& argument : options.values)
        diagnostics.gather([&] { setInput(node, argument); });
    diagnostics.throwIfAny();
    for (host::Port const& port : type->outputs)
        graph.outputs.push_back({port.name, 0, port.offset, port.type});
    graph.order = {0};

    host::Plan const plan = host::compile(graph, 1);
    host::FrameLog log;
    host::Evaluator evaluator(plan, &log);
    evaluator.evaluate(std::span(&options.frame, 1));

    host::TextBuffer lines;
    log.takeLines(lines);
    auto messages = host::OutputFile::onDescriptor(STDERR_FILENO, "standard error");
    // The result is what was asked for.
    messages.outliveReader();
    messages.write(lines.view());
    messages.commit();
    std::string text;
    for (host::PlanOutput const& output : plan.outputs) {
        std::byte const* const bytes = evaluator.at(output.place, 0);
        std::string const shown = output.type->id == host::TypeId::String
                                      ? *reinterpret_cast<String const*>(bytes)
                                      : std::string();
        text += output.name + " = " + host::valueText(*output.type, bytes, shown) + "\n";
    }
    print(text);
    return 0;
}

}  // namespace

Command addCall(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("call", "Evaluate one node once");
    auto const options = std::make_shared<CallOptions>();
    command
        ->add_option("TYPE", options->type,
                     "A node type (Add_Float3) or a kernel (NodusAdd_Float3_Solve).")
        ->required();
    command->add_option(
        "PORT=VALUE", options->values,
        "The inputs: a number, true or false, a text, lanes as 1,2,3, or JSON; where the port has\n"
        "a unit or named choices, 90deg or XYZ. What is not given has its default.");
    command->add_option("--frame", options->frame, "The frame that the node sees. Without it: 0.")
        ->type_name("N")
        ->check(numberFrom(std::numeric_limits<std::int32_t>::min(),
                           std::numeric_limits<std::int32_t>::max()));
    command->footer(
        "Outputs go to standard output, messages of logging nodes to standard error.\n\n"
        "Examples:\n  nodus call Add_Float3 a=1,2,3 b=10,20,30\n"
        "  nodus call LogValueFloat value=2.5 prefix=\"speed \"\n\n"
        "Exit status:\n"
        "  0  the outputs are printed\n"
        "  2  there is no such node type or port, or a value is none of the port's");
    return {command, [options, &shared] { return call(*options, shared); }};
}

}  // namespace nodus::tools
