// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Facts.hpp"
#include "Headers.hpp"
#include "Template.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

/// Numbers and the like are handed over by value, all else by reference to read and by value to keep.
bool isByValue(const MemberPlan& plan)
{
    return plan.shape == Shape::Small;
}

std::string readType(const MemberPlan& plan)
{
    return isByValue(plan) ? plan.wireType : "const " + plan.wireType + "&";
}

std::string declarations(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += filledBlock(R"(
@documentation@    void @name@(@type@ value) noexcept;
    @readType@ @name@() const noexcept;
    @type@& @name@() noexcept;

)",
                            {{"documentation", comment(factsOf(*plan.member), 4)},
                             {"name", plan.name},
                             {"type", plan.wireType},
                             {"readType", readType(plan)}});
    }
    return text;
}

std::string fields(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        const std::string value = initialValue(*plan.member);
        const std::string initializer = value.empty() || value == "{}" ? value : " = " + value;
        text += "    " + plan.wireType + " " + plan.field + initializer + ";\n";
    }
    return text;
}

std::string definitions(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += filledBlock(R"(
void @Type@::@name@(@type@ value) noexcept
{
    @field@ = @value@;
}

@readType@ @Type@::@name@() const noexcept
{
    return @field@;
}

@type@& @Type@::@name@() noexcept
{
    return @field@;
}

)",
                            {{"Type", topic.name},
                             {"name", plan.name},
                             {"type", plan.wireType},
                             {"field", plan.field},
                             {"value", isByValue(plan) ? "value" : "std::move(value)"},
                             {"readType", readType(plan)}});
    }
    return text;
}

std::string comparison(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += (text.empty() ? "" : " && ") + plan.field + " == other." + plan.field;
    }
    return text.empty() ? "true" : text;
}

std::string comparisonNote(const TopicPlan& topic)
{
    return holdsFloating(*topic.type)
               ? "Member by member with floating-point ==, so a value that holds a NaN differs from itself."
               : "Member by member.";
}

} // namespace

std::string wireTypeHeader(const TopicPlan& topic)
{
    Headers headers{"<plex/Export.hpp>"};
    for (const MemberPlan& plan : topic.members) {
        headers.addForValue(plan);
    }
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
namespace generated::dds_::@scope@
{

@documentation@class PLEX_EXPORT @Type@
{
public:
    @Type@();
    @Type@(const @Type@&);
    @Type@(@Type@&&) noexcept;
    @Type@& operator=(const @Type@&);
    @Type@& operator=(@Type@&&) noexcept;
    ~@Type@();

@members@@comparisonNote@    bool operator==(const @Type@& other) const noexcept;
    bool operator!=(const @Type@& other) const noexcept;

private:
@fields@};

} // namespace generated::dds_::@scope@
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"documentation", comment(firstSentenceOf(topic) + ", as it travels over DDS. " +
                                                  keySentenceOf(topic))},
                        {"members", declarations(topic)},
                        {"comparisonNote", comment(comparisonNote(topic), 4)},
                        {"fields", fields(topic)}});
}

std::string wireTypeSource(const TopicPlan& topic)
{
    const bool moves = !std::ranges::all_of(topic.members, isByValue);
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include "@Type@.hpp"
@utility@
namespace generated::dds_::@scope@
{

@Type@::@Type@() = default;
@Type@::@Type@(const @Type@&) = default;
@Type@::@Type@(@Type@&&) noexcept = default;
@Type@& @Type@::operator=(const @Type@&) = default;
@Type@& @Type@::operator=(@Type@&&) noexcept = default;
@Type@::~@Type@() = default;

@members@bool @Type@::operator==(const @Type@& @other@) const noexcept
{
    return @comparison@;
}

bool @Type@::operator!=(const @Type@& other) const noexcept
{
    return !(*this == other);
}

} // namespace generated::dds_::@scope@
)",
                       {{"scope", topic.scope},
                        {"Type", topic.name},
                        {"other", parameterName("other", topic)},
                        {"utility", moves ? "\n#include <utility>\n" : ""},
                        {"members", definitions(topic)},
                        {"comparison", comparison(topic)}});
}

} // namespace ovra::plex::idl
