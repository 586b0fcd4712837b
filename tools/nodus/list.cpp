// nodus list: what node types there are, or those that some words lead to.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/search.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace nodus::tools {

namespace {

using host::Family;
using Words = std::vector<std::string>;

[[noreturn]] void complainOf(host::Catalogue const& catalogue, Words const& words)
{
    std::vector<std::string_view> known;
    for (Family const& family : catalogue.families()) {
        known.push_back(family.name);
        known.insert(known.end(), family.searchWords.begin(), family.searchWords.end());
    }
    std::string const all = fmt::format("{}", fmt::join(words, " "));
    throw host::Fault("no node type matches " + host::inQuotes(all) +
                      (words.size() == 1 ? host::didYouMean(all, known) : ""));
}

std::string entryText(Environment const& environment, Family const& family)
{
    std::string const owner = environment.ownerOf(family);
    std::string types;
    for (host::NodeType const* const type : family.nodeTypes)
        types += (types.empty() ? "" : " ") + type->suffix;
    std::string text = fmt::format("  {:<28} {}{}\n", family.name, family.doc,
                                   owner.empty() ? "" : " (" + owner + ")");
    return types.empty() ? text : text + fmt::format("  {:<28}   {}\n", "", types);
}

std::string byGroup(Environment const& environment)
{
    host::Catalogue const& catalogue = environment.catalogue();
    std::string text;
    std::vector<std::string> told;
    for (Family const& first : catalogue.families()) {
        if (std::ranges::find(told, first.group) != told.end())
            continue;
        told.push_back(first.group);
        text += (text.empty() ? "" : "\n") + first.group + "\n";
        for (Family const& family : catalogue.families())
            if (family.group == first.group)
                text += entryText(environment, family);
    }
    return text;
}

int list(Words const& filter, Shared const& shared)
{
    Environment const environment(shared);
    host::Catalogue const& catalogue = environment.catalogue();
    Words words;
    for (std::string const& argument : filter) {
        std::istringstream text(argument);
        for (std::string word; text >> word;)
            words.push_back(word);
    }
    std::string text = words.empty() ? byGroup(environment) : "";
    if (!words.empty()) {
        auto const found = host::findFamilies(catalogue, words);
        if (found.empty())
            complainOf(catalogue, words);
        for (Family const* const family : found)
            text += entryText(environment, *family);
    }
    print(text);
    return 0;
}

}  // namespace

Command addList(CLI::App& app, Shared const& shared)
{
    CLI::App* const command =
        app.add_subcommand("list", "List the node types, or those that some words lead to");
    auto const words = std::make_shared<Words>();
    command->add_option(
        "WORD", *words,
        "List only what every word matches, the best matches first. A word matches the\n"
        "beginning of a word of the name (QuatArcRotate has three), of a search word or of a\n"
        "type. From four letters on it also matches any part of the name, and the beginning\n"
        "of a word of the group, of the description or of a port.");
    command->footer(
        "A node type is a name and one of its types: Add and Float3 are Add_Float3. Where several\n"
        "modules are loaded, the one that has it stands behind each description.\n\n"
        "Examples:\n  nodus list log\n  nodus list rotate vector\n\n"
        "Exit status:\n"
        "  0  there are such node types\n"
        "  2  there are none, or a module cannot be loaded");
    return {command, [words, &shared] { return list(*words, shared); }};
}

}  // namespace nodus::tools
