// SPDX-License-Identifier: Apache-2.0
#include "Condition.hpp"

#include "Literals.hpp"

#include <array>
#include <string_view>

namespace ovra::plex::idl
{

namespace
{

struct Fault {
    std::string message;
    Location place;
};

constexpr int deepest = 100;

/// The operators, those that bind weakest first.
constexpr std::array<std::array<std::string_view, 4>, 10> levels{{{"||"},
                                                                  {"&&"},
                                                                  {"|"},
                                                                  {"^"},
                                                                  {"&"},
                                                                  {"==", "!="},
                                                                  {"<", ">", "<=", ">="},
                                                                  {"<<", ">>"},
                                                                  {"+", "-"},
                                                                  {"*", "/", "%"}}};

/// The level of an operator; that behind the last where it is none.
std::size_t levelOf(const Token& token)
{
    for (std::size_t level = 0; level < levels.size(); ++level) {
        for (const auto name : levels.at(level)) {
            if (!name.empty() && token.is(name)) {
                return level;
            }
        }
    }
    return levels.size();
}

/// Arithmetic modulo 2⁶⁴, as conditions need no more.
std::int64_t wrapped(std::string_view name, std::int64_t left, std::int64_t right)
{
    const auto a = static_cast<std::uint64_t>(left);
    const auto b = static_cast<std::uint64_t>(right);
    switch (name[0]) {
    case '+':
        return static_cast<std::int64_t>(a + b);
    case '-':
        return static_cast<std::int64_t>(a - b);
    case '*':
        return static_cast<std::int64_t>(a * b);
    case '|':
        return static_cast<std::int64_t>(a | b);
    case '^':
        return static_cast<std::int64_t>(a ^ b);
    default:
        return static_cast<std::int64_t>(a & b);
    }
}

std::int64_t compared(std::string_view name, std::int64_t left, std::int64_t right)
{
    if (name == "==" || name == "!=") {
        return static_cast<std::int64_t>((left == right) == (name == "=="));
    }
    if (name.size() == 2 && left == right) {
        return 1;
    }
    return static_cast<std::int64_t>(name[0] == '<' ? left < right : left > right);
}

/// A number; suffixes as of C mean nothing here.
std::optional<std::uint64_t> numberOf(const Token& token)
{
    const std::string_view digits = token.text.substr(0, token.text.find_last_not_of("uUlL") + 1);
    return token.kind == TokenKind::Integer ? integerOf(digits) : std::nullopt;
}

std::optional<std::uint64_t> characterOf(const Token& token)
{
    const Unquoted unquoted = token.fault == nullptr ? idl::unquoted(token.text) : Unquoted();
    return unquoted.text.size() == 1 ? std::optional<std::uint64_t>(unquoted.text[0]) : std::nullopt;
}

class Evaluator
{
public:
    explicit Evaluator(std::span<const Token> tokens) : tokens_(tokens) {}

    bool evaluate()
    {
        const std::int64_t value = choice();
        if (front().kind != TokenKind::End) {
            fail("an operator is missing before \"" + std::string(front().text) + "\"");
        }
        return value != 0;
    }

private:
    const Token& front() const { return tokens_.front(); }

    Token take()
    {
        const Token token = front();
        if (token.kind != TokenKind::End) {
            tokens_ = tokens_.subspan(1);
        }
        return token;
    }

    [[noreturn]] void fail(const std::string& message) const { throw Fault{message, front().place}; }

    void deepen()
    {
        if (++depth_ > deepest) {
            fail("the condition is nested too deep");
        }
    }

    /// `A ? B : C`, or A alone.
    std::int64_t choice()
    {
        const std::int64_t condition = binary(0);
        if (!front().is("?")) {
            return condition;
        }
        take();
        deepen();
        const std::int64_t first = unless(condition == 0, [this] { return choice(); });
        if (!take().is(":")) {
            throw Fault{"\":\" is missing", front().place};
        }
        const std::int64_t second = unless(condition != 0, [this] { return choice(); });
        --depth_;
        return condition != 0 ? first : second;
    }

    /// Reads a part, in which nothing can be wrong with values where it does not matter.
    template <class Reader>
    std::int64_t unless(bool isDecided, const Reader& read)
    {
        ignored_ += isDecided ? 1 : 0;
        const std::int64_t value = read();
        ignored_ -= isDecided ? 1 : 0;
        return value;
    }

    std::int64_t binary(std::size_t level)
    {
        std::int64_t left = unary();
        for (std::size_t found = levelOf(front()); found < levels.size() && found >= level;
             found = levelOf(front())) {
            const Token name = take();
            const bool isDecided = (name.is("&&") && left == 0) || (name.is("||") && left != 0);
            left = apply(name, left, unless(isDecided, [&] { return binary(found + 1); }));
        }
        return left;
    }

    std::int64_t apply(const Token& name, std::int64_t left, std::int64_t right) const
    {
        switch (levelOf(name)) {
        case 0:
            return static_cast<std::int64_t>(left != 0 || right != 0);
        case 1:
            return static_cast<std::int64_t>(left != 0 && right != 0);
        case 5:
        case 6:
            return compared(name.text, left, right);
        case 7:
            return shifted(name, left, right);
        default:
            return name.is("/") || name.is("%") ? divided(name, left, right)
                                                : wrapped(name.text, left, right);
        }
    }

    std::int64_t shifted(const Token& name, std::int64_t left, std::int64_t right) const
    {
        if (right < 0 || right > 63) {
            if (ignored_ > 0) {
                return 0;
            }
            throw Fault{"a shift is by 0 to 63 bits", name.place};
        }
        return name.is("<<") ? static_cast<std::int64_t>(static_cast<std::uint64_t>(left) << right)
                             : left >> right;
    }

    std::int64_t divided(const Token& name, std::int64_t left, std::int64_t right) const
    {
        if (right == 0 && ignored_ > 0) {
            return 0;
        }
        if (right == 0) {
            throw Fault{"division by zero", name.place};
        }
        if (right == -1) { // the only one that could overflow
            return name.is("/") ? wrapped("-", 0, left) : 0;
        }
        return name.is("/") ? left / right : left % right;
    }

    std::int64_t unary()
    {
        deepen();
        const std::int64_t value = primary();
        --depth_;
        return value;
    }

    std::int64_t primary()
    {
        const Token token = take();
        if (token.is("!")) {
            return static_cast<std::int64_t>(unary() == 0);
        }
        if (token.is("-") || token.is("+")) {
            return wrapped(token.text, 0, unary());
        }
        if (token.is("~")) {
            return ~unary();
        }
        if (token.is("(")) {
            const std::int64_t value = choice();
            if (!take().is(")")) {
                throw Fault{"\")\" is missing", front().place};
            }
            return value;
        }
        if (token.isName()) {
            return 0;
        }
        const auto value = token.kind == TokenKind::Character ? characterOf(token) : numberOf(token);
        if (!value) {
            throw Fault{"a number or a name is missing", token.place};
        }
        return static_cast<std::int64_t>(*value);
    }

    std::span<const Token> tokens_;
    int depth_ = 0;
    int ignored_ = 0; ///< how many operators around do not need what is read
};

} // namespace

ConditionResult evaluateCondition(std::span<const Token> tokens)
{
    try {
        return {Evaluator(tokens).evaluate(), {}, {}};
    } catch (const Fault& fault) {
        return {false, fault.message, fault.place};
    }
}

} // namespace ovra::plex::idl
