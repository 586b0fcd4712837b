// The texts that stand for files.
#pragma once

#include <string>

namespace nodus::host {

// The text of that name, empty when there was none.
std::string& fileText(std::string const& name);

}  // namespace nodus::host
