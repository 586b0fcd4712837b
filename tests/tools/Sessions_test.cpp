// The command in sessions: what is typed, what it answers. sessions/README.md explains the files.
#include "support/process.h"
#include "support/temporary_folder.h"
#include "support/text_files.h"

#include <fstream>
#include <map>
#include <memory>

namespace {

using Files = std::map<std::string, std::string>;

// Whether the text is the expected one, "..." in it being anything.
bool matches(std::string_view text, std::string_view expected)
{
    auto const dots = expected.find("...");
    if (dots == expected.npos)
        return text == expected;
    if (!text.starts_with(expected.substr(0, dots)))
        return false;
    for (std::size_t at = dots; at <= text.size(); ++at)
        if (matches(text.substr(at), expected.substr(dots + 3)))
            return true;
    return false;
}

std::string replaced(std::string text, std::string const& from, std::string const& to)
{
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::vector<std::string> words(std::string const& line)
{
    std::vector<std::string> all;
    bool isQuoted = false, isOpen = false;
    for (char const c : line) {
        isQuoted ^= c == '\'';
        if (c == ' ' && !isQuoted) {
            isOpen = false;
            continue;
        }
        if (!isOpen)
            all.emplace_back();
        isOpen = true;
        if (c != '\'')
            all.back() += c;
    }
    return all;
}

class Session {
public:
    void write(std::string const& name, std::string const& text) { m_folder.write(name, text); }
    void expectFile(std::string const& name, std::string const& text)
    {
        EXPECT_EQ(m_folder.read(name), text) << name;
    }

    void run(std::string const& arguments, std::string const& out, std::string const& error)
    {
        auto command = words(arguments);
        std::string input = "/dev/null";
        if (command.size() > 1 && command[command.size() - 2] == "<") {
            input = m_folder / command.back();
            command.resize(command.size() - 2);
        }
        command.insert(command.begin(), NODUS_TEST_COMMAND);
        Files const before = files();
        auto const ran = support::runProcess(
            command, {.beforeExec = [&] {
                EXPECT_EQ(::chdir((m_folder / "").c_str()), 0);
                EXPECT_EQ(::dup2(::open(input.c_str(), O_RDONLY), STDIN_FILENO), STDIN_FILENO);
            }});
        int const status = error.find("nodus: ") == 0 ? 2 : 0;
        EXPECT_EQ(ran.exitStatus, status) << ran.error;
        EXPECT_TRUE(matches(ran.out, out)) << ran.out << "should be\n" << out;
        EXPECT_TRUE(matches(ran.error, error)) << ran.error << "should be\n" << error;
        EXPECT_TRUE(status == 0 || files() == before) << "a command that failed changed files";
    }

private:
    Files files() const
    {
        Files all;
        for (std::string const& name : m_folder.names())
            all[name] = m_folder.read(name);
        return all;
    }

    support::TemporaryFolder m_folder;
};

class Sessions : public support::TextFiles {};

}  // namespace

TEST_P(Sessions, AnswerAsWritten)
{
    std::ifstream file(GetParam());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(replaced(replaced(line, "{module}", NODUS_TEST_MODULE), "{examples}",
                                 NODUS_TEST_EXAMPLES));
    std::unique_ptr<Session> session;
    auto line = lines.begin();
    auto const following = [&](std::string const& mark) {
        std::string text;
        while (line != lines.end() && line->starts_with(mark))
            text += (line++)->substr(mark.size()) + "\n";
        return text;
    };
    int runs = 0;
    while (line != lines.end()) {
        int const number = static_cast<int>(line - lines.begin()) + 1;
        testing::ScopedTrace const trace(GetParam().c_str(), number, *line);
        std::string const mark = line->substr(0, 2);
        std::string const rest = line->substr(std::min<std::size_t>(2, line->size()));
        ++line;
        if (mark == "==") {
            session = std::make_unique<Session>();
        } else if (mark == "@ ") {
            auto const end = std::min(rest.find(' '), rest.size());
            session->write(rest.substr(0, end),
                           end < rest.size() ? rest.substr(end + 1) + "\n" : following("    "));
        } else if (mark == "? ") {
            session->expectFile(rest, following("> "));
        } else if (mark == "$ ") {
            std::string const out = following("> ");
            session->run(rest, out, following("! "));
            ++runs;
        } else if (!mark.empty() && !mark.starts_with('#')) {
            ADD_FAILURE() << "not a line of a session";
        }
    }
    EXPECT_GT(runs, 0);
}

INSTANTIATE_TEST_SUITE_P(Command, Sessions, Sessions::in(SESSIONS_FOLDER), Sessions::name);
