// What the page brings along beside its text: its scripts in one, and files that they read.
#pragma once

#include <string>
#include <string_view>

namespace nodus::reference {

std::string base64(std::string_view bytes);

// An ES module with everything that it imports in front of it, each file once. Imports name files
// by relative paths, on a line of their own, and rename nothing: the names of all files are one
// scope. Runs as a classic script, too, which is all that a page opened from a disk gets a worker
// for. Throws Fault for a file that is not there or imports itself.
std::string bundled(std::string const& path);

// A script element that holds the bytes for the page's scripts: deflated, in base64.
std::string carriedElement(std::string_view id, std::string_view bytes);

}  // namespace nodus::reference
