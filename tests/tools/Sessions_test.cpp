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

struct Line {
    int number;
    std::string text;
};

// The block of lines that a row "| A | B" stands behind, with A for %1 and B for %2.
std::vector<Line> withCells(std::vector<Line> block, Line const& row)
{
    std::string const cells = replaced(row.text.substr(1), "\\n", "\n");
    std::size_t begin = 0;
    for (int column = 1; begin < cells.size(); ++column) {
        std::size_t const end = std::min(cells.find(" | ", begin), cells.size());
        std::string cell = cells.substr(begin, end - begin);
        cell.erase(cell.find_last_not_of(' ') + 1);
        cell.erase(0, cell.find_first_not_of(' '));
        for (auto& [number, text] : block)
            text = replaced(text, "%" + std::to_string(column), cell);
        begin = end + 2;
    }
    for (Line& line : block)
        line.number = row.number;
    return block;
}

std::vector<Line> linesOf(std::string const& path)
{
    std::ifstream file(path);
    std::vector<Line> lines, block;  // the block: since the last empty line
    bool hasRows = false;
    auto const endBlock = [&] {
        if (!hasRows)
            lines.insert(lines.end(), block.begin(), block.end());
        block.clear();
        hasRows = false;
    };
    Line line{1, ""};
    for (; std::getline(file, line.text); ++line.number) {
        line.text = replaced(replaced(line.text, "{module}", NODUS_TEST_MODULE), "{examples}",
                             NODUS_TEST_EXAMPLES);
        if (line.text.starts_with("| ")) {
            for (Line const& made : withCells(block, line))
                lines.push_back(made);
            hasRows = true;
        } else if (!line.text.starts_with('#')) {
            if (hasRows || line.text.empty())
                endBlock();
            block.push_back(line);
        }
    }
    endBlock();
    return lines;
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
    std::vector<Line> const lines = linesOf(GetParam());
    std::unique_ptr<Session> session;
    auto line = lines.begin();
    auto const following = [&](std::string const& mark) {
        std::string text;
        while (line != lines.end() && line->text.starts_with(mark))
            text += (line++)->text.substr(mark.size()) + "\n";
        return text;
    };
    int runs = 0;
    while (line != lines.end()) {
        auto const& [number, text] = *line++;
        testing::ScopedTrace const trace(GetParam().c_str(), number, text);
        std::string const mark = text.substr(0, 2);
        std::string const rest = text.substr(std::min<std::size_t>(2, text.size()));
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
        } else if (!mark.empty()) {
            ADD_FAILURE() << "not a line of a session";
        }
    }
    EXPECT_GT(runs, 0);
}

INSTANTIATE_TEST_SUITE_P(Command, Sessions, Sessions::in(SESSIONS_FOLDER), Sessions::name);
