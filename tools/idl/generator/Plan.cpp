// SPDX-License-Identifier: Apache-2.0
#include "Plan.hpp"

#include "Names.hpp"
#include "Refusals.hpp"
#include "Warnings.hpp"

#include <plex/idl/Definition.hpp>

#include <algorithm>
#include <iterator>
#include <unordered_set>

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

/// The modules around a type, as folders.
std::string folderOf(const StructType& type)
{
    std::string folder;
    for (const std::string& name : modulePath(*type.module)) {
        folder += name + "/";
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

EncodingRules rulesOf(const GenerateOptions& options)
{
    return {options.delimitsEnumerations.value_or(false), options.keyVersion.value_or(XcdrVersion::Xcdr1)};
}

/// @param outermost the module that has no folder below dds/.
TopicPlan planOfTopic(const Model& model, const StructType& type, const std::string& outermost,
                      const GenerateOptions& options)
{
    TopicPlan topic;
    topic.type = &type;
    topic.name = declaredName(type.name);
    topic.scope = namespaceOf(*type.module);
    topic.symbol = symbolOf(*type.module) + "_" + topic.name;
    topic.folder = folderOf(type);
    topic.header = topic.folder + topic.name + ".hpp";
    if (topic.folder.starts_with(outermost + "/")) {
        topic.folder.erase(0, outermost.size() + 1);
    }
    topic.ddsName = ddsNameOf(type, options.typeName);
    topic.definition = definitionOf(model, {&type});
    topic.rules = rulesOf(options);
    for (const Member* const member : allMembers(type)) {
        topic.members.push_back(planOfMember(*member));
    }
    nameMembers(topic);
    return topic;
}

using Types = std::unordered_set<const Type*>;

void addEncoded(Types& types, const Type& type)
{
    const Type& known = resolved(type);
    if (const auto* const sequence = as<SequenceType>(known)) {
        addEncoded(types, *sequence->element);
    } else if (const auto* const array = as<ArrayType>(known)) {
        addEncoded(types, *array->element);
    } else if (const auto* const structure = as<StructType>(known);
               structure != nullptr && types.insert(&known).second) {
        for (const Member* const member : allMembers(*structure)) {
            addEncoded(types, *member->type);
        }
    } else if (const auto* const choice = as<UnionType>(known);
               choice != nullptr && types.insert(&known).second) {
        for (const UnionCase& each : choice->cases) {
            addEncoded(types, *each.type);
        }
    }
}

/// In the order of the model.
std::vector<const NamedType*> encodedIn(const Model& model, const std::vector<TopicPlan>& topics)
{
    Types types;
    for (const TopicPlan& topic : topics) {
        for (const MemberPlan& plan : topic.members) {
            addEncoded(types, *plan.member->type);
        }
    }
    std::vector<const NamedType*> result;
    std::ranges::copy_if(model.types, std::back_inserter(result),
                         [&types](const NamedType* type) { return types.contains(type); });
    return result;
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

bool Plan::isTopic(const NamedType& type) const
{
    return std::ranges::any_of(topics, [&type](const TopicPlan& topic) { return topic.type == &type; });
}

bool isSimple(const TopicPlan& topic)
{
    return topic.type->extensibility == Extensibility::Appendable &&
           std::ranges::all_of(topic.members, [](const MemberPlan& plan) {
               return isPrimitive(resolved(*plan.member->type).kind) && !plan.isOptional() &&
                      !plan.member->defaultValue;
           });
}

std::string parameterName(const std::string& name, const TopicPlan& topic)
{
    return topic.members.empty() ? "/*" + name + "*/" : name;
}

Plan planOf(const Model& model, const GenerateOptions& options, Diagnostics& diagnostics)
{
    Plan plan;
    plan.rules = rulesOf(options);
    Refusals refusals(model, diagnostics);
    for (const NamedType* const type : model.types) {
        if (!type->included && refusals.accept(*type)) {
            plan.declared.push_back(type);
        }
    }
    for (const Constant* const constant : model.constants) {
        if (!constant->included && refusals.accept(*constant)) {
            plan.constants.push_back(constant);
        }
    }
    if (!options.definitionsOnly) {
        refusals.refuseMissingTypes(plan.declared);
    }
    if (diagnostics.errors() > 0) {
        return plan;
    }
    const auto chosen = topics(model, options.topics);
    for (const StructType* const type : chosen) {
        if (refusals.acceptTopic(*type)) {
            const std::string outermost = modulePath(*chosen.front()->module).front();
            plan.topics.push_back(planOfTopic(model, *type, outermost, options));
        }
    }
    if (chosen.empty() && options.topics != TopicSelection::None && !options.definitionsOnly) {
        refusals.refuseToDoNothing();
    }
    plan.encoded = encodedIn(model, plan.topics);
    warnOfDifferences(model, plan, options, diagnostics);
    return plan;
}

} // namespace ovra::plex::idl
