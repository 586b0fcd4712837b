// How far a family is from a word.
#include "nodus/host/search.h"

#include <algorithm>
#include <cctype>

namespace nodus::host {

namespace {

using Words = std::vector<std::string>;

// Shorter ones stand inside of too much: "log" in "logic", "sin" in "cosine", "and" anywhere.
constexpr std::size_t kLongWord = 4;
constexpr std::size_t kNothing = 1000000;

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
        for (NodeType const* const type : of.nodeTypes) {
            types.push_back(lower(type->name));
            types.push_back(lower(type->suffix));
            for (auto const* const ports : {&type->inputs, &type->outputs})
                for (Port const& port : *ports)
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

}  // namespace

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::vector<Family const*> findFamilies(Catalogue const& catalogue,
                                        std::vector<std::string> const& words)
{
    std::vector<std::pair<std::size_t, Family const*>> found;
    for (Family const& family : catalogue.families()) {
        Entry const entry(family);
        std::size_t far = 0;
        for (std::string const& word : words)
            far = std::min(far + entry.distance(lower(word)), kNothing);
        if (far < kNothing)
            found.emplace_back(far, &family);
    }
    std::ranges::stable_sort(found, {}, [](auto const& each) { return each.first; });
    std::vector<Family const*> families;
    families.reserve(found.size());
    for (auto const& [far, family] : found)
        families.push_back(family);
    return families;
}

}  // namespace nodus::host
