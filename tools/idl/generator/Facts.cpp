// SPDX-License-Identifier: Apache-2.0
#include "Facts.hpp"

#include <plex/idl/Encoding.hpp>

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

/// Unit and range of a member, or of the alias that its type is.
const Quantity& quantityOf(const Member& member)
{
    const auto says = [](const Quantity& quantity) {
        return !quantity.unit.empty() || quantity.minimum || quantity.maximum;
    };
    const auto* const alias = as<AliasType>(*member.type);
    return !says(member) && alias != nullptr ? static_cast<const Quantity&>(*alias) : member;
}

void addRange(std::string& facts, const Quantity& quantity)
{
    if (quantity.minimum && quantity.maximum) {
        facts += "from " + toString(*quantity.minimum) + " to " + toString(*quantity.maximum) + "; ";
    } else if (quantity.minimum) {
        facts += "at least " + toString(*quantity.minimum) + "; ";
    } else if (quantity.maximum) {
        facts += "at most " + toString(*quantity.maximum) + "; ";
    }
}

void addBound(std::string& facts, const Type& type)
{
    const auto* const text = as<StringType>(type);
    const auto* const sequence = as<SequenceType>(type);
    if (text != nullptr && text->bound > 0) {
        facts += "at most " + std::to_string(text->bound) + " characters; ";
    } else if (sequence != nullptr && boundOf(*sequence) > 0) {
        facts += "at most " + std::to_string(boundOf(*sequence)) + " elements; ";
    }
}

/// Empty for what is made of others, which have their own.
std::string defaultOf(const Member& member)
{
    const Type& type = resolved(*member.type);
    if (member.optional) {
        return "absent";
    }
    if (member.defaultValue) {
        return toString(*member.defaultValue);
    }
    if (const auto* const enumeration = as<EnumType>(type)) {
        return std::ranges::find_if(enumeration->enumerators, &Enumerator::isDefault)->name;
    }
    switch (type.kind) {
    case TypeKind::Boolean:
        return "false";
    case TypeKind::String:
    case TypeKind::Sequence:
        return "empty";
    case TypeKind::Char:
        return "NUL";
    case TypeKind::Struct:
    case TypeKind::Union:
    case TypeKind::Array:
        return {};
    default:
        return "0";
    }
}

/// As a sentence, without the separator behind it.
std::string sentenceOf(std::string text)
{
    if (text.empty()) {
        return text;
    }
    text.replace(text.size() - 2, 2, ".");
    text[0] = text[0] >= 'a' && text[0] <= 'z' ? static_cast<char>(text[0] - 'a' + 'A') : text[0];
    return text;
}

std::string summaryOf(const TopicPlan& topic)
{
    const std::string& text = topic.type->documentation;
    return text.empty() ? "A value of " + topic.type->scopedName + "." : text;
}

std::string listOf(const std::vector<const MemberPlan*>& keys)
{
    std::string text;
    for (const MemberPlan* const key : keys) {
        if (!text.empty()) {
            text += key == keys.back() ? " and " : ", ";
        }
        text += key->member->name;
    }
    return text;
}

} // namespace

std::string factsOf(const Member& member)
{
    const Quantity& quantity = quantityOf(member);
    std::string facts = member.key ? "key; " : "";
    facts += member.optional ? "optional; " : "";
    facts += quantity.unit.empty() ? "" : "in " + quantity.unit + "; ";
    addRange(facts, quantity);
    addBound(facts, resolved(*member.type));
    const std::string initial = defaultOf(member);
    facts += initial.empty() ? "" : "default " + initial + "; ";
    return sentenceOf(facts);
}

std::string documentationOf(const Member& member)
{
    const std::string& text = member.documentation;
    const std::string facts = factsOf(member);
    if (text.empty() || facts.empty()) {
        return text + facts;
    }
    return text.find("default") == std::string::npos ? text + "\n" + facts : text;
}

std::string documentationOf(const TopicPlan& topic)
{
    return topic.keys().empty() ? summaryOf(topic) : summaryOf(topic) + "\n" + keySentenceOf(topic);
}

std::string firstSentenceOf(const TopicPlan& topic)
{
    std::string text = summaryOf(topic);
    std::ranges::replace(text, '\n', ' ');
    return text.substr(0, std::min(text.find(". "), text.find_last_not_of(". ") + 1));
}

std::string keySentenceOf(const TopicPlan& topic)
{
    const auto keys = topic.keys();
    return keys.empty() ? "The type has no key." : "The key is made of " + listOf(keys) + ".";
}

} // namespace ovra::plex::idl
