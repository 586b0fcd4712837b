// nodus list: what node types there are, or those that some words lead to.
#include "environment.h"

#include "nodus/host/diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace nodus::tools {

namespace {

using host::Family;
using Words = std::vector<std::string>;

// Shorter ones stand inside of too much: "log" in "logic", "sin" in "cosine", "and" anywhere.
constexpr std::size_t kLongWord = 4;
constexpr std::size_t kNothing = 1000000;

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "QuaternionToEuler" is quaternion, to and euler; "ASin" is a and sin, "TransformTQS" has tqs.
Words wordsOfName(std::string const& name)
{
    auto const is = [&](std::size_t i, auto what) {
        return i < name.size() && what(static_cast<unsigned char>(name[i])) != 0;
    };
    Words words(1);
    for (std::size_t i = 0; i < name.size(); ++i) {
        bool const isHead = is(i, ::isupper) &&
                            (is(i - 1, ::islower) || is(i - 1, ::isdigit) || is(i + 1, ::islower));
        if (i != 0 && isHead)
            words.emplace_back();
        words.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
    }
    return words;
}

// In small letters; what is neither letter nor digit parts them.
Words wordsOfText(std::string const& text)
{
    Words words(1);
    for (char const c : lower(text)) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    return words;
}

// All that a family can be found by.
struct Entry {
    Family const* family;
    std::string name;
    Words nameWords, searchWords, types, prose;

    explicit Entry(Family const& of)
        : family(&of), name(lower(of.name)), nameWords(wordsOfName(of.name)),
          searchWords(of.searchWords), prose(wordsOfText(of.group + " " + of.doc + " " + of.edges))
    {
        for (host::NodeType const* const type : of.nodeTypes) {
            types.push_back(lower(type->name));
            types.push_back(lower(type->suffix));
            for (auto const* const ports : {&type->inputs, &type->outputs})
                for (host::Port const& port : *ports)
                    prose.push_back(lower(port.name));
        }
    }

    // How far the family is from a word: 0 is its very name. kNothing when they have nothing
    // in common. The node reference ranks in the same way.
    std::size_t distance(std::string const& word) const
    {
        auto const begins = [&](std::string const& text) { return text.starts_with(word); };
        auto const fittest = [&](auto const& fits) {
            return static_cast<std::size_t>(std::ranges::find_if(searchWords, fits) -
                                            searchWords.begin());
        };
        bool const isLong = word.size() >= kLongWord;
        if (name == word)
            return 0;
        if (begins(name))
            return 100;
        if (std::ranges::any_of(nameWords, begins))
            return 200;
        // The search words stand with the fittest in front.
        if (auto const at = fittest([&](auto const& text) { return text == word; });
            at != searchWords.size())
            return 300 + at;
        if (auto const at = fittest(begins); at != searchWords.size())
            return 400 + at;
        if (isLong && name.find(word) != name.npos)
            return 500;
        if (std::ranges::any_of(types, begins))
            return 600;
        if (isLong && std::ranges::any_of(prose, begins))
            return 700;
        return kNothing;
    }
};

// The families that every word leads to, the nearest first.
std::vector<Family const*> search(host::Catalogue const& catalogue, Words const& words)
{
    std::vector<std::pair<std::size_t, Family const*>> found;
    for (Family const& family : catalogue.families()) {
        Entry const entry(family);
        std::size_t far = 0;
        for (std::string const& word : words)
            far = std::min(far + entry.distance(word), kNothing);
        if (far < kNothing)
            found.emplace_back(far, &family);
    }
    std::ranges::stable_sort(found, {}, [](auto const& each) { return each.first; });
    std::vector<Family const*> families;
    for (auto const& [far, family] : found)
        families.push_back(family);
    return families;
}

[[noreturn]] void complainOf(host::Catalogue const& catalogue, Words const& words)
{
    std::vector<std::string_view> known;
    for (Family const& family : catalogue.families()) {
        known.push_back(family.name);
        known.insert(known.end(), family.searchWords.begin(), family.searchWords.end());
    }
    std::string all;
    for (std::string const& word : words)
        all += (all.empty() ? "" : " ") + word;
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
        std::istringstream text(lower(argument));
        for (std::string word; text >> word;)
            words.push_back(word);
    }
    std::string text = words.empty() ? byGroup(environment) : "";
    if (!words.empty()) {
        auto const found = search(catalogue, words);
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
