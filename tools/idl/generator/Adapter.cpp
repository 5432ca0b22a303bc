// SPDX-License-Identifier: Apache-2.0
#include "Declarations.hpp"
#include "Emitters.hpp"
#include "Headers.hpp"
#include "Slots.hpp"
#include "Template.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

std::string overrides(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        for (const Slot& slot : slotsOf(plan)) {
            text += "    " + slot.result + " " + slot.name + "(" + slot.parameters + ")" +
                    (slot.isConst ? " const" : "") + " override;\n";
        }
    }
    return text;
}

std::string fields(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += "    " + plan.wireType + "& " + plan.field + ";\n";
    }
    return text;
}

std::string initializers(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += ", " + plan.field + "(sample_->" + plan.name + "())";
    }
    return text;
}

std::string slotFunctions(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        for (const Slot& slot : slotsOf(plan)) {
            text += filledBlock(R"(
@result@ @Type@::@name@(@parameters@)@const@
{
    @body@
}

)",
                                {{"result", slot.result},
                                 {"Type", topic.name},
                                 {"name", slot.name},
                                 {"parameters", slot.parameters},
                                 {"const", slot.isConst ? " const" : ""},
                                 {"body", slot.body}});
        }
    }
    return text;
}

std::string assignments(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += "    " + plan.field + " = source." + plan.name + "();\n";
    }
    return text;
}

std::string copies(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += filledBlock(isSeenThroughPointer(plan) ? R"(
    if (const auto* const value = from.get@accessor@()) {
        to.make@accessor@() = *value;
    } else {
        to.reset@accessor@();
    }
)"
                                                       : R"(
    to.set@accessor@(from.get@accessor@());
)",
                            {{"accessor", plan.accessor}});
    }
    return text;
}

/// The parts of a key: its members, or what within them is annotated as key.
void addKeyParts(std::vector<std::string>& parts, const Member& member, const std::string& access)
{
    const auto* const structure = as<StructType>(resolved(*member.type));
    if (structure == nullptr || !structure->hasKey) {
        parts.push_back(access);
        return;
    }
    for (const auto& [inner, name] : namedMembers(*structure)) {
        if (inner->key) {
            addKeyParts(parts, *inner, std::string(access).append(".").append(name));
        }
    }
}

std::vector<std::string> keyParts(const TopicPlan& topic)
{
    std::vector<std::string> parts;
    for (const MemberPlan* const plan : topic.keys()) {
        addKeyParts(parts, *plan->member, plan->field);
    }
    return parts;
}

std::string keyComparison(const TopicPlan& topic)
{
    std::string text;
    for (const std::string& part : keyParts(topic)) {
        text.append(text.empty() ? "" : " && ").append(part).append(" == key.").append(part);
    }
    return text;
}

std::string keyAssignments(const TopicPlan& topic)
{
    std::string text;
    for (const std::string& part : keyParts(topic)) {
        text.append("    key->").append(part).append(" = ").append(part).append(";\n");
    }
    return text;
}

constexpr std::string_view withoutKey = R"(
bool @Type@::keyEquals(const ::@scope@::@Type@& /*other*/) const
{
    return false;
}

std::unique_ptr<::@scope@::@Type@> @Type@::cloneKey() const
{
    return std::make_unique<@Type@>();
}

bool @Type@::hasKey() const
{
    return false;
}

)";

constexpr std::string_view withKey = R"(
bool @Type@::keyEquals(const ::@scope@::@Type@& other) const
{
    auto logger = log4cplus::Logger::getInstance("@logger@");
    const auto& key = ovra::plex::ps::obtainImpl<::@scope@::@Type@, @Type@>(other, logger);
    return @comparison@;
}

std::unique_ptr<::@scope@::@Type@> @Type@::cloneKey() const
{
    auto key = std::make_unique<@Type@>();
@assignments@    return key;
}

bool @Type@::hasKey() const
{
    return true;
}

)";

std::string keyFunctions(const TopicPlan& topic)
{
    return filledBlock(topic.keys().empty() ? withoutKey : withKey, {{"scope", topic.scope},
                                                                     {"Type", topic.name},
                                                                     {"logger", topic.symbol},
                                                                     {"comparison", keyComparison(topic)},
                                                                     {"assignments", keyAssignments(topic)}});
}

} // namespace

std::string adapterHeader(const TopicPlan& topic)
{
    Headers headers{"\"" + topic.name + ".hpp\"", "\"" + topic.name + "PubSubType.hpp\"",
                    "<plex/Export.hpp>",          "<plex/module/SampleOwnership.hpp>",
                    "<" + topic.header + ">",     "<memory>"};
    for (const MemberPlan& plan : topic.members) {
        headers.addForSlots(plan);
    }
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
namespace generated::ddsimpl::@scope@
{

/// @article@ @Type@ of the application over a wire value that it owns, or borrows from DDS.
///
/// Threads: one at a time. A borrowing adapter must not outlive its loan.
class PLEX_EXPORT @Type@ : public ::@scope@::@Type@
{
public:
    using DdsType = generated::dds_::@scope@::@Type@;
    using PubSubType = generated::dds_::@scope@::@Type@PubSubType;

    /// Owns a new default wire value.
    /// @throws std::runtime_error "failed to create a DDS sample" when memory for it cannot be had.
    @Type@();

    /// Owns a copy of a wire value; throws as above.
    explicit @Type@(const DdsType& source);

    /// Views a wire value that somebody else owns.
    @Type@(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/);

    @Type@(const @Type@&) = delete;
    @Type@& operator=(const @Type@&) = delete;
    ~@Type@() override;

    std::unique_ptr<::@scope@::@Type@> clone() const override;
    bool keyEquals(const ::@scope@::@Type@& other) const override;
    std::unique_ptr<::@scope@::@Type@> cloneKey() const override;
    bool hasKey() const override;
@overrides@
    /// The wire value that this adapter views.
    DdsType& wire() noexcept { return *sample_; }

    const DdsType& wire() const noexcept { return *sample_; }

    /// Copies every field of a wire value into this one's.
    void assign(const DdsType& source);

    /// Copies every field from one value of the application to another, whoever made them.
    static void copy(const ::@scope@::@Type@& from, ::@scope@::@Type@& to);

private:
    using SamplePointer = std::unique_ptr<DdsType, void (*)(DdsType*)>;

    explicit @Type@(SamplePointer sample);

    SamplePointer sample_;
@fields@};

} // namespace generated::ddsimpl::@scope@
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"article", topic.name.find_first_of("AEIOU") == 0 ? "An" : "A"},
                        {"overrides", overrides(topic)},
                        {"fields", fields(topic)}});
}

std::string adapterSource(const TopicPlan& topic)
{
    Headers headers{"<utility>"};
    if (!topic.keys().empty()) {
        headers.add("<plex/ps/DataEntities.hpp>");
    }
    const auto isChecked = [](const MemberPlan& plan) {
        return plan.shape == Shape::Text || plan.shape == Shape::Sequence;
    };
    if (std::ranges::any_of(topic.members, isChecked)) {
        headers.add("<plex/module/Members.hpp>");
    }
    const std::string slots = slotFunctions(topic);
    std::set<std::string> ofSlots;
    addHeadersOfText(ofSlots, slots);
    std::ranges::for_each(ofSlots, [&headers](const std::string& name) { headers.add(name); });
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include "@Type@Adapter.hpp"

@includes@
namespace generated::ddsimpl::@scope@
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

@Type@::@Type@() : @Type@(SamplePointer(createSample<DdsType>(), ddsSampleDeleter<DdsType>)) {}

@Type@::@Type@(const DdsType& source)
    : @Type@(SamplePointer(createSample<DdsType>(source), ddsSampleDeleter<DdsType>))
{
}

@Type@::@Type@(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/)
    : @Type@(SamplePointer(&borrowed, noOpDeleter<DdsType>))
{
}

@Type@::@Type@(SamplePointer sample) : sample_(std::move(sample))@initializers@ {}

@Type@::~@Type@() = default;

std::unique_ptr<::@scope@::@Type@> @Type@::clone() const
{
    return std::make_unique<@Type@>(wire());
}

@keyFunctions@@slots@void @Type@::assign(const DdsType& @source@)
{
@assignments@}

void @Type@::copy(const ::@scope@::@Type@& @from@, ::@scope@::@Type@& @to@)
{
@copies@}

} // namespace generated::ddsimpl::@scope@
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"initializers", initializers(topic)},
                        {"keyFunctions", keyFunctions(topic)},
                        {"slots", slots},
                        {"source", parameterName("source", topic)},
                        {"from", parameterName("from", topic)},
                        {"to", parameterName("to", topic)},
                        {"assignments", assignments(topic)},
                        {"copies", copies(topic)}});
}

} // namespace ovra::plex::idl
