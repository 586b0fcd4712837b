// Graphviz's language: texts, colours and table cells of labels of HTML's kind.
#pragma once

#include "nodus/host/value_types.h"

#include <string>
#include <string_view>

namespace nodus::host {

inline constexpr std::string_view kInk = "#1f2933", kQuiet = "#8b95a1", kFrame = "#aab4bf";
inline constexpr std::string_view kLeft = "ALIGN=\"LEFT\"", kRight = "ALIGN=\"RIGHT\"";

// One colour for what is alike: it stands on white, and as a tint behind dark text.
std::string_view colourOf(ValueType const& type);

// Text as a label of HTML's kind takes it: a backslash alone may begin an escape.
std::string escaped(std::string_view text);
// An attribute's value. HTML's characters have a meaning in tooltips, too.
std::string quoted(std::string_view text);
std::string coloured(std::string_view text, std::string_view colour, int size = 11);
std::string cell(std::string const& content, std::string_view attributes = kLeft);
// The type's name in its colour.
std::string typeText(ValueType const& type);

}  // namespace nodus::host
