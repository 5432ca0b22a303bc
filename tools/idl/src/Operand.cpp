// SPDX-License-Identifier: Apache-2.0
#include "Operand.hpp"

#include "Text.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ovra::plex::idl
{

namespace
{

struct Range {
    Integer least;
    Integer most;
};

constexpr Range everyInteger{std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::uint64_t>::max()};

bool isSigned(TypeKind kind)
{
    return kind == TypeKind::Int8 || kind == TypeKind::Int16 || kind == TypeKind::Int32 ||
           kind == TypeKind::Int64;
}

/// The numbers that a type of integers or flags has.
Range rangeOf(const Type& type)
{
    const auto* const bitmask = as<BitmaskType>(type);
    const std::uint32_t bits = bitmask != nullptr ? bitmask->bitBound : storageBits(type);
    const Integer one = 1;
    return isSigned(type.kind) ? Range{-(one << (bits - 1)), (one << (bits - 1)) - 1}
                               : Range{0, (one << bits) - 1};
}

Integer inRange(Integer value)
{
    if (value < everyInteger.least || value > everyInteger.most) {
        throw OperandFault{"the value takes more than 64 bits"};
    }
    return value;
}

/// @param left and right take 64 bits each, so that only a product could take more than there are.
Integer product(Integer left, Integer right)
{
    const double estimate = static_cast<double>(left) * static_cast<double>(right);
    if (std::abs(estimate) > 1e20) {
        throw OperandFault{"the value takes more than 64 bits"};
    }
    return left * right;
}

Integer shifted(std::string_view name, Integer left, Integer right)
{
    if (right < 0 || right > 63) {
        throw OperandFault{"a shift is by 0 to 63 bits, not by " + toString(right)};
    }
    const Integer factor = static_cast<Integer>(1) << static_cast<unsigned>(right);
    return name == "<<" ? product(left, factor) : left >> static_cast<unsigned>(right);
}

Integer divided(std::string_view name, Integer left, Integer right)
{
    if (right == 0) {
        throw OperandFault{"division by zero"};
    }
    return name == "/" ? left / right : left % right;
}

Integer combinedIntegers(std::string_view name, Integer left, Integer right)
{
    switch (name[0]) {
    case '|':
        return left | right;
    case '^':
        return left ^ right;
    case '&':
        return left & right;
    case '+':
        return left + right;
    case '-':
        return left - right;
    case '*':
        return product(left, right);
    case '/':
    case '%':
        return divided(name, left, right);
    default:
        return shifted(name, left, right);
    }
}

double combinedNumbers(std::string_view name, double left, double right)
{
    double result = 0;
    if (name == "+") {
        result = left + right;
    } else if (name == "-") {
        result = left - right;
    } else if (name == "*") {
        result = left * right;
    } else if (name == "/" && right == 0) {
        throw OperandFault{"division by zero"};
    } else if (name == "/") {
        result = left / right;
    } else {
        throw OperandFault{"\"" + std::string(name) + "\" takes integers"};
    }
    if (!std::isfinite(result)) {
        throw OperandFault{"the value is out of the range of double"};
    }
    return result;
}

bool isNumber(const Operand& operand)
{
    return std::holds_alternative<Integer>(operand) || std::holds_alternative<double>(operand);
}

double numberOf(const Operand& operand)
{
    const auto* const integer = std::get_if<Integer>(&operand);
    return integer != nullptr ? static_cast<double>(*integer) : std::get<double>(operand);
}

std::string nameOf(const Operand& operand)
{
    struct Namer {
        std::string operator()(Integer /*value*/) const { return "an integer"; }

        std::string operator()(double /*value*/) const { return "a floating-point number"; }

        std::string operator()(bool /*value*/) const { return "a boolean"; }

        std::string operator()(const CharacterOperand& c) const
        {
            return c.wide ? "a wide character" : "a character";
        }

        std::string operator()(const TextOperand& text) const
        {
            return text.wide ? "a wide string" : "a string";
        }

        std::string operator()(const EnumeratorSymbol& symbol) const
        {
            return "an enumerator of " + symbol.type->scopedName;
        }
    };

    return std::visit(Namer(), operand);
}

[[noreturn]] void refuse(const Operand& operand, const Type& type)
{
    throw OperandFault{nameOf(operand) + " is no value of " + toString(type)};
}

Value integerValue(Integer value, const Type& type)
{
    const Range range = rangeOf(type);
    if (value < range.least || value > range.most) {
        throw OperandFault{toString(value) + " is out of the range of " + toString(type) + ", which is " +
                           toString(range.least) + " to " + toString(range.most)};
    }
    return isSigned(type.kind) ? Value(static_cast<std::int64_t>(value))
                               : Value(static_cast<std::uint64_t>(value));
}

Value floatingValue(const Operand& operand, const Type& type)
{
    constexpr double most = std::numeric_limits<float>::max();
    constexpr double roundedDown = most + 0x1p102;                                   // to the one above
    constexpr double roundedToZero = std::numeric_limits<float>::denorm_min() / 2.0; // to the one below
    const double value = numberOf(operand);
    const double size = std::abs(value);
    if (type.kind != TypeKind::Float || (size > roundedToZero && size <= most)) {
        return value;
    }
    if (size >= roundedDown) {
        throw OperandFault{toString(Value(value)) + " is out of the range of float"};
    }
    return std::copysign(size > most ? most : 0.0, value);
}

Value textValue(const TextOperand& operand, const StringType& type)
{
    const bool isWide = type.kind == TypeKind::WString;
    const std::size_t length = isWide ? characterCount(operand.text) : operand.text.size();
    if (type.bound != 0 && length > type.bound) {
        throw OperandFault{"the string has " + std::to_string(length) + " characters, " + toString(type) +
                           " takes " + std::to_string(type.bound)};
    }
    if (operand.text.find('\0') != std::string::npos) {
        throw OperandFault{"a string can not contain NUL"};
    }
    return operand.text;
}

} // namespace

Operand combined(std::string_view name, const Operand& left, const Operand& right)
{
    const auto* const leftInteger = std::get_if<Integer>(&left);
    const auto* const rightInteger = std::get_if<Integer>(&right);
    if (leftInteger != nullptr && rightInteger != nullptr) {
        return inRange(combinedIntegers(name, *leftInteger, *rightInteger));
    }
    if (!isNumber(left) || !isNumber(right)) {
        throw OperandFault{"\"" + std::string(name) + "\" takes numbers, not " +
                           nameOf(isNumber(left) ? right : left)};
    }
    return combinedNumbers(name, numberOf(left), numberOf(right));
}

Operand prefixed(std::string_view name, const Operand& operand, const Type& type)
{
    const auto* const integer = std::get_if<Integer>(&operand);
    if (name == "~" && integer == nullptr) {
        throw OperandFault{"\"~\" takes an integer, not " + nameOf(operand)};
    }
    if (!isNumber(operand)) {
        throw OperandFault{"\"" + std::string(name) + "\" takes a number, not " + nameOf(operand)};
    }
    if (name == "~") {
        const bool hasWidth = storageBits(type) != 0 && !isSigned(type.kind) && type.kind != TypeKind::Enum;
        return inRange(hasWidth ? rangeOf(type).most - *integer : -*integer - 1);
    }
    if (name == "+") {
        return operand;
    }
    return integer != nullptr ? Operand(inRange(-*integer)) : Operand(-std::get<double>(operand));
}

Value converted(const Operand& operand, const Type& type)
{
    const auto* const integer = std::get_if<Integer>(&operand);
    if (integer != nullptr && (isInteger(type.kind) || type.kind == TypeKind::Bitmask)) {
        return integerValue(*integer, type);
    }
    if (isNumber(operand) && isFloating(type.kind)) {
        return floatingValue(operand, type);
    }
    const auto* const boolean = std::get_if<bool>(&operand);
    if (boolean != nullptr && type.kind == TypeKind::Boolean) {
        return *boolean;
    }
    const auto* const character = std::get_if<CharacterOperand>(&operand);
    if (character != nullptr && type.kind == TypeKind::WChar) {
        return character->value;
    }
    if (character != nullptr && !character->wide && type.kind == TypeKind::Char) {
        return static_cast<char>(character->value);
    }
    const auto* const text = std::get_if<TextOperand>(&operand);
    const auto* const string = as<StringType>(type);
    if (text != nullptr && string != nullptr && (type.kind == TypeKind::WString || !text->wide)) {
        return textValue(*text, *string);
    }
    const auto* const enumerator = std::get_if<EnumeratorSymbol>(&operand);
    if (enumerator != nullptr && enumerator->type == &type) {
        return enumerator->enumerator;
    }
    refuse(operand, type);
}

Operand operandOf(const Value& value, const Type& type)
{
    struct Converter {
        const Type& type;

        Operand operator()(bool boolean) const { return boolean; }

        Operand operator()(char c) const { return CharacterOperand{static_cast<unsigned char>(c), false}; }

        Operand operator()(char32_t c) const { return CharacterOperand{c, true}; }

        Operand operator()(std::int64_t integer) const { return static_cast<Integer>(integer); }

        Operand operator()(std::uint64_t integer) const { return static_cast<Integer>(integer); }

        Operand operator()(double number) const { return number; }

        Operand operator()(const std::string& text) const
        {
            return TextOperand{text, type.kind == TypeKind::WString};
        }

        Operand operator()(const Enumerator* enumerator) const
        {
            return EnumeratorSymbol{as<EnumType>(type), enumerator};
        }
    };

    return std::visit(Converter{resolved(type)}, value);
}

std::string toString(Integer value)
{
    const bool negative = value < 0;
    std::string text;
    do {
        const auto digit = static_cast<int>(value % 10);
        text += static_cast<char>('0' + (digit < 0 ? -digit : digit));
        value /= 10;
    } while (value != 0);
    text += negative ? "-" : "";
    std::ranges::reverse(text);
    return text;
}

} // namespace ovra::plex::idl
