// A graph file for a skeleton: joints placed by their parents, turned by the columns.
#include "nodus/host/bvh.h"

#include "nodus/host/result_writer.h"

#include <algorithm>
#include <fmt/format.h>

namespace nodus::host {

namespace {

// Of nodes and parameters, in which no dots may be. Blanks are in no joint's name, so that what is
// made of one with a word behind it is like no other.
std::string plainName(std::string name)
{
    std::ranges::replace(name, '.', '_');
    return name;
}

std::string column(BvhJoint const& joint, char kind, std::size_t axis)
{
    return "{ \"column\": " + jsonText(joint.name + "." + kind + "xyz"[axis]) + " }";
}

// Lane by lane: the column of that axis, or 0.
std::string lanes(BvhJoint const& joint, char kind, std::vector<std::size_t> const& axes)
{
    std::string text;
    for (std::size_t axis = 0; axis < 3; ++axis)
        text +=
            (std::ranges::find(axes, axis) != axes.end() ? column(joint, kind, axis) : "0") + ", ";
    return "[" + text + "0]";
}

// The file's first rotation is applied last; the catalogue's names begin with what is applied
// first.
std::string orderOf(std::vector<std::size_t> const& rotations)
{
    std::string order;
    for (std::size_t const axis : rotations)
        order.insert(0, 1, "XYZ"[axis]);
    for (char const axis : {'X', 'Y', 'Z'})
        if (order.find(axis) == order.npos)
            order += axis;
    return order;
}

}  // namespace

std::string graphOfSkeleton(BvhSkeleton const& skeleton, std::string const& name)
{
    std::vector<std::string> names, parameters, nodes, outputs;
    auto const addNode = [&](std::string const& node, std::string const& type,
                             std::string const& inputs) {
        nodes.push_back(fmt::format("    {}: {{ \"type\": \"{}\", \"inputs\": {{ {} }} }}",
                                    jsonText(node), type, inputs));
    };
    for (BvhJoint const& joint : skeleton.joints) {
        bool const isRoot = joint.parent == SIZE_MAX, isEnd = joint.name.empty();
        std::string const parent = isRoot ? "" : names[joint.parent];
        std::string own = isEnd ? parent + " end" : plainName(joint.name);
        // A joint may have several end sites.
        for (std::size_t i = 2; std::ranges::find(names, own) != names.end(); ++i)
            own = parent + " end " + std::to_string(i);
        names.push_back(own);
        std::string const offset = own + " offset";
        parameters.push_back(fmt::format(
            "    {}: {{ \"type\": \"{}\", \"value\": [{}, {}, {}, 0] }}", jsonText(offset),
            isEnd ? "Float4" : "Translation", joint.offset[0], joint.offset[1], joint.offset[2]));
        std::string place = "{ \"parameter\": " + jsonText(offset) + " }";
        std::string const from = "{ \"from\": " + jsonText(parent) + " }";
        if (isEnd) {
            addNode(own, "TransformPositionWithTQS",
                    fmt::format(R"("position": {}, "transform": {})", place, from));
            outputs.push_back(own);
            continue;
        }
        if (!joint.positions.empty()) {
            addNode(own + " place", "Add_Translation",
                    "\"a\": " + place + ", \"b\": " + lanes(joint, 't', joint.positions));
            place = "{ \"from\": " + jsonText(own + " place") + " }";
        }
        std::string turn;
        if (!joint.rotations.empty()) {
            addNode(own + " turn", "EulerToQuaternion",
                    "\"angles\": " + lanes(joint, 'r', joint.rotations) + ", \"order\": \"" +
                        orderOf(joint.rotations) + "\"");
            turn = ", \"q\": { \"from\": " + jsonText(own + " turn") + " }";
        }
        addNode(own, "TransformTQS",
                fmt::format(R"({}"b": {{ "t": {}{} }})", isRoot ? "" : "\"a\": " + from + ", ",
                            place, turn));
        outputs.push_back(own + ".result.t");
        outputs.push_back(own + ".result.q");
    }
    std::vector<std::string> listed;
    listed.reserve(outputs.size());
    for (std::string const& output : outputs)
        listed.push_back("    " + jsonText(output));
    return fmt::format("{{\n  \"description\": {},\n  \"parameters\": {{\n{}\n  }},\n"
                       "  \"nodes\": {{\n{}\n  }},\n  \"outputs\": [\n{}\n  ]\n}}\n",
                       jsonText("The skeleton of " + name +
                                " in the world: where each joint is, "
                                "and how it is turned."),
                       fmt::join(parameters, ",\n"), fmt::join(nodes, ",\n"),
                       fmt::join(listed, ",\n"));
}

}  // namespace nodus::host
