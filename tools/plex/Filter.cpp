// SPDX-License-Identifier: Apache-2.0
#include "Filter.hpp"

#include "Failure.hpp"
#include "Path.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

/// What stands on one side of a comparison.
struct Operand {
    std::function<const Json*(const Json& value)> find; ///< gives null where the value has no such member
    const idl::Type* type = nullptr;                    ///< of a member; null: none, or not known
    std::string unknown; ///< a name that is no member's: it must be an enumerator of the other side
};

Operand literal(Json content)
{
    return {[content = std::make_shared<const Json>(std::move(content))](const Json& /*value*/) {
                return content.get();
            },
            nullptr,
            {}};
}

/// A number, exact up to 64 bits. Floats that are none stand as text in JSON.
std::optional<long double> numberOf(const Json& json)
{
    if (json.is_number_unsigned()) {
        return static_cast<long double>(json.get<std::uint64_t>());
    }
    if (json.is_number_integer()) {
        return static_cast<long double>(json.get<std::int64_t>());
    }
    if (json.is_number()) {
        return static_cast<long double>(json.get<double>());
    }
    if (json == "Infinity") {
        return std::numeric_limits<long double>::infinity();
    }
    if (json == "-Infinity") {
        return -std::numeric_limits<long double>::infinity();
    }
    const bool isNan = json.is_string() && json.get_ref<const std::string&>().starts_with("NaN");
    return isNan ? std::optional(std::numeric_limits<long double>::quiet_NaN()) : std::nullopt;
}

template <class T>
bool holds(std::string_view comparison, const T& left, const T& right)
{
    if (comparison == "<") {
        return left < right;
    }
    if (comparison == "<=") {
        return left <= right;
    }
    if (comparison == ">") {
        return left > right;
    }
    if (comparison == ">=") {
        return left >= right;
    }
    return (left == right) == (comparison == "==" || comparison == "=");
}

bool compare(std::string_view comparison, const Json& left, const Json& right)
{
    if (left.is_number() || right.is_number()) {
        const auto one = numberOf(left);
        const auto other = numberOf(right);
        return one && other ? holds(comparison, *one, *other) : comparison == "!=";
    }
    if (left.type() != right.type()) {
        return comparison == "!=";
    }
    return holds(comparison, left, right);
}

bool isTrue(const Json* json)
{
    return json != nullptr && *json != false && *json != 0;
}

class FilterParser
{
public:
    FilterParser(std::string_view text, const idl::StructType& type) : whole_(text), rest_(text), type_(type)
    {
    }

    Filter parse()
    {
        auto filter = disjunction();
        if (!next().empty()) {
            fail("\"" + std::string(next()) + "\" is not expected");
        }
        return filter;
    }

private:
    [[noreturn]] void fail(const std::string& what) const
    {
        throw Failure(ExitCode::Usage, "filter \"" + std::string(whole_) + "\": " + what);
    }

    /// The next token without reading it; empty at the end.
    std::string_view next()
    {
        while (!rest_.empty() && std::isspace(static_cast<unsigned char>(rest_.front())) != 0) {
            rest_.remove_prefix(1);
        }
        if (rest_.empty()) {
            return rest_;
        }
        constexpr std::array<std::string_view, 13> signs{"==", "!=", "<=", ">=", "&&", "||", "<",
                                                         ">",  "=",  "!",  "(",  ")",  "-"};
        const char first = rest_.front();
        if (first == '\'' || first == '"') {
            const auto end = rest_.find(first, 1);
            if (end == std::string_view::npos) {
                fail("the text that begins with " + std::string(rest_) + " does not end");
            }
            return rest_.substr(0, end + 1);
        }
        for (const auto sign : signs) {
            if (rest_.starts_with(sign) && sign != "-") {
                return rest_.substr(0, sign.size());
            }
        }
        const bool isNumber =
            first == '-' || first == '+' || std::isdigit(static_cast<unsigned char>(first)) != 0;
        std::size_t length = 1;
        while (length < rest_.size() && isWord(rest_[length], rest_[length - 1], isNumber)) {
            ++length;
        }
        return rest_.substr(0, length);
    }

    static bool isWord(char c, char before, bool ofNumber)
    {
        const bool isExponent = ofNumber && (c == '-' || c == '+') && (before == 'e' || before == 'E');
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.' || isExponent ||
               (!ofNumber && (c == '[' || c == ']'));
    }

    /// Reads the next token if it is one of these.
    bool accept(std::initializer_list<std::string_view> tokens)
    {
        const auto token = next();
        const bool isOne = !token.empty() && std::ranges::find(tokens, token) != tokens.end();
        if (isOne) {
            rest_.remove_prefix(token.size());
        }
        return isOne;
    }

    std::string_view read()
    {
        const auto token = next();
        rest_.remove_prefix(token.size());
        return token;
    }

    Filter disjunction()
    {
        auto left = conjunction();
        while (accept({"or", "||"})) {
            left = [left = std::move(left), right = conjunction()](const Json& value) {
                return left(value) || right(value);
            };
        }
        return left;
    }

    Filter conjunction()
    {
        auto left = negation();
        while (accept({"and", "&&"})) {
            left = [left = std::move(left), right = negation()](const Json& value) {
                return left(value) && right(value);
            };
        }
        return left;
    }

    Filter negation()
    {
        if (++depth_ > mostDepth) {
            fail("it is nested too deep");
        }
        Filter result;
        if (accept({"not", "!"})) {
            result = [inner = negation()](const Json& value) {
                return !inner(value);
            };
        } else if (accept({"("})) {
            result = disjunction();
            if (!accept({")"})) {
                fail("a \")\" is missing");
            }
        } else {
            result = comparison();
        }
        --depth_;
        return result;
    }

    Filter comparison()
    {
        auto left = operand();
        const std::string sign(next());
        if (!accept({"==", "=", "!=", "<", "<=", ">", ">="})) {
            check(left);
            return [left](const Json& value) {
                return isTrue(left.find(value));
            };
        }
        auto right = operand();
        takeForEnumerator(left, right);
        takeForEnumerator(right, left);
        check(left);
        check(right);
        return [left, right, sign](const Json& value) {
            const auto* const one = left.find(value);
            const auto* const other = right.find(value);
            return one != nullptr && other != nullptr && compare(sign, *one, *other);
        };
    }

    Operand operand()
    {
        const auto token = read();
        if (token.empty()) {
            fail("something is missing at its end");
        }
        const char first = token.front();
        if (first == '\'' || first == '"') {
            return literal(std::string(token.substr(1, token.size() - 2)));
        }
        if (token == "true" || token == "false") {
            return literal(token == "true");
        }
        if (first == '-' || first == '+' || std::isdigit(static_cast<unsigned char>(first)) != 0) {
            return number(token);
        }
        if (std::isalpha(static_cast<unsigned char>(first)) == 0 && first != '_') {
            fail("\"" + std::string(token) + "\" is not expected");
        }
        return member(token);
    }

    Operand number(std::string_view token) const
    {
        auto content = Json::parse(token.substr(token.front() == '+' ? 1 : 0), nullptr, false);
        if (!content.is_number()) {
            fail("\"" + std::string(token) + "\" is no number");
        }
        return literal(std::move(content));
    }

    Operand member(std::string_view token) const
    {
        const bool isOneName = token.find_first_of(".[") == std::string_view::npos;
        const auto members = allMembers(type_);
        const bool isMember =
            std::ranges::any_of(members, [&](const auto* each) { return each->name == token; });
        if (isOneName && !isMember) {
            return {{}, nullptr, std::string(token)};
        }
        const auto path = Path::parse(token);
        return {[path](const Json& value) { return path.find(value); }, path.typeIn(type_), {}};
    }

    /// Takes a name that is no member's for an enumerator of what it is compared with.
    static void takeForEnumerator(Operand& operand, const Operand& other)
    {
        const auto* const type =
            other.type == nullptr ? nullptr : idl::as<idl::EnumType>(resolved(*other.type));
        if (type != nullptr && std::ranges::any_of(type->enumerators, [&](const auto& enumerator) {
                return enumerator.name == operand.unknown;
            })) {
            operand = literal(operand.unknown);
        }
    }

    void check(const Operand& operand) const
    {
        if (!operand.find) {
            Path::parse(operand.unknown).typeIn(type_); // says that there is none
        }
    }

    static constexpr int mostDepth = 200;

    std::string_view whole_;
    std::string_view rest_;
    const idl::StructType& type_;
    int depth_ = 0;
};

} // namespace

Filter parseFilter(const std::string& text, const idl::StructType& type)
{
    return FilterParser(text, type).parse();
}

} // namespace ovra::plex::tool
