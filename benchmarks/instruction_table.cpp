// Reads and compares tables of instruction counts.
#include "instruction_table.h"

#include <algorithm>
#include <cstdio>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace nodus::bench {

namespace {

constexpr double kGrowth = 1.10;

InstructionCount const* findRow(InstructionTable const& table, std::string const& name)
{
    auto const found = std::find_if(table.begin(), table.end(),
                                    [&](InstructionCount const& row) { return row.name == name; });
    return found == table.end() ? nullptr : &*found;
}

std::string inWords(double count)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", count);
    return text;
}

}  // namespace

InstructionTable readTable(std::istream& file)
{
    InstructionTable table;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        std::size_t const number = line.find_last_of(' ') + 1;
        std::size_t const nameEnd = line.find_last_not_of(' ', number == 0 ? 0 : number - 1) + 1;
        std::size_t used = 0;
        double count = 0;
        try {
            count = std::stod(line.substr(number), &used);
        } catch (std::logic_error const&) {
        }
        if (number == 0 || nameEnd == 0 || used == 0 || number + used != line.size())
            throw std::runtime_error("not a row of instruction counts: " + line);
        table.push_back({line.substr(0, nameEnd), count});
    }
    return table;
}

void writeRows(std::ostream& file, InstructionTable const& table)
{
    for (InstructionCount const& row : table) {
        char line[160];
        std::snprintf(line, sizeof line, "%-60s %7.1f\n", row.name.c_str(), row.perCall);
        file << line;
    }
}

std::vector<Dump> readDumps(std::istream& profile, std::string const& library)
{
    constexpr std::string_view kTrigger = "desc: Trigger: Client Request: ";
    std::vector<Dump> dumps;
    bool inLibrary = false;
    bool skipNext = false;
    for (std::string line; std::getline(profile, line);) {
        if (line.starts_with("part:")) {
            dumps.push_back({"", 0});
            inLibrary = false;
        } else if (line.starts_with(kTrigger) && !dumps.empty()) {
            dumps.back().trigger = line.substr(kTrigger.size());
        } else if (line.starts_with("ob=")) {
            inLibrary = line.substr(3) == library;
        } else if (line.starts_with("calls=")) {
            skipNext = true;  // the next line is the cost of the callee and all that it calls
        } else if (!line.empty() && (line.front() >= '0' && line.front() <= '9')) {
            if (inLibrary && !skipNext && !dumps.empty())
                dumps.back().instructions += std::stoul(line.substr(line.find(' ') + 1));
            skipNext = false;
        }
    }
    return dumps;
}

std::vector<std::string> disagreements(InstructionTable const& table, InstructionTable const& seen)
{
    std::vector<std::string> lines;
    for (InstructionCount const& now : seen) {
        InstructionCount const* const listed = findRow(table, now.name);
        if (listed == nullptr)
            lines.push_back(now.name + ": " + inWords(now.perCall) +
                            " instructions a call, and the table has no such row");
        else if (now.perCall > kGrowth * listed->perCall && now.perCall >= listed->perCall + 1)
            lines.push_back(now.name + ": " + inWords(now.perCall) +
                            " instructions a call, the table has " + inWords(listed->perCall));
    }
    for (InstructionCount const& listed : table)
        if (findRow(seen, listed.name) == nullptr)
            lines.push_back(listed.name + ": in the table, but nothing of this name was counted");
    return lines;
}

}  // namespace nodus::bench
