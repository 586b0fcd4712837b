// The table of instructions a call: its file, the counts that callgrind writes, and what counts as
// growth.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace nodus::bench {

struct InstructionCount {
    std::string name;
    double perCall;
};
using InstructionTable = std::vector<InstructionCount>;

// One row a line: a name, which may have spaces in it, and a count. '#' starts a comment.
// Throws std::runtime_error for a line that is neither.
InstructionTable readTable(std::istream& file);
void writeRows(std::ostream& file, InstructionTable const& table);

// One dump of a callgrind profile: what asked for it, and the instructions that it counted in the
// functions of one library, without those of the functions that they call elsewhere.
struct Dump {
    std::string trigger;
    unsigned long instructions;
};
// The profile is one with uncompressed strings and positions, all dumps in one file.
std::vector<Dump> readDumps(std::istream& profile, std::string const& library);

// One line for each row that grew by more than a tenth and by at least one instruction, that the
// table does not have, or that only the table has.
std::vector<std::string> disagreements(InstructionTable const& table, InstructionTable const& seen);

}  // namespace nodus::bench
