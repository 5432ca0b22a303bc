// SPDX-License-Identifier: Apache-2.0
#include "Warnings.hpp"

#include <algorithm>
#include <bitset>
#include <map>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

/// Whether a list of enums or bitmasks is in a type, types with members apart: those have places of their
/// own.
bool holdsListOfEnumerations(const Type& declared)
{
    const Type& type = resolved(declared);
    if (isListOfEnumerations(type)) {
        return true;
    }
    if (const auto* const sequence = as<SequenceType>(type)) {
        return holdsListOfEnumerations(*sequence->element);
    }
    const auto* const array = as<ArrayType>(type);
    return array != nullptr && holdsListOfEnumerations(*array->element);
}

/// Goes through a key with all places at which its parts may lie, to find one that depends on the version.
class KeyPlaces
{
public:
    /// Goes past a type. @returns whether a hash with it depends on the version of XCDR.
    bool pass(const Type& declared);

private:
    using Places = std::bitset<8>; ///< between two multiples of 8

    struct Passage {
        Places end;
        bool differs = false;
    };

    void passParts(const Type& type);
    void passMembers(const StructType& type);
    void passUnion(const UnionType& type);
    void passNumber(std::size_t width);
    void passArray(const ArrayShape& shape);
    void passSequence(const Type& element);

    std::map<std::pair<const Type*, unsigned long>, Passage> passages_;
    Places places_{1};
    bool differs_ = false;
};

void KeyPlaces::passNumber(std::size_t width)
{
    Places next;
    for (std::size_t place = 0; place < places_.size(); ++place) {
        if (places_[place]) {
            const std::size_t begin = (place + width - 1) / width * width;
            differs_ = differs_ || (width == 8 && place > 0 && place <= 4);
            next.set((begin + width) % next.size());
        }
    }
    places_ = next;
}

void KeyPlaces::passArray(const ArrayShape& shape)
{
    differs_ = differs_ || delimitsListOf(*shape.element, false);
    const std::uint64_t period = 840; // that of cycles among 8 places, whatever their lengths
    const std::uint64_t count = std::min(shape.count, period + shape.count % period);
    for (std::uint64_t i = 0; i < count; ++i) {
        pass(*shape.element);
    }
}

void KeyPlaces::passSequence(const Type& element)
{
    differs_ = differs_ || delimitsListOf(element, false);
    passNumber(sizeof(std::uint32_t));
    for (Places before; before != places_;) { // until a further element changes nothing
        before = places_;
        pass(element);
        places_ |= before;
    }
}

void KeyPlaces::passMembers(const StructType& type)
{
    auto members = allMembers(type);
    std::erase_if(members, [&type](const Member* member) { return type.hasKey && !member->key; });
    std::ranges::stable_sort(members, {}, &Member::id);
    for (const Member* const member : members) {
        pass(*member->type);
    }
}

void KeyPlaces::passUnion(const UnionType& type)
{
    pass(*type.discriminator);
    if (type.discriminatorIsKey) {
        return;
    }
    const Places begin = places_;
    Places end = begin;
    for (const UnionCase& each : type.cases) {
        places_ = begin;
        pass(*each.type);
        end |= places_;
    }
    places_ = end;
}

void KeyPlaces::passParts(const Type& type)
{
    if (const auto* const structure = as<StructType>(type)) {
        passMembers(*structure);
    } else if (const auto* const choice = as<UnionType>(type)) {
        passUnion(*choice);
    } else if (const auto* const array = as<ArrayType>(type)) {
        passArray(ArrayShape(*array));
    } else if (const auto* const sequence = as<SequenceType>(type)) {
        passSequence(*sequence->element);
    } else if (type.kind == TypeKind::String) {
        places_.set();
    }
}

bool KeyPlaces::pass(const Type& declared)
{
    const Type& type = resolved(declared);
    if (const std::uint32_t width = widthOf(type); width != 0) {
        passNumber(width);
        return differs_;
    }
    const auto [known, isNew] = passages_.try_emplace({&type, places_.to_ulong()}, Passage{places_});
    if (isNew) {
        passParts(type);
        known->second = {places_, differs_};
    } else {
        places_ = known->second.end;
        differs_ = differs_ || known->second.differs;
    }
    return differs_;
}

class Warnings
{
public:
    Warnings(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    void ofList(const Member& member)
    {
        if (holdsListOfEnumerations(*member.type)) {
            warn(member,
                 "in XCDR version 2 no delimiter stands before the enums or bitmasks of \"" + member.name +
                     "\", as with Fast DDS; others may write one",
                 "choose with --enum-delimiters");
        }
    }

    void ofTryConstruct(const Member& member)
    {
        if (member.tryConstruct != TryConstruct::Discard) {
            warn(member,
                 "@try_construct of \"" + member.name +
                     "\" has no effect: samples with values that do not fit are not read",
                 "leave it out");
        }
    }

    void ofKey(const TopicPlan& topic)
    {
        auto keys = topic.keys();
        std::ranges::stable_sort(keys, {}, [](const MemberPlan* plan) { return plan->member->id; });
        KeyPlaces places;
        for (const MemberPlan* const plan : keys) {
            if (places.pass(*plan->member->type)) {
                warn(*plan->member,
                     "with the key \"" + plan->member->name + "\" of \"" + topic.type->scopedName +
                         "\" hashes differ between versions of XCDR, and so between generators",
                     "let key members of 8 bytes come first, with the lowest ids, and have no lists of texts "
                     "or "
                     "structs in a key; or choose with --key-hash");
                return;
            }
        }
    }

private:
    void warn(const Member& member, const std::string& message, const std::string& hint)
    {
        const Location& place = member.location;
        diagnostics_.add({Severity::Warning,
                          model_.files.at(place.file).path,
                          place.line,
                          place.column,
                          message,
                          hint,
                          {}});
    }

    const Model& model_;
    Diagnostics& diagnostics_;
};

/// Calls visit(member) for each member or case of a type.
template <class Visit>
void visitMembers(const NamedType& type, const Visit& visit)
{
    if (const auto* const structure = as<StructType>(type)) {
        std::ranges::for_each(structure->members, visit);
    } else if (const auto* const choice = as<UnionType>(type)) {
        std::ranges::for_each(choice->cases, visit);
    }
}

} // namespace

void warnOfDifferences(const Model& model, const Plan& plan, const GenerateOptions& options,
                       Diagnostics& diagnostics)
{
    Warnings warnings(model, diagnostics);
    for (const NamedType* const type : plan.declared) {
        visitMembers(*type, [&](const Member& member) {
            warnings.ofTryConstruct(member);
            if (!options.delimitsEnumerations) {
                warnings.ofList(member);
            }
        });
    }
    if (!options.keyVersion) {
        std::ranges::for_each(plan.topics, [&](const TopicPlan& topic) { warnings.ofKey(topic); });
    }
}

} // namespace ovra::plex::idl
