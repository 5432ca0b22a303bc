// SPDX-License-Identifier: Apache-2.0
#include "Expressions.hpp"

#include "Keywords.hpp"
#include "Literals.hpp"
#include "Operand.hpp"
#include "Text.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// Thrown where an expression has no value, after that was reported.
struct NoValue {
};

/// The operators, those that bind weakest first.
constexpr std::array<std::array<std::string_view, 3>, 6> levels{
    {{"|"}, {"^"}, {"&"}, {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"}}};

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

class Evaluator
{
    /// Reports what an operation complains about.
    template <class Operation>
    auto carryOut(const Location& place, const Operation& operation)
    {
        try {
            return operation();
        } catch (const OperandFault& fault) {
            context_.reporter.error(place, fault.message);
            throw NoValue();
        }
    }

public:
    Evaluator(Context& context, const Type& type, Angles angles)
        : context_(context)
        , tokens_(context.tokens)
        , type_(resolved(type))
        , angles_(angles)
    {
    }

    Value value()
    {
        const Location place = tokens_.peek().place;
        const Operand operand = binary(0);
        return carryOut(place, [&] { return converted(operand, type_); });
    }

private:
    Operand binary(std::size_t level)
    {
        Operand left = unary();
        for (;;) {
            const Token name = tokens_.peek();
            const std::size_t found = levelOf(name);
            if (found == levels.size() || found < level || (angles_ == Angles::Open && name.is(">>"))) {
                return left;
            }
            tokens_.take();
            const Operand right = binary(found + 1);
            left = carryOut(name.place, [&] { return combined(name.text, left, right); });
        }
    }

    Operand unary()
    {
        const Nesting nesting(context_);
        const Token token = tokens_.peek();
        if (token.is("-") || token.is("+") || token.is("~")) {
            tokens_.take();
            const Operand operand = unary();
            return carryOut(token.place, [&] { return prefixed(token.text, operand, type_); });
        }
        if (token.is("(")) {
            return inParentheses();
        }
        if (token.is("TRUE") || token.is("FALSE")) {
            return tokens_.take().is("TRUE");
        }
        const bool isWord = token.kind == TokenKind::Word && isKeyword(token.text);
        return isAtScopedName(tokens_) && !isWord ? named() : literal();
    }

    Operand inParentheses()
    {
        const Angles outside = angles_;
        angles_ = Angles::Closed;
        tokens_.take();
        Operand operand = binary(0);
        tokens_.expect(")");
        angles_ = outside;
        return operand;
    }

    Operand literal()
    {
        const Token token = tokens_.peek();
        switch (token.kind) {
        case TokenKind::Integer:
            return integer(tokens_.take());
        case TokenKind::Floating:
            return floating(tokens_.take());
        case TokenKind::Character:
        case TokenKind::WideCharacter:
            return character(tokens_.take());
        case TokenKind::String:
        case TokenKind::WideString:
            return text();
        case TokenKind::Fixed:
            context_.reporter.error(token.place, "fixed-point numbers are not supported", "leave out the d");
            throw SyntaxError();
        default:
            tokens_.missing("a value");
        }
    }

    Operand integer(const Token& token)
    {
        if (const auto value = integerOf(token.text)) {
            return static_cast<Integer>(*value);
        }
        const bool isDecimal =
            token.text.starts_with('0') && token.text.find_first_of("89") != std::string::npos;
        fail(token, isDecimal ? "a number that begins with 0 is octal, with digits from 0 to 7"
                              : "this is no number of 64 bits");
    }

    Operand floating(const Token& token)
    {
        if (const auto value = floatingOf(token.text)) {
            return *value;
        }
        fail(token, "this number is out of the range of double");
    }

    [[noreturn]] void fail(const Token& token, const std::string& message)
    {
        context_.reporter.error(token.place, message);
        throw NoValue();
    }

    std::string unquotedText(const Token& token)
    {
        Unquoted unquoted = idl::unquoted(token.text);
        if (unquoted.fault != nullptr) {
            fail(token, unquoted.fault);
        }
        return std::move(unquoted.text);
    }

    Operand character(const Token& token)
    {
        const bool wide = token.kind == TokenKind::WideCharacter;
        const std::string text = unquotedText(token);
        if (text.empty() || (wide ? characterSize(text) != text.size() : text.size() != 1)) {
            const bool isOne = !text.empty() && characterSize(text) == text.size();
            fail(token, isOne ? "this character takes more than a byte" : "this is not one character");
        }
        return CharacterOperand{wide ? firstCharacter(text) : static_cast<unsigned char>(text[0]), wide};
    }

    /// Strings side by side are one.
    Operand text()
    {
        TextOperand result;
        result.wide = tokens_.peek().kind == TokenKind::WideString;
        while (tokens_.peek().kind == TokenKind::String || tokens_.peek().kind == TokenKind::WideString) {
            result.text += unquotedText(tokens_.take());
        }
        return result;
    }

    /// What a name alone stands for among the enumerators or flags of the type that is asked for.
    const Symbol* inType(const ScopedName& name)
    {
        const auto* const named = as<NamedType>(type_);
        const bool isShort = named != nullptr && name.parts.size() == 1 && !name.absolute;
        return isShort ? context_.scopes.of(*named).find(name.parts[0].text) : nullptr;
    }

    Operand named()
    {
        const ScopedName name = readScopedName(context_, "a value");
        const Symbol* symbol = inType(name);
        if (symbol == nullptr || symbol->name != name.parts.back().text) {
            symbol = lookUp(context_, name, "value");
        }
        if (symbol == nullptr) {
            throw NoValue();
        }
        if (const auto* const constant = std::get_if<const Constant*>(&symbol->meaning)) {
            return operandOf((*constant)->value, *(*constant)->type);
        }
        if (const auto* const enumerator = std::get_if<EnumeratorSymbol>(&symbol->meaning)) {
            return *enumerator;
        }
        if (const auto* const flag = std::get_if<const BitFlag*>(&symbol->meaning)) {
            return static_cast<Integer>(1) << (*flag)->position;
        }
        context_.reporter.error(name.place, "\"" + name.text + "\" is no value",
                                "it is declared at " + context_.reporter.name(symbol->place));
        throw NoValue();
    }

    Context& context_;
    TokenCursor& tokens_;
    const Type& type_;
    Angles angles_;
};

/// Goes to what ends an expression that has no value.
void skipExpression(TokenCursor& tokens, Angles angles)
{
    constexpr std::array<std::string_view, 5> ends{";", ",", ":", "}", "{"};
    const auto isEnd = [&tokens](auto end) {
        return tokens.peek().is(end);
    };
    for (int depth = 0; !tokens.atEnd() && !std::ranges::any_of(ends, isEnd);) {
        const bool opens = isEnd("(") || isEnd("[");
        const bool closes =
            isEnd(")") || isEnd("]") || (angles == Angles::Open && (isEnd(">") || isEnd(">>")));
        if (closes && depth == 0) {
            return;
        }
        depth += opens ? 1 : 0;
        depth -= closes ? 1 : 0;
        tokens.take();
    }
}

} // namespace

std::optional<Value> readValue(Context& context, const Type& type, Angles angles)
{
    try {
        return Evaluator(context, type, angles).value();
    } catch (const NoValue&) {
        skipExpression(context.tokens, angles);
        return std::nullopt;
    }
}

std::uint32_t readBound(Context& context, const std::string& what, Angles angles)
{
    const Location place = context.tokens.peek().place;
    const auto value = readValue(context, context.builder.primitive(TypeKind::Int64), angles);
    if (!value) {
        return 1;
    }
    const auto bound = std::get<std::int64_t>(*value);
    if (bound < 1 || bound > std::numeric_limits<std::uint32_t>::max()) {
        context.reporter.error(place, what + " is 1 to 4294967295, not " + std::to_string(bound));
        return 1;
    }
    return static_cast<std::uint32_t>(bound);
}

std::uint64_t bitsOf(const Value& value)
{
    struct Converter {
        std::uint64_t operator()(bool boolean) const { return boolean ? 1 : 0; }

        std::uint64_t operator()(char c) const { return static_cast<unsigned char>(c); }

        std::uint64_t operator()(char32_t c) const { return c; }

        std::uint64_t operator()(std::int64_t integer) const { return static_cast<std::uint64_t>(integer); }

        std::uint64_t operator()(std::uint64_t integer) const { return integer; }

        std::uint64_t operator()(const Enumerator* enumerator) const
        {
            return static_cast<std::uint64_t>(static_cast<std::int64_t>(enumerator->value));
        }

        std::uint64_t operator()(double /*number*/) const { return 0; }

        std::uint64_t operator()(const std::string& /*text*/) const { return 0; }
    };

    return std::visit(Converter(), value);
}

} // namespace ovra::plex::idl
