// nodus list: what node types there are.
#include "environment.h"

#include "nodus/host/diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace nodus::tools {

namespace {

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool matches(host::Family const& family, std::string const& filter)
{
    auto const has = [&](std::string const& text) { return lower(text).find(filter) != text.npos; };
    return has(family.name) || has(family.group) || has(family.doc) ||
           std::ranges::any_of(family.nodeTypes,
                               [&](host::NodeType const* type) { return has(type->name); });
}

std::string entry(host::Family const& family)
{
    std::string types;
    for (host::NodeType const* const type : family.nodeTypes)
        types += (types.empty() ? "" : " ") + type->suffix;
    std::string text = fmt::format("  {:<28} {}\n", family.name, family.doc);
    return types.empty() ? text : text + fmt::format("  {:<28}   {}\n", "", types);
}

int list(std::string const& filter, Shared const& shared)
{
    Environment const environment(shared);
    std::vector<std::string> groups;
    for (host::Family const& family : environment.catalogue().families())
        if (matches(family, lower(filter)) &&
            std::ranges::find(groups, family.group) == groups.end())
            groups.push_back(family.group);
    if (groups.empty())
        throw host::Fault("no node type matches '" + filter + "'");
    std::string text;
    for (std::string const& group : groups) {
        text += (text.empty() ? "" : "\n") + group + "\n";
        for (host::Family const& family : environment.catalogue().families())
            if (family.group == group && matches(family, lower(filter)))
                text += entry(family);
    }
    print(text);
    return 0;
}

}  // namespace

Command addList(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("list", "List the node types");
    auto const filter = std::make_shared<std::string>();
    command->add_option("FILTER", *filter,
                        "Only those with this in their name, group or description");
    command->footer("A node type is a name and one of its types: Add and Float3 are Add_Float3.\n\n"
                    "Example:\n  nodus list log");
    return {command, [filter, &shared] { return list(*filter, shared); }};
}

}  // namespace nodus::tools
