// The page itself: every family of a catalogue, with the examples and pictures of its "reference".
#include "page.h"

#include "family_tables.h"
#include "figures.h"
#include "graphs.h"
#include "markup.h"

#include "nodus/host/diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

namespace nodus::reference {

namespace {

using host::Fault;
using Kind = JsonValue::Kind;

// "crossProduct" for CrossProduct: the name of a node in a graph of one.
std::string nodeName(std::string name)
{
    name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    return name;
}

std::string slug(std::string text)
{
    std::ranges::replace(text, ' ', '-');
    return "group-" + text;
}

std::string capitalised(std::string text)
{
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

bool lettersLess(std::string const& a, std::string const& b)
{
    return std::ranges::lexicographical_compare(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) < std::tolower(y); });
}

// An input as `nodus call` takes it: value=1,2,3.
std::string argument(std::string const& port, JsonValue const& value)
{
    if (value.is(Kind::object))
        return "'" + port + "=" + inlineJson(value) + "'";
    if (!value.is(Kind::array))
        return port + "=" + (value.is(Kind::text) ? value.text : inlineJson(value));
    std::string lanes;
    for (JsonValue const& lane : value.items)
        lanes += (lanes.empty() ? "" : ",") + (lane.is(Kind::text) ? lane.text : inlineJson(lane));
    return port + "=" + lanes;
}

class FamilyArticle {
public:
    FamilyArticle(host::Catalogue const& catalogue, host::Family const& family,
                  JsonValue const& notes, std::string origin)
        : m_catalogue(catalogue), m_family(family), m_notes(notes), m_origin(std::move(origin))
    {
        refuseUnknownKeys(
            notes, {"example", "graph", "frames", "edges", "notes", "machine", "plots", "see"},
            m_origin);
        if (family.edges.empty())
            throw Fault(m_origin + ": has no 'edges'");
        if (family.searchWords.empty())
            throw Fault(m_origin + ": has no 'searchWords'");
        if ((notes.member("example") == nullptr) == (notes.member("graph") == nullptr))
            throw Fault(m_origin + ": wants either an 'example' or a 'graph'");
        if (notes.member("example") != nullptr)
            m_type = wanted(wanted(notes, "example", Kind::object, m_origin), "type", Kind::text,
                            m_origin)
                         .text;
    }

    std::string html() const
    {
        std::string types;
        for (std::string const& type : portTypes(m_family))
            types += (types.empty() ? "" : " ") + type;
        std::string words;
        for (std::string const& word : m_family.searchWords)
            words += (words.empty() ? "" : " ") + word;
        return fmt::format(
            "<article id=\"{0}\" tabindex=\"-1\" data-types=\"{1}\" data-words=\"{2}\">\n"
            "<h3><a href=\"#{0}\" class=\"anchor\">{0}</a></h3>\n"
            "<p class=\"doc\">{3}</p>\n{4}{5}{6}{7}{8}{9}{10}{11}</article>\n",
            m_family.name, types, markupText(words), markupText(m_family.doc), nodeTypes(m_family),
            livePlace(m_family, firstType()), figures(), portTable(m_family), edges(), snippet(),
            kernels(), related());
    }

private:
    // The node type that the examples are about.
    host::NodeType const& firstType() const
    {
        auto const find = [this](std::string const& name) {
            return std::ranges::find(m_family.nodeTypes, name,
                                     [](auto const* type) { return type->name; });
        };
        auto found = find(m_type);
        if (JsonValue const* const graph = m_notes.member("graph"))
            for (JsonValue const& node : wanted(*graph, "nodes", Kind::object, m_origin).items)
                if (found == m_family.nodeTypes.end())
                    found = find(textOr(node, "type", "", m_origin));
        return found == m_family.nodeTypes.end() ? *m_family.nodeTypes.front() : **found;
    }

    std::vector<JsonValue> const& list(std::string_view key) const
    {
        static std::vector<JsonValue> const kNone;
        return m_notes.member(key) == nullptr ? kNone
                                              : wanted(m_notes, key, Kind::array, m_origin).items;
    }

    std::string edges() const
    {
        std::string text = "<h4>At the edges</h4>\n<p>" + markupText(m_family.edges) + "</p>\n";
        std::string calls;
        for (JsonValue const& edge : list("edges"))
            calls += edgeCall(edge);
        if (!calls.empty())
            text += "<dl class=\"edges\">\n" + calls + "</dl>\n";
        for (JsonValue const& note : list("notes"))
            text += "<p>" + markupText(note.text) + "</p>\n";
        return text + "<p class=\"machine\">" +
               markupText(textOr(m_notes, "machine", dependence(m_family), m_origin)) + "</p>\n";
    }

    std::string edgeCall(JsonValue const& edge) const
    {
        std::string const origin = m_origin + ", edges";
        refuseUnknownKeys(edge, {"why", "type", "inputs"}, origin);
        std::string const type = textOr(edge, "type", m_type, origin);
        JsonValue const& inputs = wanted(edge, "inputs", Kind::object, origin);
        std::string call = "nodus call " + type;
        for (std::size_t i = 0; i < inputs.keys.size(); ++i)
            call += " " + argument(inputs.keys[i], inputs.items[i]);
        std::string result = evaluated(
            m_catalogue, graphValue(objectValue({{"call", nodeValue(type, &inputs)}}), {"call"}),
            origin, 1);
        // "call.result = 0" is shown as "result = 0", line after line on one.
        std::string shown;
        for (std::size_t at = 0; at < result.size();) {
            std::size_t const end = result.find('\n', at);
            shown += (shown.empty() ? "" : ", ") + result.substr(at + 5, end - at - 5);
            at = end + 1;
        }
        return fmt::format("<dt>{}</dt><dd><code>{}</code> <output>{}</output></dd>\n",
                           markupText(wanted(edge, "why", Kind::text, origin).text),
                           markupText(call), markupText(shown));
    }

    std::string figures() const
    {
        std::string text;
        for (JsonValue const& plot : list("plots"))
            text += figure(m_catalogue, plot, m_type, m_origin + ", plots");
        return text.empty() ? "" : "<div class=\"figures\">\n" + text + "</div>\n";
    }

    std::string snippet() const
    {
        std::string const name = nodeName(m_family.name);
        JsonValue const* const example = m_notes.member("example");
        if (example != nullptr)
            refuseUnknownKeys(*example, {"type", "inputs"}, m_origin + ", example");
        JsonValue const graph = example != nullptr
                                    ? graphValue(objectValue({{name, *example}}), {name})
                                    : *m_notes.member("graph");
        std::size_t frames = 1;
        if (m_notes.member("frames") != nullptr)
            frames = static_cast<std::size_t>(std::clamp<std::int64_t>(
                wanted(m_notes, "frames", Kind::integer, m_origin).integer, 1, 100));
        std::string const origin = m_origin + (example != nullptr ? ", example" : ", graph");
        std::string const result = evaluated(m_catalogue, graph, origin, frames);
        bool const showsFamily = std::ranges::any_of(m_family.nodeTypes, [&](auto const* type) {
            return graphText(graph).find('"' + type->name + '"') != std::string::npos;
        });
        if (!showsFamily)
            throw Fault(origin + ": has no node of the family");
        return fmt::format(
            "<div class=\"snippet\"><div class=\"bar\"><h4>A graph to start from</h4>"
            "<button type=\"button\" class=\"copy\" aria-label=\"Copy the graph of {}\">Copy"
            "</button></div>\n<pre class=\"graph\" data-frames=\"{}\" "
            "tabindex=\"0\"><code>{}</code></pre>\n"
            "<pre class=\"result\" aria-label=\"Result\"><samp>{}</samp></pre></div>\n",
            m_family.name, frames, markupText(graphText(graph)), markupText(result));
    }

    std::string kernels() const
    {
        std::size_t count = 0;
        std::string items;
        auto const add = [&](std::string_view type, std::string_view role) {
            items += fmt::format("<li><code>Nodus{}_{}</code></li>", type, role);
            ++count;
        };
        for (host::NodeType const* const type : m_family.nodeTypes) {
            if (type->init != nullptr)
                add(type->name, "Init");
            add(type->name, "Solve");
        }
        return fmt::format("<details class=\"kernels\"><summary>{} kernel{}</summary><ul>{}</ul>"
                           "</details>\n",
                           count, count == 1 ? "" : "s", items);
    }

    std::string related() const
    {
        std::string links;
        for (JsonValue const& other : list("see")) {
            if (m_catalogue.findFamily(other.text) == nullptr)
                throw Fault(m_origin + ", see: there is no family '" + other.text + "'");
            links +=
                fmt::format("{0}<a href=\"#{1}\">{1}</a>", links.empty() ? "" : ", ", other.text);
        }
        return links.empty() ? "" : "<p class=\"see\">See also " + links + "</p>\n";
    }

    host::Catalogue const& m_catalogue;
    host::Family const& m_family;
    JsonValue const& m_notes;
    std::string m_origin, m_type;
};

class Page {
public:
    Page(host::Catalogue const& catalogue, JsonValue const& file, std::string const& origin)
        : m_catalogue(catalogue), m_origin(origin),
          m_groups(wanted(file, "groups", Kind::array, origin))
    {
        for (JsonValue const& family : wanted(file, "families", Kind::array, origin).items)
            m_entries.emplace(wanted(family, "name", Kind::text, origin).text, family);
    }

    Content make()
    {
        compareGroups();
        for (JsonValue const& group : m_groups.items)
            addGroup(group);
        m_diagnostics.throwIfAny();
        for (host::ValueType const& type : host::valueTypes())
            if (m_types.contains(type.name))
                m_content.types += fmt::format("<option>{}</option>", type.name);
        m_content.families = m_catalogue.families().size();
        for (host::NodeType const& type : m_catalogue.nodeTypes())
            m_content.kernels += type.init != nullptr ? 2 : 1;
        return std::move(m_content);
    }

private:
    std::string placeOf(host::Family const& family) const
    {
        return m_origin + ":" + std::to_string(m_entries.at(family.name).line) + ": " + family.name;
    }

    void compareGroups()
    {
        std::set<std::string> groups;
        for (JsonValue const& group : m_groups.items)
            groups.insert(wanted(group, "name", Kind::text, m_origin).text);
        for (host::Family const& family : m_catalogue.families())
            if (!groups.contains(family.group))
                m_diagnostics.add(placeOf(family) + ": 'groups' has no " +
                                  host::inQuotes(family.group));
    }

    void addGroup(JsonValue const& group)
    {
        std::string const name = wanted(group, "name", Kind::text, m_origin).text;
        std::vector<host::Family const*> families;
        for (host::Family const& family : m_catalogue.families())
            if (family.group == name)
                families.push_back(&family);
        std::ranges::sort(families, lettersLess, [](auto const* family) { return family->name; });
        std::string links, articles;
        for (host::Family const* const family : families) {
            links += fmt::format("<li><a href=\"#{0}\">{0}</a></li>", family->name);
            for (std::string const& type : portTypes(*family))
                m_types.insert(type);
            m_diagnostics.gather([&] {
                std::string const place = placeOf(*family);
                JsonValue const& entry = m_entries.at(family->name);
                articles += FamilyArticle(m_catalogue, *family,
                                          wanted(entry, "reference", Kind::object, place), place)
                                .html();
            });
        }
        std::string const title = markupText(capitalised(name));
        m_content.index +=
            fmt::format("<li><a class=\"group\" href=\"#{}\">{}</a><ul>{}</ul></li>\n", slug(name),
                        title, links);
        m_content.nodes += fmt::format(
            "<section id=\"{0}\" aria-labelledby=\"{0}-title\">\n<header><h2 id=\"{0}-title\">{1}"
            "</h2>\n<p>{2}</p></header>\n{3}</section>\n",
            slug(name), title, markupText(textOr(group, "about", "", m_origin)), articles);
    }

    host::Catalogue const& m_catalogue;
    std::string const& m_origin;
    JsonValue const& m_groups;
    std::map<std::string, JsonValue const&, std::less<>> m_entries;
    Content m_content;
    std::set<std::string, std::less<>> m_types;
    host::Diagnostics m_diagnostics;
};

}  // namespace

Content contentOf(host::Catalogue const& catalogue, JsonValue const& file,
                  std::string const& origin)
{
    return Page(catalogue, file, origin).make();
}

}  // namespace nodus::reference
