// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Facts.hpp"
#include "Headers.hpp"
#include "Slots.hpp"
#include "Template.hpp"

namespace ovra::plex::idl
{

namespace
{

std::string slotDeclarations(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += "\n" + comment(documentationOf(*plan.member), 4);
        for (const Slot& slot : slotsOf(plan)) {
            text += "    virtual " + slot.result + " " + slot.name + "(" + slot.parameters + ")" +
                    (slot.isConst ? " const" : "") + " = 0;\n";
        }
    }
    return text;
}

} // namespace

std::string valueInterfaceHeader(const TopicPlan& topic)
{
    Headers headers{"<plex/DataEntity.hpp>", "<plex/Export.hpp>"};
    for (const MemberPlan& plan : topic.members) {
        headers.addForSlots(plan);
    }
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
namespace @scope@
{

@documentation@class PLEX_EXPORT @Type@ : public ovra::plex::ps::DataEntity<@Type@>
{
public:
    ~@Type@() override;
@slots@};

} // namespace @scope@
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"documentation", comment(documentationOf(topic))},
                        {"slots", slotDeclarations(topic)}});
}

std::string valueInterfaceSource(const TopicPlan& topic)
{
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include <@header@>

namespace @scope@
{

@Type@::~@Type@() = default;

} // namespace @scope@
)",
                       {{"header", topic.header}, {"scope", topic.scope}, {"Type", topic.name}});
}

} // namespace ovra::plex::idl
