// SPDX-License-Identifier: Apache-2.0
#include "Declarations.hpp"

#include "Facts.hpp"
#include "Names.hpp"
#include "Template.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

std::string initializer(const std::string& value)
{
    return value.empty() || value == "{}" ? value : " = " + value;
}

/// The members of an enum or a bitmask: "A = 0,".
template <class Entries, class ValueOf>
std::string enumerators(const Entries& entries, ValueOf valueOf)
{
    std::string text;
    for (const auto& entry : entries) {
        text +=
            comment(entry.documentation, 4) + "    " + cppName(entry.name) + " = " + valueOf(entry) + ",\n";
    }
    return text;
}

std::string labelsOf(const EnumType& type)
{
    std::string text;
    for (const Enumerator& each : type.enumerators) {
        text += "    case " + declaredName(type.name) + "::" + cppName(each.name) + ":\n";
    }
    return text;
}

std::string namesOf(const EnumType& type)
{
    std::string text;
    for (const Enumerator& each : type.enumerators) {
        text += "    case " + declaredName(type.name) + "::" + cppName(each.name) + ":\n        return " +
                quoted(each.name) + ";\n";
    }
    return text;
}

/// "left.a == right.a && …".
std::string comparison(const std::vector<NamedMember>& members)
{
    std::string text;
    for (const NamedMember& each : members) {
        text += (text.empty() ? "" : " && ") + ("left." + each.name) + " == right." + each.name;
    }
    return text.empty() ? "true" : text;
}

std::string memberDeclarations(const std::vector<NamedMember>& members)
{
    std::string text;
    for (const auto& [member, name] : members) {
        text += comment(documentationOf(*member), 4) + "    " + cppType(*member) + " " + name +
                initializer(initialValue(*member)) + ";\n";
    }
    return text;
}

/// "discriminator == A || discriminator == B".
std::string isSelected(const UnionType& type, const UnionCase& unionCase)
{
    std::string text;
    for (const Label& label : unionCase.labels) {
        text +=
            (text.empty() ? "" : " || ") + ("discriminator == " + cppValue(*type.discriminator, label.value));
    }
    return text;
}

/// What a new value of a case is made of, as the argument of a call; nothing where its type does that by
/// itself.
std::string initialArgument(const UnionCase& unionCase)
{
    const std::string value = initialValue(unionCase);
    return value == "{}" ? "" : value;
}

std::string alternative(const NamedCase& each, std::size_t index)
{
    return "value_.emplace<" + std::to_string(index) + ">(" + initialArgument(*each.unionCase) + ");\n";
}

/// What select() does: the cases in their order, with the default one behind them.
std::string selection(const UnionType& type, const std::vector<NamedCase>& cases)
{
    std::string text;
    std::string otherwise = "            return false;\n";
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const UnionCase& each = *cases[i].unionCase;
        if (each.isDefault) {
            otherwise = "            " + alternative(cases[i], i + 1);
        } else {
            text += (text.empty() ? "if (" : " else if (") + isSelected(type, each) + ") {\n            " +
                    alternative(cases[i], i + 1) + "        }";
        }
    }
    const TypeKind kind = resolved(*type.discriminator).kind;
    const bool isListed = kind == TypeKind::Enum || kind == TypeKind::Boolean; // each value of which is known
    if (isListed && otherwise.find("return") != std::string::npos) {
        otherwise = kind == TypeKind::Enum
                        ? "            if (!isKnown(discriminator)) {\n                return false;\n"
                          "            }\n            value_.emplace<0>();\n"
                        : "            value_.emplace<0>();\n";
    }
    return text.empty() ? "        {\n" + otherwise + "        }\n"
                        : "        " + text + " else {\n" + otherwise + "        }\n";
}

/// What a discriminator is at first, as its number in two's complement.
std::uint64_t initialBits(const Type& discriminator)
{
    const auto* const enumeration = as<EnumType>(resolved(discriminator));
    if (enumeration == nullptr) {
        return 0;
    }
    const auto chosen = std::ranges::find_if(enumeration->enumerators, &Enumerator::isDefault);
    return static_cast<std::uint64_t>(std::int64_t{chosen->value});
}

/// The label that a new union has: its discriminator's own start where the union takes that, else the first.
/// @returns the case that it selects; null: none.
const UnionCase* firstCase(const UnionType& type, std::string& label)
{
    const std::uint64_t bits = initialBits(*type.discriminator);
    if (type.takes(bits)) {
        label = initialValue(*type.discriminator);
        return type.caseOf(bits);
    }
    const UnionCase& first = type.cases.front();
    label = cppValue(*type.discriminator, first.labels.front().value);
    return &first;
}

/// A label that selects a case; none is left for a default where all values are labels.
const Label* labelOf(const UnionType& type, const UnionCase& each)
{
    if (!each.labels.empty()) {
        return &each.labels.front();
    }
    return type.unusedLabel ? &*type.unusedLabel : nullptr;
}

std::string caseSetter(const UnionType& type, const NamedCase& each, std::size_t index)
{
    const Label* const label = labelOf(type, *each.unionCase);
    if (label == nullptr) {
        return {};
    }
    const bool isSmall = shapeOf(*each.unionCase->type) == Shape::Small;
    return filledBlock(R"(
    void @name@(@type@ value)
    {
        if (!@test@()) {
            discriminator_ = @label@;
        }
        value_.emplace<@index@>(@value@);
    }

)",
                       {{"test", each.test},
                        {"index", std::to_string(index)},
                        {"type", cppType(*each.unionCase->type)},
                        {"name", each.name},
                        {"label", cppValue(*type.discriminator, label->value)},
                        {"value", isSmall ? "value" : "std::move(value)"}});
}

std::string caseFunctions(const UnionType& type, const std::vector<NamedCase>& cases)
{
    std::string text;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const NamedCase& each = cases[i];
        text += filledBlock(R"(
    bool @test@() const { return value_.index() == @index@; }

@documentation@    /// @throws std::bad_variant_access where another member is there.
    const @type@& @name@() const { return std::get<@index@>(value_); }

    @type@& @name@() { return std::get<@index@>(value_); }

@setter@)",
                            {{"test", each.test},
                             {"index", std::to_string(i + 1)},
                             {"documentation", comment(each.unionCase->documentation, 4)},
                             {"type", cppType(*each.unionCase->type)},
                             {"name", each.name},
                             {"setter", caseSetter(type, each, i + 1)}});
    }
    return text;
}

std::string alternatives(const std::vector<NamedCase>& cases)
{
    std::string text = "std::monostate";
    for (const NamedCase& each : cases) {
        text += ", " + cppType(*each.unionCase->type);
    }
    return text;
}

std::string firstAlternative(const std::vector<NamedCase>& cases, const UnionCase* first)
{
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (cases[i].unionCase == first) {
            const std::string value = initialArgument(*first);
            return "std::in_place_index<" + std::to_string(i + 1) + ">" + (value.empty() ? "" : ", " + value);
        }
    }
    return {};
}

} // namespace

std::vector<NamedMember> namedMembers(const StructType& type)
{
    NameScope names{declaredName(type.name)};
    const auto members = allMembers(type);
    std::vector<NamedMember> result(members.size());
    std::ranges::transform(members, result.begin(),
                           [](const Member* member) { return NamedMember{member, {}}; });
    for (const bool asTheyAre : {true, false}) {
        for (NamedMember& each : result) {
            const std::string name = cppName(each.member->name);
            if (asTheyAre == (name == each.member->name)) {
                each.name = names.take(name);
            }
        }
    }
    return result;
}

std::vector<NamedCase> namedCases(const UnionType& type)
{
    NameScope names{declaredName(type.name), "discriminator", "select", "discriminator_", "value_"};
    std::vector<NamedCase> result;
    result.reserve(type.cases.size());
    for (const UnionCase& each : type.cases) {
        result.push_back({&each, names.take(cppName(each.name)), {}});
    }
    for (NamedCase& each : result) {
        each.test = names.take("is" + accessorName(each.unionCase->name));
    }
    return result;
}

std::string enumDeclaration(const EnumType& type)
{
    return filledBlock(
        R"(
@documentation@enum class @Type@ : @underlying@ {
@enumerators@};

/// Whether a value is one of the enumerators.
constexpr bool isKnown(@Type@ value)
{
    switch (value) {
@labels@        return true;
    }
    return false;
}

/// The name of an enumerator; empty for any other value.
constexpr std::string_view toString(@Type@ value)
{
    switch (value) {
@names@    }
    return {};
}
)",
        {{"documentation", comment(type.documentation)},
         {"Type", declaredName(type.name)},
         {"underlying", underlyingType(type)},
         {"enumerators",
          enumerators(type.enumerators, [](const Enumerator& each) { return std::to_string(each.value); })},
         {"labels", labelsOf(type)},
         {"names", namesOf(type)}});
}

std::string bitmaskDeclaration(const BitmaskType& type)
{
    const std::string underlying = underlyingType(type);
    const auto valueOf = [&](const BitFlag& flag) {
        return underlying + "{" + std::to_string(std::uint64_t{1} << flag.position) + "U}";
    };
    return filledBlock(R"(
@documentation@enum class @Type@ : @underlying@ {
@flags@};

constexpr @Type@ operator|(@Type@ left, @Type@ right)
{
    return static_cast<@Type@>(static_cast<@underlying@>(left) | static_cast<@underlying@>(right));
}

constexpr @Type@ operator&(@Type@ left, @Type@ right)
{
    return static_cast<@Type@>(static_cast<@underlying@>(left) & static_cast<@underlying@>(right));
}

constexpr @Type@ operator^(@Type@ left, @Type@ right)
{
    return static_cast<@Type@>(static_cast<@underlying@>(left) ^ static_cast<@underlying@>(right));
}

/// Whether all flags of the second one are set in the first.
constexpr bool has(@Type@ value, @Type@ flags)
{
    return (value & flags) == flags;
}

/// Any combination of bits is taken.
constexpr bool isKnown(@Type@ /*value*/)
{
    return true;
}
)",
                       {{"documentation", comment(type.documentation)},
                        {"Type", declaredName(type.name)},
                        {"underlying", underlying},
                        {"flags", enumerators(type.flags, valueOf)}});
}

std::string structDeclaration(const StructType& type)
{
    const auto members = namedMembers(type);
    const bool isEmpty = members.empty();
    return filledBlock(R"(
@documentation@struct @Type@ {
@members@};

inline bool operator==(const @Type@& @left@, const @Type@& @right@)
{
    return @comparison@;
}

inline bool operator!=(const @Type@& left, const @Type@& right)
{
    return !(left == right);
}
)",
                       {{"documentation", comment(type.documentation)},
                        {"Type", declaredName(type.name)},
                        {"members", memberDeclarations(members)},
                        {"left", isEmpty ? "/*left*/" : "left"},
                        {"right", isEmpty ? "/*right*/" : "right"},
                        {"comparison", comparison(members)}});
}

std::string unionDeclaration(const UnionType& type)
{
    const auto cases = namedCases(type);
    std::string label;
    const UnionCase* const first = firstCase(type, label);
    return filledBlock(R"(
@documentation@class @Type@
{
public:
    /// Which member is there.
    @discriminator@ discriminator() const { return discriminator_; }

    /// Makes the member that a discriminator selects, with its default; none for one that has no member.
    /// @returns false, with nothing changed, for a discriminator that the type does not have.
    bool select(@discriminator@ discriminator)
    {
@selection@        discriminator_ = discriminator;
        return true;
    }

@functions@    friend bool operator==(const @Type@& left, const @Type@& right)
    {
        return left.discriminator_ == right.discriminator_ && left.value_ == right.value_;
    }

    friend bool operator!=(const @Type@& left, const @Type@& right) { return !(left == right); }

private:
    @discriminator@ discriminator_ = @label@;
    std::variant<@alternatives@> value_{@value@};
};
)",
                       {{"documentation", comment(type.documentation)},
                        {"Type", declaredName(type.name)},
                        {"discriminator", cppType(*type.discriminator)},
                        {"selection", selection(type, cases)},
                        {"functions", caseFunctions(type, cases)},
                        {"label", label},
                        {"alternatives", alternatives(cases)},
                        {"value", firstAlternative(cases, first)}});
}

std::string aliasDeclaration(const AliasType& type)
{
    return comment(type.documentation) + "using " + declaredName(type.name) + " = " + cppType(*type.target) +
           ";\n";
}

std::string constantDeclaration(const Constant& constant)
{
    const bool isText = resolved(*constant.type).kind == TypeKind::String;
    return comment(constant.documentation) + "inline constexpr " +
           (isText ? "std::string_view" : cppType(*constant.type)) + " " + declaredName(constant.name) +
           " = " + cppValue(*constant.type, constant.value) + ";\n";
}

void addHeadersOf(std::set<std::string>& headers, const NamedType& type)
{
    if (const auto* const structure = as<StructType>(type)) {
        for (const Member* const member : allMembers(*structure)) {
            addHeaders(headers, *member);
        }
    } else if (const auto* const choice = as<UnionType>(type)) {
        headers.insert({"<utility>", "<variant>"});
        addHeaders(headers, *choice->discriminator);
        for (const UnionCase& each : choice->cases) {
            addHeaders(headers, *each.type);
        }
    } else if (const auto* const alias = as<AliasType>(type)) {
        addHeaders(headers, *alias->target);
    } else {
        headers.insert("<cstdint>");
        if (type.kind == TypeKind::Enum) {
            headers.insert("<string_view>");
        }
    }
}

} // namespace ovra::plex::idl
