// SPDX-License-Identifier: Apache-2.0
#include <plex/idl/Topics.hpp>

#include <algorithm>
#include <unordered_map>

namespace ovra::plex::idl
{

namespace
{

/// By struct, the first type that contains or extends it.
using Users = std::unordered_map<const Type*, const NamedType*>;

/// Enters the structs that a value of a type contains, those of its elements included.
void addContained(Users& users, const Type& type, const NamedType& user)
{
    const Type& contained = resolved(type);
    if (const auto* const sequence = as<SequenceType>(contained)) {
        addContained(users, *sequence->element, user);
    } else if (const auto* const array = as<ArrayType>(contained)) {
        addContained(users, *array->element, user);
    } else if (const auto* const map = as<MapType>(contained)) {
        addContained(users, *map->key, user);
        addContained(users, *map->value, user);
    } else if (&contained != &user) {
        users.emplace(&contained, &user);
    }
}

Users usersIn(const Model& model)
{
    Users users;
    for (const NamedType* const type : model.types) {
        if (const auto* const structure = as<StructType>(*type)) {
            if (structure->base != nullptr) {
                users.emplace(structure->base, type);
            }
            for (const Member& member : structure->members) {
                addContained(users, *member.type, *type);
            }
        } else if (const auto* const choice = as<UnionType>(*type)) {
            for (const UnionCase& unionCase : choice->cases) {
                addContained(users, *unionCase.type, *type);
            }
        }
    }
    return users;
}

TopicVerdict judgeByUse(const StructType& type, const Users& users)
{
    if (type.nested) {
        return {&type, false, "it is nested"};
    }
    const auto user = users.find(&type);
    if (user == users.end()) {
        return {&type, true, "nothing contains or extends it"};
    }
    const auto* const structure = as<StructType>(*user->second);
    const bool extends = structure != nullptr && structure->base == &type;
    return {&type, false, user->second->scopedName + (extends ? " extends it" : " contains it")};
}

TopicVerdict judgeByAnnotation(const StructType& type)
{
    return {&type, type.topic, type.topic ? "annotated @topic" : "not annotated @topic, as others are"};
}

} // namespace

std::vector<TopicVerdict> judgeTopics(const Model& model, TopicSelection selection)
{
    std::vector<const StructType*> structs;
    for (const NamedType* const type : model.types) {
        const auto* const structure = as<StructType>(*type);
        if (structure != nullptr && !structure->included) {
            structs.push_back(structure);
        }
    }
    const bool byAnnotation =
        selection == TopicSelection::Annotated ||
        (selection == TopicSelection::Automatic &&
         std::ranges::any_of(structs, [](const StructType* type) { return type->topic; }));
    const Users users = usersIn(model);
    std::vector<TopicVerdict> verdicts;
    for (const StructType* const type : structs) {
        if (selection == TopicSelection::All) {
            verdicts.push_back({type, true, "all structs are"});
        } else if (selection == TopicSelection::None) {
            verdicts.push_back({type, false, "none is"});
        } else {
            verdicts.push_back(byAnnotation ? judgeByAnnotation(*type) : judgeByUse(*type, users));
        }
    }
    return verdicts;
}

std::vector<const StructType*> topics(const Model& model, TopicSelection selection)
{
    std::vector<const StructType*> result;
    for (const TopicVerdict& verdict : judgeTopics(model, selection)) {
        if (verdict.isTopic) {
            result.push_back(verdict.type);
        }
    }
    return result;
}

} // namespace ovra::plex::idl
