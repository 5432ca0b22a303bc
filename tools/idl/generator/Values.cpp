// SPDX-License-Identifier: Apache-2.0
#include "Values.hpp"

#include "Declarations.hpp"
#include "Headers.hpp"
#include "Names.hpp"
#include "Sizes.hpp"
#include "Template.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

std::string inNamespace(const std::string& scope, const std::string& text)
{
    return "namespace " + scope + "\n{\n\n" + text + "\n} // namespace " + scope + "\n\n";
}

/// A struct is called Name where it is no topic, and values::Name in any case.
std::string structText(const Plan& plan, const StructType& type)
{
    const std::string scope = namespaceOf(*type.module);
    const std::string text = inNamespace(scope + "::values", structDeclaration(type));
    return plan.isTopic(type) ? text
                              : text + inNamespace(scope, "using values::" + declaredName(type.name) + ";\n");
}

std::string textOf(const Plan& plan, const NamedType& type)
{
    const std::string scope = namespaceOf(*type.module);
    if (const auto* const structure = as<StructType>(type)) {
        return structText(plan, *structure);
    }
    if (const auto* const choice = as<UnionType>(type)) {
        return inNamespace(scope, unionDeclaration(*choice));
    }
    if (const auto* const enumeration = as<EnumType>(type)) {
        return inNamespace(scope, enumDeclaration(*enumeration));
    }
    if (const auto* const bitmask = as<BitmaskType>(type)) {
        return inNamespace(scope, bitmaskDeclaration(*bitmask));
    }
    const auto* const alias = as<AliasType>(type);
    return alias == nullptr ? "" : inNamespace(scope, aliasDeclaration(*alias));
}

/// The headers of all declarations but their own. @param text of the declarations.
std::string includesOf(const Plan& plan, const std::string& text)
{
    std::set<std::string> names;
    addHeadersOfText(names, text);
    for (const NamedType* const type : plan.declared) {
        addHeadersOf(names, *type);
    }
    for (const Constant* const constant : plan.constants) {
        addHeaders(names, *constant->type);
        names.insert("<string_view>");
    }
    for (const std::string& module : modulesOf(plan)) {
        names.erase("<" + module + "/Values.hpp>");
    }
    Headers headers{};
    for (const std::string& name : names) {
        headers.add(name);
    }
    return headers.text();
}

std::string ruleOf(const Type& type, const EncodingRules& rules);

/// Without what it says of a delimiter.
std::string plainRuleOf(const Type& type, const EncodingRules& rules)
{
    if (const auto* const text = as<StringType>(type)) {
        return text->bound == 0 ? "Any" : "Text<" + std::to_string(text->bound) + ">";
    }
    if (const auto* const sequence = as<SequenceType>(type)) {
        const std::string element = ruleOf(*sequence->element, rules);
        const std::uint32_t bound = boundOf(*sequence);
        return bound == 0 && element == "Any" ? "Any"
                                              : "List<" + element + ", " + std::to_string(bound) + ">";
    }
    if (const auto* const array = as<ArrayType>(type)) {
        std::string rule = ruleOf(*array->element, rules);
        for (std::size_t i = 0; rule != "Any" && i < array->dimensions.size(); ++i) {
            rule.insert(0, "Each<").append(">");
        }
        return rule;
    }
    return "Any";
}

std::string ruleOf(const Type& type, const EncodingRules& rules)
{
    const Type& known = resolved(type);
    const std::string rule = plainRuleOf(known, rules);
    return rules.delimitsEnumerations && isListOfEnumerations(known) ? "Delimited<" + rule + ">" : rule;
}

std::string visitOf(const Member& member, const std::string& access, bool withDefault,
                    const EncodingRules& rules)
{
    const std::string rule = ruleOf(*member.type, rules);
    const std::string initial = initialValue(member);
    const TypeKind kind = resolved(*member.type).kind;
    const bool isSpecial =
        member.defaultValue || kind == TypeKind::Enum || (kind == TypeKind::Array && initial != "{}");
    std::string field = std::to_string(member.id);
    if (member.mustUnderstand) {
        field += ", " + rule + ", true";
    } else if (rule != "Any") {
        field += ", " + rule;
    }
    return "        visit(Field<" + field + ">(), value." + access +
           (withDefault && isSpecial && !member.optional ? ", " + initial : "") + ");\n";
}

/// A member, and how it is reached from "value.".
struct Access {
    const Member* member;
    std::string text;
};

std::string visits(const std::vector<Access>& members, const EncodingRules& rules)
{
    std::string text;
    for (const auto& [member, access] : members) {
        text += visitOf(*member, access, true, rules);
    }
    return text;
}

/// Those of the key members, or where there are none, of all, by ascending id.
std::string keyVisits(std::vector<Access> members, const EncodingRules& rules)
{
    const bool hasKey = std::ranges::any_of(members, [](const Access& each) { return each.member->key; });
    std::erase_if(members, [hasKey](const Access& each) { return hasKey && !each.member->key; });
    std::ranges::stable_sort(members, {}, [](const Access& each) { return each.member->id; });
    std::string text;
    for (const auto& [member, access] : members) {
        text += visitOf(*member, access, false, rules);
    }
    return text;
}

/// Only what may be an element of a sequence says it.
std::string leastSizesText(const NamedType& type, LeastSizes& sizes)
{
    return "    static constexpr std::array<std::size_t, 2> leastSizes{" +
           std::to_string(sizes.of(type, XcdrVersion::Xcdr1)) + ", " +
           std::to_string(sizes.of(type, XcdrVersion::Xcdr2)) + "};\n";
}

std::string structFields(const std::string& type, Extensibility extensibility, const std::string& leastSizes,
                         const std::vector<Access>& members, const EncodingRules& rules)
{
    return filledBlock(R"(
template <>
struct Fields<@type@> {
    static constexpr Extensibility extensibility = Extensibility::@extensibility@;
@leastSizes@
    template <class Value, class Visit>
    static void forEach(Value& @value@, const Visit& @visit@)
    {
@visits@    }

    template <class Value, class Visit>
    static void forEachKey(Value& @value@, const Visit& @visit@)
    {
@keyVisits@    }
};

)",
                       {{"type", type},
                        {"extensibility", nameInCode(extensibility)},
                        {"leastSizes", leastSizes},
                        {"value", members.empty() ? "/*value*/" : "value"},
                        {"visit", members.empty() ? "/*visit*/" : "visit"},
                        {"visits", visits(members, rules)},
                        {"keyVisits", keyVisits(members, rules)}});
}

std::string caseVisits(const UnionType& type, const EncodingRules& rules)
{
    std::string text;
    for (const NamedCase& each : namedCases(type)) {
        text += std::string(text.empty() ? "        if" : " else if") + " (value." + each.test +
                "()) {\n    " + visitOf(*each.unionCase, each.name + "()", false, rules) + "        }";
    }
    return text + "\n";
}

std::string unionFields(const UnionType& type, const std::string& leastSizes, const EncodingRules& rules)
{
    return filledBlock(R"(
template <>
struct Fields<@type@> {
    static constexpr Extensibility extensibility = Extensibility::@extensibility@;
@leastSizes@    static constexpr bool isUnion = true;
    static constexpr bool discriminatorIsKey = @isKey@;

    static @discriminator@ discriminator(const @type@& value) { return value.discriminator(); }

    static bool select(@type@& value, @discriminator@ discriminator) { return value.select(discriminator); }

    template <class Value, class Visit>
    static void visitCase(Value& value, const Visit& visit)
    {
@visits@    }
};

)",
                       {{"type", cppType(type)},
                        {"extensibility", nameInCode(type.extensibility)},
                        {"leastSizes", leastSizes},
                        {"isKey", type.discriminatorIsKey ? "true" : "false"},
                        {"discriminator", cppType(*type.discriminator)},
                        {"visits", caseVisits(type, rules)}});
}

std::string fieldsOf(const NamedType& type, LeastSizes& sizes, const EncodingRules& rules)
{
    const std::string leastSizes = leastSizesText(type, sizes);
    const auto* const structure = as<StructType>(type);
    if (structure == nullptr) {
        return unionFields(*as<UnionType>(type), leastSizes, rules);
    }
    std::vector<Access> members;
    for (const auto& [member, name] : namedMembers(*structure)) {
        members.push_back({member, name});
    }
    return structFields(cppType(type), structure->extensibility, leastSizes, members, rules);
}

} // namespace

std::string nameInCode(Extensibility extensibility)
{
    switch (extensibility) {
    case Extensibility::Final:
        return "Final";
    case Extensibility::Appendable:
        return "Appendable";
    case Extensibility::Mutable:
        break;
    }
    return "Mutable";
}

std::vector<std::string> modulesOf(const Plan& plan)
{
    std::vector<std::string> modules;
    const auto add = [&modules](const Module& module) {
        const auto path = modulePath(module);
        if (!path.empty() && std::ranges::find(modules, path.front()) == modules.end()) {
            modules.push_back(path.front());
        }
    };
    for (const NamedType* const type : plan.declared) {
        add(*type->module);
    }
    for (const Constant* const constant : plan.constants) {
        add(*constant->module);
    }
    return modules;
}

std::string valuesText(const Plan& plan, const std::string& module)
{
    const std::string start = "// SPDX-License-Identifier: Apache-2.0\n#pragma once\n\n";
    const std::string first = modulesOf(plan).front();
    if (module != first) {
        return start + "#include <" + first + "/Values.hpp>\n";
    }
    std::string text;
    for (const NamedType* const type : plan.declared) {
        text += textOf(plan, *type);
    }
    for (const Constant* const constant : plan.constants) {
        const std::string scope = namespaceOf(*constant->module);
        const std::string declaration = constantDeclaration(*constant);
        text += scope.empty() ? declaration + "\n" : inNamespace(scope, declaration);
    }
    text.pop_back(); // the empty line behind the last one
    const std::string includes = includesOf(plan, text);
    return start + includes + (includes.empty() ? "" : "\n") + text;
}

std::string fieldsText(const Plan& plan)
{
    Headers headers{"<plex/module/CdrFields.hpp>"};
    LeastSizes sizes;
    std::string text;
    for (const NamedType* const type : plan.encoded) {
        headers.add("<" + valuesHeader(*type->module) + ">");
        text += fieldsOf(*type, sizes, plan.rules);
    }
    if (!text.empty()) {
        headers.add("<array>");
        headers.add("<cstddef>");
    }
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
// What is within topics, as the codec sees it.
#pragma once

@includes@
namespace ovra::plex::ps::cdr
{

@fields@} // namespace ovra::plex::ps::cdr
)",
                       {{"includes", headers.text()}, {"fields", text}});
}

std::string topicFieldsText(const TopicPlan& topic)
{
    std::vector<Access> members(topic.members.size());
    std::ranges::transform(topic.members, members.begin(),
                           [](const MemberPlan& plan) { return Access{plan.member, plan.name + "()"}; });
    return structFields("generated::dds_::" + topic.scope + "::" + topic.name, topic.type->extensibility, "",
                        members, topic.rules);
}

} // namespace ovra::plex::idl
