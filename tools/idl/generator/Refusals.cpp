// SPDX-License-Identifier: Apache-2.0
#include "Refusals.hpp"

#include "Names.hpp"

#include <map>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// Names that the classes of a topic give to other things.
bool isTaken(const std::string& name)
{
    static const NameScope taken{"assign", "clone",     "cloneKey", "copy",       "DdsType",
                                 "hasKey", "keyEquals", "main",     "PubSubType", "wire"};
    return !taken.isFree(name);
}

} // namespace

void Refusals::refuse(const Location& place, const std::string& message, const std::string& hint)
{
    diagnostics_.add(
        {Severity::Error, model_.files.at(place.file).path, place.line, place.column, message, hint, {}});
}

void Refusals::refuseToDoNothing()
{
    diagnostics_.add({Severity::Error,
                      model_.files.front().path,
                      0,
                      0,
                      "there is no topic",
                      "annotate a struct with @topic; --list says why one is none",
                      {}});
}

void Refusals::checkPlace(const StructType& topic)
{
    if (topic.module->parent == nullptr) {
        refuse(topic.location, "the topic \"" + topic.name + "\" is in no module",
               "put it into one: module NAME { … };");
    } else if (isTaken(topic.name)) {
        refuse(topic.location, "a topic can not be called \"" + topic.name + "\"",
               "the generated class has something of that name");
    }
}

void Refusals::checkAccessors(const StructType& topic)
{
    std::map<std::string, const Member*> byAccessor;
    for (const Member* const member : allMembers(topic)) {
        const auto [other, isNew] = byAccessor.emplace(accessorName(member->name), member);
        if (!isNew) {
            refuse(member->location,
                   "\"" + member->name + "\" and \"" + other->second->name +
                       "\" would both be read with get" + other->first + "()",
                   "rename one of them");
        }
    }
}

void Refusals::checkMember(const Member& member, const StructType& topic)
{
    const Type& type = resolved(*member.type);
    if (!isPrimitive(type.kind) || type.kind == TypeKind::WChar || type.kind == TypeKind::LongDouble) {
        refuse(member.location, "nothing is generated for " + toString(*member.type),
               "a topic has numbers, booleans, characters and octets");
    } else if (member.optional || topic.extensibility != Extensibility::Appendable) {
        refuse(member.location, "nothing is generated for optional members, nor for final and mutable types",
               "annotate the struct @appendable");
    }
}

bool Refusals::accept(const StructType& topic)
{
    const std::size_t before = diagnostics_.errors();
    checkPlace(topic);
    checkAccessors(topic);
    for (const Member* const member : allMembers(topic)) {
        checkMember(*member, topic);
    }
    return diagnostics_.errors() == before;
}

} // namespace ovra::plex::idl
