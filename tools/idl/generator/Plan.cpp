// SPDX-License-Identifier: Apache-2.0
#include "Plan.hpp"

#include "Names.hpp"
#include "Refusals.hpp"

#include <algorithm>
#include <map>

namespace ovra::plex::idl
{

namespace
{

void replaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

std::string ddsNameOf(const StructType& type, std::string pattern)
{
    replaceAll(pattern, "{module}", type.module->scopedName);
    replaceAll(pattern, "{type}", type.name);
    return pattern;
}

/// The modules around a type without the outermost, as folders.
std::string folderOf(const StructType& type)
{
    std::string folder;
    const auto path = modulePath(*type.module);
    for (std::size_t i = 1; i < path.size(); ++i) {
        folder += path[i] + "/";
    }
    return folder;
}

MemberPlan planOfMember(const Member& member)
{
    MemberPlan plan;
    plan.member = &member;
    plan.shape = shapeOf(*member.type);
    plan.accessor = accessorName(member.name);
    plan.valueType = cppType(*member.type);
    plan.wireType = cppType(member);
    return plan;
}

/// Gives names as they are to members that can have them, then to those that can not.
void nameMembers(TopicPlan& topic)
{
    NameScope names{topic.name, "sample_"};
    const auto nameThose = [&](bool asTheyAre) {
        for (MemberPlan& plan : topic.members) {
            const std::string& name = plan.member->name;
            if (asTheyAre == (cppName(name) == name && name != topic.name)) {
                plan.name = names.take(cppName(name));
            }
        }
    };
    nameThose(true);
    nameThose(false);
    for (MemberPlan& plan : topic.members) {
        plan.field = names.take(plan.name + "_");
    }
}

TopicPlan planOfTopic(const StructType& type, const GenerateOptions& options)
{
    TopicPlan topic;
    topic.type = &type;
    topic.name = cppName(type.name);
    topic.scope = namespaceOf(*type.module);
    topic.symbol = symbolOf(*type.module) + "_" + type.name;
    topic.folder = folderOf(type);
    topic.header = modulePath(*type.module).front() + "/" + topic.folder + topic.name + ".hpp";
    topic.ddsName = ddsNameOf(type, options.typeName);
    for (const Member* const member : allMembers(type)) {
        topic.members.push_back(planOfMember(*member));
    }
    nameMembers(topic);
    return topic;
}

} // namespace

std::vector<const MemberPlan*> TopicPlan::keys() const
{
    std::vector<const MemberPlan*> result;
    for (const MemberPlan& plan : members) {
        if (plan.member->key) {
            result.push_back(&plan);
        }
    }
    return result;
}

Plan planOf(const Model& model, const GenerateOptions& options, Diagnostics& diagnostics)
{
    Plan plan;
    Refusals refusals(model, diagnostics);
    for (const StructType* const type : topics(model, options.topics)) {
        if (refusals.accept(*type)) {
            plan.topics.push_back(planOfTopic(*type, options));
        }
    }
    if (plan.topics.empty() && diagnostics.errors() == 0) {
        refusals.refuseToDoNothing();
    }
    return plan;
}

} // namespace ovra::plex::idl
