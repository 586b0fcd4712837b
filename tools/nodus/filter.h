// Other programs that make one text of another: what they draw costs the start of nodus nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nodus::tools {

struct Filter {
    std::vector<std::string> command;  // the program, looked for on the path, and its arguments
    std::string name;                  // what faults call it
    std::string task;                  // what it then could not do: "draw the graph"
    std::string remedy;                // what to do where it is missing
};

// What the program makes of the text. Throws host::Fault when it is missing or fails.
std::string filtered(std::string_view text, Filter const& filter);

}  // namespace nodus::tools
