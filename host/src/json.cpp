// The JSON reader: a handler of parse events that builds JsonValues without recursion.
#include "nodus/host/json.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace nodus::host {

namespace {

// Graphs need six; what follows the reader may recurse this deep without a thought.
constexpr std::size_t kDeepest = 64;
constexpr std::size_t kLongestMessage = 400;
constexpr std::size_t kLargestFile = std::size_t{1} << 30;

using Json = nlohmann::json;

class Builder : public nlohmann::json_sax<Json> {
public:
    Builder(std::string const& origin, Diagnostics& diagnostics)
        : m_origin(origin), m_diagnostics(diagnostics)
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
    bool number_float(double, std::string const& text) override { return real(text); }
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
        return true;
    }
    bool end_object() override
    {
        std::unordered_set<std::string_view> seen, told;
        for (std::string_view const key : m_open.back()->keys)
            if (!seen.insert(key).second && told.insert(key).second)
                m_diagnostics.add(m_origin + ": " + place() + " has two members named " +
                                  inQuotes(key));
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
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error ..."
        std::string_view what = error.what();
        if (auto const tag = what.find("] "); tag != what.npos)
            what.remove_prefix(tag + 2);
        if (what.starts_with("parse error at "))
            what.remove_prefix(std::string_view("parse error at ").size());
        (void)last;
        // It quotes what was read last, of whatever length.
        if (what.find("ill-formed UTF-8") != what.npos)
            what = what.substr(0, what.find("; last read"));
        m_diagnostics.add(m_origin + ": " + shortened(what, kLongestMessage));
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
            m_diagnostics.add(m_origin + ": nested deeper than " + std::to_string(kDeepest) +
                              " levels");
            return false;
        }
        m_open.push_back(&add(JsonValue{kind}));
        return true;
    }

    // The path of the innermost object: "'nodes.spin'".
    std::string place() const
    {
        std::string path;
        for (std::size_t i = 0; i + 1 < m_open.size(); ++i)
            if (m_open[i]->is(JsonValue::Kind::object))
                path += (path.empty() ? "" : ".") + shortened(m_open[i]->keys.back(), 80);
        return path.empty() ? "the outermost object" : "'" + path + "'";
    }

    std::string const& m_origin;
    Diagnostics& m_diagnostics;
    std::vector<JsonValue*> m_open;
};

std::string readFile(std::string const& path)
{
    int const file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        throw Fault("cannot read " + path + ": " + systemError(errno));
    struct Closer {
        int file;
        ~Closer() { ::close(file); }
    } const closer{file};
    std::string text;
    char buffer[1 << 16];
    for (;;) {
        ssize_t const got = ::read(file, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw Fault("cannot read " + path + ": " + systemError(errno));
        if (got == 0)
            return text;
        text.append(buffer, static_cast<std::size_t>(got));
        if (text.size() > kLargestFile)
            throw Fault(path + ": larger than one gigabyte");
    }
}

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
        return "the text '" + (text.size() > 40 ? text.substr(0, 40) + "..." : text) + "'";
    case Kind::array:
        return "an array of " + std::to_string(items.size());
    case Kind::object:
        return "an object";
    }
    return "nothing";
}

std::optional<JsonValue> parseJson(std::string_view text, std::string const& origin,
                                   Diagnostics& diagnostics)
{
    Builder builder(origin, diagnostics);
    if (!Json::sax_parse(text.begin(), text.end(), &builder))
        return std::nullopt;
    return std::move(builder.root);
}

std::optional<JsonValue> readJsonFile(std::string const& path, Diagnostics& diagnostics)
{
    try {
        return parseJson(readFile(path), path, diagnostics);
    } catch (Fault const& fault) {
        diagnostics.add(fault);
        return std::nullopt;
    }
}

}  // namespace nodus::host
