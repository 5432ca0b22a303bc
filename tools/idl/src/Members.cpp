// SPDX-License-Identifier: Apache-2.0
#include "Members.hpp"

#include "MemberIds.hpp"
#include "Text.hpp"
#include "Types.hpp"

#include <algorithm>
#include <utility>

namespace ovra::plex::idl
{

// --- Names and ids -----------------------------------------------------------------------------------------

void MemberTable::addName(Context& context, const Member& member)
{
    const std::string key = lowerCase(member.name);
    for (const MemberTable* table = this; table != nullptr; table = table->base_) {
        const auto found = table->names_.find(key);
        if (found != table->names_.end()) {
            context.reporter.error(member.location,
                                   "a member \"" + member.name + "\" is already declared" +
                                       (table == this ? "" : " in the base"),
                                   "names that differ in case only are the same; the first one is at " +
                                       context.reporter.name(found->second));
            return;
        }
    }
    names_.emplace(key, member.location);
}

std::uint32_t MemberTable::idOf(Context& context, const Member& member,
                                const AnnotationList& annotations) const
{
    if (annotations.find("id") != nullptr) {
        const auto id = annotations.number(context, "id", 0, HighestMemberId);
        return id ? static_cast<std::uint32_t>(*id) : next_;
    }
    if (const auto text = annotations.text(context, "hashid")) {
        return hashedMemberId(text->empty() ? member.name : *text);
    }
    return hashesIds_ ? hashedMemberId(member.name) : next_;
}

void MemberTable::addId(Context& context, const Member& member)
{
    if (member.id > HighestMemberId) {
        context.reporter.error(member.location, "the id of \"" + member.name + "\" is beyond 0x0FFFFFFF",
                               "write @id(NUMBER)");
        return;
    }
    for (const MemberTable* table = this; table != nullptr; table = table->base_) {
        const auto found = table->ids_.find(member.id);
        if (found != table->ids_.end()) {
            context.reporter.error(member.location,
                                   "\"" + member.name + "\" has the id " + std::to_string(member.id) +
                                       " of \"" + found->second + "\"",
                                   "write @id(NUMBER) with a number of its own");
            return;
        }
    }
    ids_.emplace(member.id, member.name);
}

void MemberTable::add(Context& context, Member& member, const AnnotationList& annotations)
{
    if (annotations.find("id") != nullptr && annotations.find("hashid") != nullptr) {
        context.reporter.error(member.location, "\"" + member.name + "\" has both @id and @hashid");
    }
    member.id = idOf(context, member, annotations);
    next_ = member.id + 1;
    highest_ = highest_ == HasNoId ? member.id : std::max(highest_, member.id);
    addName(context, member);
    addId(context, member);
}

bool hashesIds(Context& context, const AnnotationList& annotations)
{
    const auto* const ofType = annotations.find("autoid");
    if (ofType != nullptr) {
        return annotations.choice(context, "autoid", {"SEQUENTIAL", "HASH"}).value_or(1) == 1;
    }
    for (const Module* module = context.module; module != nullptr; module = module->parent) {
        for (const Annotation& annotation : module->annotations) {
            if (annotation.name == "autoid") {
                return annotation.parameters.empty() || annotation.parameters[0].text != "SEQUENTIAL";
            }
        }
    }
    return false;
}

// --- Annotations -------------------------------------------------------------------------------------------

namespace
{

bool isLess(const Value& left, const Value& right)
{
    return left.index() == right.index() && left < right;
}

/// What numbers a type consists of; null where it does not.
const Type* numberOf(const Type& type)
{
    const Type* result = &resolved(type);
    for (;;) {
        if (const auto* const array = as<ArrayType>(*result)) {
            result = &resolved(*array->element);
        } else if (const auto* const sequence = as<SequenceType>(*result)) {
            result = &resolved(*sequence->element);
        } else {
            return isInteger(result->kind) || isFloating(result->kind) ? result : nullptr;
        }
    }
}

/// The value that an annotation gives as a limit of numbers.
void readLimit(Context& context, const AnnotationList& annotations, std::string_view name,
               std::pair<std::string_view, std::size_t> parameter, const Type& type,
               std::optional<Value>& limit)
{
    const ReadAnnotation* const annotation = annotations.find(name);
    const auto index =
        annotation == nullptr ? std::nullopt : annotation->find(parameter.first, parameter.second);
    if (!index) {
        return;
    }
    const Type* const number = numberOf(type);
    if (number == nullptr) {
        context.reporter.error(annotation->written.location,
                               "@" + std::string(name) + " needs numbers, " + toString(type) + " is none");
        return;
    }
    limit = valueOf(context, *annotation, *index, *number);
}

bool canHaveDefault(const Type& type)
{
    const TypeKind kind = resolved(type).kind;
    return isPrimitive(kind) || kind == TypeKind::String || kind == TypeKind::WString ||
           kind == TypeKind::Enum || kind == TypeKind::Bitmask;
}

void readDefault(Context& context, Member& member, const AnnotationList& annotations)
{
    const ReadAnnotation* const annotation = annotations.find("default");
    if (annotation == nullptr) {
        return;
    }
    const Location& place = annotation->written.location;
    const auto index = annotation->find("value");
    if (!index) {
        context.reporter.error(place, "@default needs a value", "write @default(VALUE)");
    } else if (!canHaveDefault(*member.type)) {
        context.reporter.error(place, "@default is not possible for " + toString(*member.type));
    } else {
        member.defaultValue = valueOf(context, *annotation, *index, *member.type);
    }
    const auto& value = member.defaultValue;
    if (value && ((member.minimum && isLess(*value, *member.minimum)) ||
                  (member.maximum && isLess(*member.maximum, *value)))) {
        context.reporter.error(place,
                               "the default " + toString(*value) + " is out of the range of the member");
    }
}

void checkKey(Context& context, const Member& member, const AnnotationList& annotations, Annotated what)
{
    const auto complain = [&](std::string_view name, const std::string& message, const std::string& hint) {
        context.reporter.error(annotations.find(name)->written.location, message, hint);
    };
    if (what == Annotated::Case && member.key) {
        complain("key", "a case of a union can not be a key", "the discriminator can: switch (@key TYPE)");
    }
    if (what == Annotated::Case && member.optional) {
        complain("optional", "a case of a union can not be optional",
                 "it is there only where it is selected");
    }
    if (member.key && member.optional) {
        complain("optional", "a key can not be optional", "");
    }
}

} // namespace

void annotate(Context& context, Quantity& quantity, const Type& type, const AnnotationList& annotations)
{
    if (const auto* const alias = as<AliasType>(type)) {
        quantity = *alias;
    }
    if (auto unit = annotations.text(context, "unit")) {
        quantity.unit = std::move(*unit);
    }
    readLimit(context, annotations, "min", {"value", 0}, type, quantity.minimum);
    readLimit(context, annotations, "max", {"value", 0}, type, quantity.maximum);
    readLimit(context, annotations, "range", {"min", 0}, type, quantity.minimum);
    readLimit(context, annotations, "range", {"max", 1}, type, quantity.maximum);
    if (quantity.minimum && quantity.maximum && isLess(*quantity.maximum, *quantity.minimum)) {
        for (const auto* const name : {"range", "max", "min"}) {
            if (const auto* const annotation = annotations.find(name)) {
                context.reporter.error(annotation->written.location,
                                       "the least value " + toString(*quantity.minimum) +
                                           " is above the greatest, " + toString(*quantity.maximum));
                return;
            }
        }
    }
}

void annotate(Context& context, Member& member, const AnnotationList& annotations, Annotated what)
{
    annotations.applyTo(context, member);
    member.key = annotations.flag(context, "key").value_or(false);
    member.optional = annotations.flag(context, "optional").value_or(false);
    member.mustUnderstand = annotations.flag(context, "must_understand").value_or(false);
    member.external = annotations.flag(context, "external").value_or(false);
    const auto tried = annotations.choice(context, "try_construct", {"DISCARD", "USE_DEFAULT", "TRIM"});
    member.tryConstruct =
        annotations.find("try_construct") != nullptr
            ? static_cast<TryConstruct>(tried.value_or(static_cast<std::size_t>(TryConstruct::UseDefault)))
            : TryConstruct::Discard;
    annotate(context, static_cast<Quantity&>(member), *member.type, annotations);
    readDefault(context, member, annotations);
    checkKey(context, member, annotations, what);
}

void describe(Context& context, Declared& declared, const Token& name, std::size_t begin,
              std::size_t annotated, std::size_t end)
{
    const TokenCursor& tokens = context.tokens;
    declared.name = name.text;
    declared.location = name.place;
    declared.documentation = tokens.documentationBefore(begin);
    if (annotated != begin) {
        declared.documentation = joined(declared.documentation, tokens.documentationBefore(annotated));
    }
    declared.documentation = joined(declared.documentation, tokens.documentationBehind(end));
}

} // namespace ovra::plex::idl
