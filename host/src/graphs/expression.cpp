// Reading expressions by recursive descent.
#include "expression.h"

#include "nodus/host/diagnostics.h"

#include <algorithm>
#include <array>
#include <utility>

namespace nodus::host {

namespace {

// Of parentheses and signs in each other; whoever walks the tree may recurse.
constexpr std::size_t kDeepest = 64;
constexpr std::size_t kLongest = 4096;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

struct Operator {
    char sign;
    std::string_view family;
};
constexpr std::array kSums = {Operator{'+', "Add"}, Operator{'-', "Sub"}};
constexpr std::array kProducts = {Operator{'*', "Mul"}, Operator{'/', "Div"}, Operator{'%', "Mod"}};

class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) {}

    Expression parse()
    {
        if (m_text.size() > kLongest)
            throw ExpressionFault{0, "longer than " + std::to_string(kLongest) + " characters"};
        Expression all = sum();
        if (peek() != '\0')
            throw ExpressionFault{m_at, "wants an operator or the end, not " + rest()};
        return all;
    }

private:
    // The next character that is no blank; zero at the end.
    char peek()
    {
        m_at = std::min(m_text.find_first_not_of(" \t", m_at), m_text.size());
        return m_at < m_text.size() ? m_text[m_at] : '\0';
    }

    std::string rest() const
    {
        return m_at < m_text.size() ? inQuotes(m_text.substr(m_at, 20)) : "its end";
    }

    bool take(char wanted)
    {
        bool const isThere = peek() == wanted;
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    // Operands with operators of one rank between them, from the left.
    template <typename Operators, typename Operand>
    Expression chain(Operators const& operators, Operand operand)
    {
        Expression left = operand();
        while (true) {
            auto const found = std::ranges::find(operators, peek(), &Operator::sign);
            if (found == operators.end() || m_at == m_text.size())
                return left;
            Expression call{Expression::Kind::call, std::string(found->family), m_at++, {}};
            call.arguments.push_back(std::move(left));
            call.arguments.push_back(operand());
            // Walked by recursion, too.
            if (++m_calls > kLongest / 8)
                throw ExpressionFault{call.at, "too many operators"};
            left = std::move(call);
        }
    }

    Expression sum()
    {
        if (++m_depth > kDeepest)
            throw ExpressionFault{m_at, "nested deeper than " + std::to_string(kDeepest)};
        Expression made =
            chain(kSums, [&] { return chain(kProducts, [&] { return signedOperand(); }); });
        --m_depth;
        return made;
    }

    Expression signedOperand()
    {
        peek();
        std::size_t const begin = m_at;
        std::size_t signs = 0;
        for (; take('-'); ++signs) {
        }
        if (signs > kDeepest)
            throw ExpressionFault{begin, "more signs than anybody counts"};
        Expression made = operand();
        for (; signs > 0; --signs)
            if (made.kind == Expression::Kind::number && !made.text.starts_with('-')) {
                made.text.insert(0, 1, '-');
            } else {
                Expression negated{Expression::Kind::call, "Negate", begin, {}};
                negated.arguments.push_back(std::move(made));
                made = std::move(negated);
            }
        return made;
    }

    Expression operand()
    {
        char const c = peek();
        if (take('(')) {
            Expression inner = sum();
            if (!take(')'))
                throw ExpressionFault{m_at, "wants ')', not " + rest()};
            return inner;
        }
        if (isDigit(c) || c == '.')
            return number();
        if (c == '\'')
            return quotedName();
        if (isLetter(c))
            return nameOrCall();
        throw ExpressionFault{m_at, "wants a number, a name or '(', not " + rest()};
    }

    Expression number()
    {
        std::size_t const begin = m_at;
        auto const digits = [&] {
            while (m_at < m_text.size() && (isDigit(m_text[m_at]) || m_text[m_at] == '.'))
                ++m_at;
        };
        digits();
        if (m_at < m_text.size() && (m_text[m_at] == 'e' || m_text[m_at] == 'E')) {
            ++m_at;
            if (m_at < m_text.size() && (m_text[m_at] == '+' || m_text[m_at] == '-'))
                ++m_at;
            digits();
        }
        return {
            Expression::Kind::number, std::string(m_text.substr(begin, m_at - begin)), begin, {}};
    }

    Expression quotedName()
    {
        std::size_t const begin = m_at++;
        std::size_t const end = m_text.find('\'', m_at);
        if (end == m_text.npos)
            throw ExpressionFault{begin, "a name in quotes that does not end"};
        Expression name{
            Expression::Kind::name, std::string(m_text.substr(m_at, end - m_at)), begin, {}};
        m_at = end + 1;
        return name;
    }

    Expression nameOrCall()
    {
        std::size_t const begin = m_at;
        while (m_at < m_text.size() &&
               (isLetter(m_text[m_at]) || isDigit(m_text[m_at]) || m_text[m_at] == '.'))
            ++m_at;
        Expression made{
            Expression::Kind::name, std::string(m_text.substr(begin, m_at - begin)), begin, {}};
        if (!take('('))
            return made;
        made.kind = Expression::Kind::call;
        if (take(')'))
            return made;
        do
            made.arguments.push_back(sum());
        while (take(','));
        if (!take(')'))
            throw ExpressionFault{m_at, "wants ',' or ')', not " + rest()};
        return made;
    }

    std::string_view m_text;
    std::size_t m_at = 0, m_depth = 0, m_calls = 0;
};

}  // namespace

Expression parseExpression(std::string_view text) { return Parser(text).parse(); }

}  // namespace nodus::host
