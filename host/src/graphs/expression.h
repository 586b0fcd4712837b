// Small expressions, "=hips.tx * 0.01 + elbow.result.x", as trees of calls.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

struct Expression {
    enum class Kind { number, name, call };
    Kind kind;
    std::string text;  // the number, the name, or what is called; an operator by its family
    std::size_t at;    // in the expression's text
    std::vector<Expression> arguments;
};

struct ExpressionFault {
    std::size_t at;
    std::string text;
};

// From behind the equals sign: + - * / %, a sign in front, parentheses, numbers, names with dots in
// them ('in quotes' with anything else), and functions with their arguments. Throws
// ExpressionFault.
Expression parseExpression(std::string_view text);

}  // namespace nodus::host
