// Doing work again whenever a file that it reads has changed.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace nodus::tools {

// Work that reads files, and adds to them those that it comes upon: graphs in the graph.
using Work = std::function<void(std::vector<std::string>& files)>;

// Works, and again whenever one of the files changes, until a signal ends the process or nobody
// reads the results; a fault is told and does not end it. Throws Fault at once when one of the
// files is standard input, or one that the work writes; host::ClosedPipe, and what is no Fault.
[[noreturn]] void watch(std::vector<std::string> const& files,
                        std::vector<std::string> const& written, Work const& work);

}  // namespace nodus::tools
