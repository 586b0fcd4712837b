// The JSON reader: a handler of parse events that builds JsonValues without recursion.
#include "nodus/host/json.h"

#include "nodus/host/input_file.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace nodus::host {

namespace {

// Graphs need six; what follows the reader may recurse this deep without a thought.
constexpr std::size_t kDeepest = 64;
constexpr std::size_t kLongestMessage = 400;
constexpr int kNumberOverflow = 406;  // as the library numbers its errors

// Numbers are read in the widest type there is, and then taken as they were written: 1e999 is for
// the reader of a graph to refuse, who knows the port that it goes to.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, long double>;

// Where in the text the parser is; it does not tell by itself.
class Cursor {
public:
    Cursor(std::string_view text, std::size_t line)
        : m_end(text.data() + text.size()), m_reached(text.data()), m_counted(text.data()),
          m_lineStart(text.data()), m_line(line)
    {
    }

    // An input iterator over the text: all copies stand where the cursor stands.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = char const*;
        using reference = char const&;

        explicit Iterator(char const*& at) : m_at(&at) {}
        reference operator*() const { return **m_at; }
        Iterator& operator++()
        {
            ++*m_at;
            return *this;
        }
        bool operator==(Iterator const& other) const { return *m_at == *other.m_at; }

    private:
        char const** m_at;
    };
    Iterator begin() { return Iterator(m_reached); }
    Iterator end() { return Iterator(m_end); }

    // Behind the bracket that opens an object or array: to the one that closes it.
    void passContents()
    {
        std::size_t depth = 0;
        for (bool isText = false; m_reached != m_end; ++m_reached) {
            char const c = *m_reached;
            if (c == '"')
                isText = !isText;
            else if (isText)
                m_reached += c == '\\' && m_end - m_reached > 1 ? 1 : 0;
            else if (c == '{' || c == '[')
                ++depth;
            else if ((c == '}' || c == ']') && depth-- == 0)
                return;
        }
    }

    // Of what was read last. The end of a number is seen by the character behind it, which may be
    // that of the next line; nothing else ends with a line.
    std::size_t line()
    {
        while (m_reached - m_counted > 1) {
            auto const* const end = static_cast<char const*>(
                std::memchr(m_counted, '\n', static_cast<std::size_t>(m_reached - m_counted - 1)));
            m_counted = end == nullptr ? m_reached - 1 : end + 1;
            if (end == nullptr)
                break;
            m_lineStart = m_counted;
            ++m_line;
        }
        return m_line;
    }

    // The same within its line, counted from 1.
    std::size_t column()
    {
        line();
        return static_cast<std::size_t>(std::max(m_reached - m_lineStart, std::ptrdiff_t{1}));
    }

private:
    // The ends of lines up to m_counted are counted.
    char const *m_end, *m_reached, *m_counted, *m_lineStart;
    std::size_t m_line;
};

class Builder : public nlohmann::json_sax<Json> {
public:
    Builder(Cursor& cursor, FileFaults& faults, std::string_view leftOut)
        : m_cursor(cursor), m_faults(faults), m_leftOut(leftOut)
    {
    }

    JsonValue root;

    bool null() override { return scalar({}); }
    bool boolean(bool value) override
    {
        JsonValue made{JsonValue::Kind::boolean};
        made.boolean = value;
        return scalar(std::move(made));
    }
    bool number_integer(std::int64_t value) override
    {
        JsonValue made{JsonValue::Kind::integer};
        made.integer = value;
        return scalar(std::move(made));
    }
    bool number_unsigned(std::uint64_t value) override
    {
        if (value <= INT64_MAX)
            return number_integer(static_cast<std::int64_t>(value));
        return real(std::to_string(value));
    }
    bool number_float(long double, std::string const& text) override { return real(text); }
    bool string(std::string& value) override
    {
        JsonValue made{JsonValue::Kind::text};
        made.text.assign(value.data(), value.size());
        return scalar(std::move(made));
    }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(JsonValue::Kind::object); }
    bool key(std::string& key) override
    {
        m_open.back()->keys.emplace_back(key.data(), key.size());
        m_keyLine = m_cursor.line();
        return true;
    }
    bool end_object() override
    {
        JsonValue const& object = *m_open.back();
        std::unordered_set<std::string_view> seen, told;
        for (std::size_t i = 0; i < object.keys.size(); ++i)
            if (!seen.insert(object.keys[i]).second && told.insert(object.keys[i]).second)
                m_faults.add(object.items[i].line,
                             place() + " has two members named " + inQuotes(object.keys[i]));
        m_open.pop_back();
        return true;
    }
    bool start_array(std::size_t) override { return open(JsonValue::Kind::array); }
    bool end_array() override
    {
        m_open.pop_back();
        return true;
    }

    bool parse_error(std::size_t, std::string const& last,
                     nlohmann::detail::exception const& error) override
    {
        std::string const column = "column " + std::to_string(m_cursor.column()) + ": ";
        std::string_view what = error.what();
        if (error.id == kNumberOverflow) {
            m_faults.add(m_cursor.line(), column + place(1) + ": " + inQuotes(last) +
                                              " is beyond every type of number");
            return false;
        }
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error ..."
        if (auto const colon = what.find(": "); colon != what.npos)
            what.remove_prefix(colon + 2);
        // It quotes what was read last, of whatever length.
        if (what.find("ill-formed UTF-8") != what.npos)
            what = what.substr(0, what.find("; last read"));
        m_faults.add(m_cursor.line(), column + shortened(what, kLongestMessage));
        return false;
    }

private:
    bool real(std::string text)
    {
        JsonValue made{JsonValue::Kind::real};
        made.text = std::move(text);
        return scalar(std::move(made));
    }

    JsonValue& add(JsonValue&& value)
    {
        bool const isMember = !m_open.empty() && m_open.back()->is(JsonValue::Kind::object);
        value.line = static_cast<std::uint32_t>(isMember ? m_keyLine : m_cursor.line());
        if (m_open.empty())
            return root = std::move(value);
        return m_open.back()->items.emplace_back(std::move(value));
    }

    bool scalar(JsonValue&& value)
    {
        add(std::move(value));
        return true;
    }

    // Only the innermost container grows, so pointers to those around it hold.
    bool open(JsonValue::Kind kind)
    {
        if (m_open.size() == kDeepest) {
            m_faults.add(m_cursor.line(),
                         "nested deeper than " + std::to_string(kDeepest) + " levels");
            return false;
        }
        bool const isMember = !m_open.empty() && m_open.back()->is(JsonValue::Kind::object);
        bool const isLeftOut =
            isMember && !m_leftOut.empty() && m_open.back()->keys.back() == m_leftOut;
        m_open.push_back(&add(JsonValue{kind}));
        if (isLeftOut)
            m_cursor.passContents();
        return true;
    }

    // The path of the innermost object: "'nodes.spin'"; with its last key, of what is read there.
    std::string place(std::size_t keys = 0) const
    {
        std::string path;
        for (std::size_t i = 0; i + 1 < m_open.size() + keys; ++i)
            if (m_open[i]->is(JsonValue::Kind::object))
                path += (path.empty() ? "" : ".") + shortened(m_open[i]->keys.back(), 80);
        return path.empty() ? "the outermost object" : "'" + path + "'";
    }

    Cursor& m_cursor;
    FileFaults& m_faults;
    std::vector<JsonValue*> m_open;
    std::size_t m_keyLine = 0;
    std::string_view m_leftOut;
};

}  // namespace

JsonValue const* JsonValue::member(std::string_view key) const
{
    auto const found = std::ranges::find(keys, key);
    return found != keys.end() ? &items[static_cast<std::size_t>(found - keys.begin())] : nullptr;
}

std::string JsonValue::describe() const
{
    switch (kind) {
    case Kind::null:
        return "null";
    case Kind::boolean:
        return boolean ? "true" : "false";
    case Kind::integer:
        return std::to_string(integer);
    case Kind::real:
        return text;
    case Kind::text:
        return "the text " + inQuotes(text);
    case Kind::array:
        return "an array of " + std::to_string(items.size());
    case Kind::object:
        return "an object";
    }
    return "nothing";
}

std::optional<JsonValue> parseJson(std::string_view text, FileFaults& faults, std::size_t line,
                                   std::string_view leftOut, bool hasComments)
{
    Cursor cursor(text, line);
    Builder builder(cursor, faults, leftOut);
    if (!Json::sax_parse(cursor.begin(), cursor.end(), &builder,
                         nlohmann::detail::input_format_t::json, true, hasComments))
        return std::nullopt;
    return std::move(builder.root);
}

std::optional<JsonValue> readJsonFile(std::string const& path, FileFaults& faults,
                                      std::string_view leftOut, bool hasComments)
{
    return parseJson(readFile(path), faults, 1, leftOut, hasComments);
}

}  // namespace nodus::host
