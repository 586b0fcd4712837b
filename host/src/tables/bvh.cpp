// The skeleton of a BVH file, read word by word.
#include "nodus/host/bvh.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/literals.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

namespace nodus::host {

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::size_t kMostJoints = 10'000;

class Words {
public:
    explicit Words(LineReader& lines) : m_lines(lines) {}

    // The next word, on whichever line; empty at the end of the file.
    std::string next()
    {
        while (true) {
            std::string_view const rest = m_text;
            std::size_t const begin = rest.find_first_not_of(kBlanks, m_at);
            if (begin != rest.npos) {
                m_at = std::min(rest.find_first_of(kBlanks, begin), rest.size());
                return std::string(rest.substr(begin, m_at - begin));
            }
            auto const line = m_lines.next();
            if (!line)
                return {};
            m_text.assign(line->text.data(), line->text.size());
            m_number = line->number;
            m_at = 0;
        }
    }

    bool isLineDone() const { return m_text.find_first_not_of(kBlanks, m_at) == m_text.npos; }

    [[noreturn]] void fault(std::string const& text) const
    {
        throw Fault(m_lines.name() + ":" + std::to_string(m_number) + ": " + text);
    }

    void want(std::string_view wanted)
    {
        std::string const word = next();
        if (word != wanted)
            fault("wants " + inQuotes(wanted) + ", not " + shown(word));
    }

    std::string number(char const* what)
    {
        std::string word = next();
        double value = 0;
        if (!readNumber(word, valueType(TypeId::Double), reinterpret_cast<std::byte*>(&value))
                 .empty())
            fault(std::string(what) + " wants a number, not " + shown(word));
        return word;
    }

    std::uint64_t count(char const* what)
    {
        std::string const word = next();
        std::uint64_t value = 0;
        auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (error != std::errc{} || end != word.data() + word.size())
            fault(std::string(what) + " wants a whole number, not " + shown(word));
        return value;
    }

    static std::string shown(std::string const& word)
    {
        return word.empty() ? "the end of the file" : inQuotes(word);
    }

private:
    LineReader& m_lines;
    std::string m_text;
    std::size_t m_at = 0, m_number = 1;
};

class SkeletonReader {
public:
    explicit SkeletonReader(LineReader& lines) : m_words(lines) {}

    BvhSkeleton read()
    {
        m_words.want("HIERARCHY");
        std::string word = m_words.next();
        if (word != "ROOT")
            m_words.fault("wants 'ROOT', not " + Words::shown(word));
        for (; word == "ROOT"; word = m_words.next())
            readRoot();
        if (word != "MOTION")
            m_words.fault("wants 'MOTION', or one more 'ROOT', not " + Words::shown(word));
        m_words.want("Frames:");
        m_skeleton.frames = m_words.count("'Frames:'");
        m_words.want("Frame");
        m_words.want("Time:");
        m_words.number("'Frame Time:'");
        if (!m_words.isLineDone())
            m_words.fault("wants the first frame on a line of its own");
        if (m_skeleton.columns.empty())
            m_words.fault("the skeleton has no channels");
        return std::move(m_skeleton);
    }

private:
    void readRoot()
    {
        std::vector<std::size_t> open;
        begin(SIZE_MAX, m_words.next(), open);
        while (!open.empty()) {
            std::string const word = m_words.next();
            if (word == "}") {
                open.pop_back();
            } else if (word == "JOINT") {
                begin(open.back(), m_words.next(), open);
            } else if (word == "End") {
                m_words.want("Site");
                m_words.want("{");
                addJoint(open.back(), {});
                m_words.want("}");
            } else if (word == "CHANNELS") {
                readChannels(m_skeleton.joints[open.back()]);
            } else {
                m_words.fault("wants 'CHANNELS', 'JOINT', 'End Site' or '}', not " +
                              Words::shown(word));
            }
        }
    }

    void begin(std::size_t parent, std::string const& name, std::vector<std::size_t>& open)
    {
        if (name.empty() || name == "{")
            m_words.fault("wants the name of a joint");
        if (!m_names.insert(name).second)
            m_words.fault("two joints have the name " + inQuotes(name));
        m_words.want("{");
        addJoint(parent, name);
        open.push_back(m_skeleton.joints.size() - 1);
    }

    void addJoint(std::size_t parent, std::string const& name)
    {
        if (m_skeleton.joints.size() == kMostJoints)
            m_words.fault("more than " + std::to_string(kMostJoints) + " joints");
        m_words.want("OFFSET");
        BvhJoint& joint = m_skeleton.joints.emplace_back(BvhJoint{name, parent, {}, {}, {}});
        for (std::string& lane : joint.offset)
            lane = m_words.number("'OFFSET'");
    }

    void readChannels(BvhJoint& joint)
    {
        if (!joint.positions.empty() || !joint.rotations.empty())
            m_words.fault("joint " + inQuotes(joint.name) + " has its channels already");
        for (std::uint64_t left = m_words.count("'CHANNELS'"); left > 0; --left) {
            std::string const word = m_words.next();
            std::size_t const axis = std::string_view("XYZ").find(word.substr(0, 1));
            bool const isAngle = !word.empty() && word.substr(1) == "rotation";
            if (word.empty() || axis > 2 || (!isAngle && word.substr(1) != "position"))
                m_words.fault("wants a channel, Xposition to Zposition or Xrotation to Zrotation, "
                              "not " +
                              Words::shown(word));
            auto& axes = isAngle ? joint.rotations : joint.positions;
            if (std::ranges::find(axes, axis) != axes.end())
                m_words.fault("joint " + inQuotes(joint.name) + " has two channels " + word);
            axes.push_back(axis);
            m_skeleton.columns.push_back(joint.name + (isAngle ? ".r" : ".t") + "xyz"[axis]);
            m_skeleton.isAngle.push_back(isAngle);
        }
    }

    Words m_words;
    BvhSkeleton m_skeleton;
    std::unordered_set<std::string> m_names;
};

}  // namespace

BvhSkeleton readBvhSkeleton(LineReader& lines) { return SkeletonReader(lines).read(); }

}  // namespace nodus::host
