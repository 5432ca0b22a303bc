// SPDX-License-Identifier: Apache-2.0
#include "Refusals.hpp"

#include "Names.hpp"

#include <plex/idl/Encoding.hpp>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace ovra::plex::idl
{

namespace
{

/// Names that the classes of a topic give to other things.
bool isTaken(const std::string& name)
{
    static const NameScope taken{"assign",     "Cdr",           "clone",   "cloneKey",
                                 "copy",       "createSample",  "DdsType", "ddsSampleDeleter",
                                 "hasKey",     "keyEquals",     "main",    "noOpDeleter",
                                 "PubSubType", "SamplePointer", "wire"};
    return !taken.isFree(name);
}

/// What to do about a type that nothing is generated for; empty for others.
std::string hintForUnsupported(TypeKind kind)
{
    switch (kind) {
    case TypeKind::WChar:
    case TypeKind::WString:
        return "use string, whose text is UTF-8";
    case TypeKind::LongDouble:
        return "use double";
    case TypeKind::Map:
        return "use a sequence of structs with key and value";
    case TypeKind::Bitset:
        return "use a bitmask, or an integer";
    default:
        return {};
    }
}

/// The module whose header has the plain form of a type; empty for types in no module.
std::string outermostModuleOf(const NamedType& type)
{
    const auto path = modulePath(*type.module);
    return path.empty() ? std::string() : path.front();
}

/// Whether a value of a type holds values of another, however deep.
bool contains(const Type& type, const Type& wanted, std::unordered_set<const Type*>& seen)
{
    const auto holds = [&](const Type& part) {
        const Type& known = resolved(part);
        return &known == &wanted || (seen.insert(&known).second && contains(known, wanted, seen));
    };
    if (const auto* const sequence = as<SequenceType>(type)) {
        return holds(*sequence->element);
    }
    if (const auto* const array = as<ArrayType>(type)) {
        return holds(*array->element);
    }
    if (const auto* const structure = as<StructType>(type)) {
        const auto members = allMembers(*structure);
        return std::ranges::any_of(members, [&](const Member* member) { return holds(*member->type); });
    }
    if (const auto* const choice = as<UnionType>(type)) {
        return std::ranges::any_of(choice->cases, [&](const UnionCase& each) { return holds(*each.type); });
    }
    return false;
}

bool contains(const Type& type, const Type& wanted)
{
    std::unordered_set<const Type*> seen;
    return contains(type, wanted, seen);
}

} // namespace

void Refusals::refuse(const Location& place, const std::string& message, const std::string& hint)
{
    diagnostics_.add(
        {Severity::Error, model_.files.at(place.file).path, place.line, place.column, message, hint, {}});
}

void Refusals::refuseToDoNothing()
{
    const auto isStruct = [](const NamedType* type) {
        return type->kind == TypeKind::Struct && !type->included;
    };
    diagnostics_.add(
        {Severity::Error,
         model_.files.front().path,
         0,
         0,
         "there is no topic",
         std::ranges::any_of(model_.types, isStruct)
             ? "annotate a struct with @topic, --list says why one is none; or choose --topics none "
               "for types that are there for others"
             : "define a struct: it is a topic where nothing contains it; or choose --topics none "
               "for types that are there for others",
         {}});
}

void Refusals::checkPlace(const NamedType& type)
{
    if (type.module->parent == nullptr) {
        refuse(type.location, "\"" + type.name + "\" is in no module", "put it into one: module NAME { … };");
    }
}

/// @param name of what is declared, in C++. @param scope in which it is one of its own.
void Refusals::checkName(const void* scope, const Declared& declared, const std::string& name)
{
    const auto [other, isNew] = names_.emplace(std::pair(scope, name), &declared);
    if (!isNew) {
        refuse(declared.location,
               "\"" + other->second->name + "\" and \"" + declared.name + "\" would both be called " + name,
               "rename one of them: in C++, names that are taken get an underscore behind them");
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

/// Types that have a place in the model only.
void Refusals::checkType(const Type& type, const Location& place)
{
    const Type& known = resolved(type);
    if (const auto* const sequence = as<SequenceType>(known)) {
        checkType(*sequence->element, place);
    } else if (const auto* const array = as<ArrayType>(known)) {
        checkType(*array->element, place);
    } else if (const std::string hint = hintForUnsupported(known.kind); !hint.empty()) {
        refuse(place, "nothing is generated for " + toString(known), hint);
    }
}

void Refusals::checkUnion(const UnionType& type)
{
    checkType(*type.discriminator, type.location);
    for (const UnionCase& each : type.cases) {
        checkType(*each.type, each.location);
    }
}

void Refusals::checkIsDeclared(const Type& type, const Location& place, const std::set<std::string>& modules)
{
    const Type& known = resolved(type);
    if (const auto* const sequence = as<SequenceType>(known)) {
        checkIsDeclared(*sequence->element, place, modules);
    } else if (const auto* const array = as<ArrayType>(known)) {
        checkIsDeclared(*array->element, place, modules);
    } else if (const auto* const other = dynamic_cast<const NamedType*>(&known);
               other != nullptr && other->included && modules.contains(outermostModuleOf(*other))) {
        refuse(place,
               "\"" + other->scopedName + "\" is declared in " + model_.files.at(other->location.file).path +
                   ", which is not among the definitions",
               "name that file, too: definitions of one outermost module are generated together");
    }
}

void Refusals::refuseMissingTypes(const std::vector<const NamedType*>& declared)
{
    std::set<std::string> modules;
    for (const NamedType* const type : declared) {
        modules.insert(outermostModuleOf(*type));
    }
    for (const NamedType* const type : declared) {
        if (const auto* const structure = as<StructType>(*type)) {
            for (const Member* const member : allMembers(*structure)) {
                checkIsDeclared(*member->type, member->location, modules);
            }
        } else if (const auto* const choice = as<UnionType>(*type)) {
            checkIsDeclared(*choice->discriminator, choice->location, modules);
            for (const UnionCase& each : choice->cases) {
                checkIsDeclared(*each.type, each.location, modules);
            }
        } else if (const auto* const alias = as<AliasType>(*type)) {
            checkIsDeclared(*alias->target, alias->location, modules);
        }
    }
}

void Refusals::checkRecursion(const NamedType& type)
{
    if (contains(type, type)) {
        refuse(type.location, "\"" + type.name + "\" contains itself",
               "keep what it refers to in a sequence beside it, and refer to it by its index");
    }
}

/// The bytes of a struct's members or the like, of which a value has all in one place.
std::uint64_t Refusals::sizeOfParts(const Type& type)
{
    std::uint64_t size = 0;
    if (const auto* const array = as<ArrayType>(type)) {
        const ArrayShape shape(*array);
        const std::uint64_t element = sizeOf(*shape.element);
        return shape.count > mostBytes ? mostBytes + 1 : shape.count * element;
    }
    if (const auto* const structure = as<StructType>(type)) {
        for (const Member* const member : allMembers(*structure)) {
            size = std::min(size + sizeOf(*member->type), mostBytes + 1);
        }
    } else if (const auto* const choice = as<UnionType>(type)) {
        for (const UnionCase& each : choice->cases) {
            size = std::max(size, sizeOf(*each.type));
        }
    }
    return size;
}

/// The bytes of a value apart from padding, and from what strings and sequences hold; more than mostBytes
/// where it has more.
std::uint64_t Refusals::sizeOf(const Type& declared)
{
    const Type& type = resolved(declared);
    if (const std::uint32_t width = widthOf(type); width != 0) {
        return width;
    }
    const auto [known, isNew] =
        sizes_.try_emplace(&type, 0); // a type that contains itself is refused elsewhere
    if (isNew) {
        const std::uint64_t size = std::min(sizeOfParts(type), mostBytes + 1);
        sizes_[&type] = size; // the table may have grown
        return size;
    }
    return known->second;
}

void Refusals::checkSize(const NamedType& type)
{
    if (sizeOf(type) > mostBytes) {
        refuse(type.location, "a value of \"" + type.scopedName + "\" takes more than 64 MB",
               "use sequences, which take what they hold, instead of arrays");
    }
}

/// @param key the member of the topic in which the type is met.
void Refusals::checkKey(const Type& declared, const Member& key)
{
    const Type& type = resolved(declared);
    if (const auto* const sequence = as<SequenceType>(type)) {
        checkKey(*sequence->element, key);
    } else if (const auto* const array = as<ArrayType>(type)) {
        checkKey(*array->element, key);
    } else if (const auto* const structure = as<StructType>(type)) {
        for (const Member* const member : allMembers(*structure)) {
            if (member->optional && !structure->hasKey) {
                refuse(key.location,
                       "\"" + key.name + "\" can not be a key: \"" + member->name + "\" of \"" +
                           structure->scopedName + "\" is optional",
                       "annotate with @key which members of \"" + structure->scopedName + "\" are the key");
            } else if (member->key || !structure->hasKey) {
                checkKey(*member->type, key);
            }
        }
    }
}

bool Refusals::accept(const NamedType& type)
{
    const std::size_t before = diagnostics_.errors();
    checkPlace(type);
    checkName(type.module, type, declaredName(type.name));
    if (const auto* const enumeration = as<EnumType>(type)) {
        for (const Enumerator& each : enumeration->enumerators) {
            checkName(&type, each, cppName(each.name));
        }
    } else if (const auto* const bitmask = as<BitmaskType>(type)) {
        for (const BitFlag& each : bitmask->flags) {
            checkName(&type, each, cppName(each.name));
        }
    }
    if (const auto* const structure = as<StructType>(type)) {
        for (const Member& member : structure->members) {
            checkType(*member.type, member.location);
        }
    } else if (const auto* const choice = as<UnionType>(type)) {
        checkUnion(*choice);
    } else if (const auto* const alias = as<AliasType>(type)) {
        checkType(*alias->target, type.location);
    } else {
        checkType(type, type.location);
    }
    checkRecursion(type);
    checkSize(type);
    return diagnostics_.errors() == before;
}

bool Refusals::accept(const Constant& constant)
{
    const std::size_t before = diagnostics_.errors();
    checkName(constant.module, constant, declaredName(constant.name));
    checkType(*constant.type, constant.location);
    return diagnostics_.errors() == before;
}

bool Refusals::acceptTopic(const StructType& topic)
{
    const std::size_t before = diagnostics_.errors();
    if (isTaken(topic.name)) {
        refuse(topic.location, "a topic can not be called \"" + topic.name + "\"",
               "the generated class has something of that name");
    }
    checkAccessors(topic);
    for (const Member* const member : allMembers(topic)) {
        if (member->key) {
            checkKey(*member->type, *member);
        }
    }
    return diagnostics_.errors() == before;
}

} // namespace ovra::plex::idl
