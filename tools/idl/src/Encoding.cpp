// SPDX-License-Identifier: Apache-2.0
#include <plex/idl/Encoding.hpp>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace ovra::plex::idl
{

ArrayShape::ArrayShape(const ArrayType& type)
{
    const ArrayType* array = &type;
    while (array != nullptr) {
        dimensions.insert(dimensions.end(), array->dimensions.begin(), array->dimensions.end());
        element = &resolved(*array->element);
        array = as<ArrayType>(*element);
    }
    for (const std::uint32_t dimension : dimensions) {
        const bool isTooLarge = count > std::numeric_limits<std::uint64_t>::max() / dimension;
        count = isTooLarge ? std::numeric_limits<std::uint64_t>::max() : count * dimension;
    }
}

std::uint32_t widthOf(const Type& type)
{
    switch (type.kind) {
    case TypeKind::Boolean:
    case TypeKind::Char:
        return 1;
    case TypeKind::WChar:
        return 2;
    case TypeKind::Float:
        return 4;
    case TypeKind::Double:
        return 8;
    default:
        return storageBits(type) / 8;
    }
}

bool delimitsListOf(const Type& element, bool delimitsEnumerations)
{
    const Type& known = resolved(element);
    if (known.kind == TypeKind::Enum || known.kind == TypeKind::Bitmask) {
        return delimitsEnumerations;
    }
    return widthOf(known) == 0;
}

bool isListOfEnumerations(const Type& type)
{
    const Type* element = nullptr;
    if (const auto* const array = as<ArrayType>(type)) {
        element = ArrayShape(*array).element;
    } else if (const auto* const sequence = as<SequenceType>(type)) {
        element = &resolved(*sequence->element);
    }
    return element != nullptr && (element->kind == TypeKind::Enum || element->kind == TypeKind::Bitmask);
}

namespace
{

/// @param known structs that take nothing, so that none is looked at twice.
bool takesNothing(const Type& declared, std::set<const Type*>& known)
{
    const Type& type = resolved(declared);
    if (const auto* const array = as<ArrayType>(type)) {
        return takesNothing(*array->element, known);
    }
    const auto* const structure = as<StructType>(type);
    if (structure == nullptr || structure->extensibility == Extensibility::Mutable) {
        return false;
    }
    if (known.contains(structure)) {
        return true;
    }
    const bool result = std::ranges::all_of(allMembers(*structure), [&known](const Member* member) {
        return !member->optional && !member->external && takesNothing(*member->type, known);
    });
    if (result) {
        known.insert(structure);
    }
    return result;
}

} // namespace

bool takesNothing(const Type& type)
{
    std::set<const Type*> known;
    return takesNothing(type, known);
}

std::uint32_t boundOf(const SequenceType& type)
{
    constexpr std::uint32_t most = 1000;
    return (type.bound == 0 || type.bound > most) && takesNothing(*type.element) ? most : type.bound;
}

LargestSize LargestSize::of(std::uint64_t bytes, bool isBounded)
{
    return bytes <= mostBounded && isBounded
               ? LargestSize{static_cast<std::uint32_t>(bytes), true}
               : LargestSize{static_cast<std::uint32_t>(std::min(bytes, mostAtFirst)), false};
}

namespace
{

/// Goes from the beginning of a key to its end, with the most that each part takes.
class KeyMeter
{
public:
    KeyMeter(XcdrVersion version, bool delimitsEnumerations)
        : version_(version)
        , delimitsEnumerations_(delimitsEnumerations)
    {
    }

    LargestSize measure(const Type& type)
    {
        add(type);
        return LargestSize::of(end_, isBounded_);
    }

private:
    /// What a type takes that begins at some place between two multiples of 8.
    struct Extent {
        std::uint64_t bytes = 0;
        bool isBounded = false; ///< as long as that is not known: one that contains itself is not
    };

    void add(const Type& declared);
    void addParts(const Type& type);
    void addMembers(const StructType& type);
    void addUnion(const UnionType& type);
    void addList(const Type& element, std::uint64_t count);
    void addLength(std::uint32_t bound);
    void addNumber(std::uint64_t width);

    void addBytes(std::uint64_t count) { end_ = std::min(end_ + count, 2 * LargestSize::mostBounded); }

    XcdrVersion version_;
    bool delimitsEnumerations_;
    std::map<std::pair<const Type*, std::uint64_t>, Extent> extents_;
    std::uint64_t end_ = 0;
    bool isBounded_ = true;
    std::size_t depth_ = 0;
};

void KeyMeter::addNumber(std::uint64_t width)
{
    const std::uint64_t alignment = std::min<std::uint64_t>(width, version_ == XcdrVersion::Xcdr1 ? 8 : 4);
    addBytes((alignment - end_ % alignment) % alignment + width);
}

void KeyMeter::addLength(std::uint32_t bound)
{
    addNumber(sizeof(std::uint32_t));
    isBounded_ = isBounded_ && bound > 0;
}

void KeyMeter::addList(const Type& element, std::uint64_t count)
{
    constexpr std::uint64_t one = 8;
    constexpr std::uint64_t mostExact = 1024; // far from a key that is its own hash
    const std::uint64_t begin = end_;
    for (std::uint64_t i = 0; i < std::min(count, mostExact); ++i) {
        add(element);
    }
    if (count > mostExact) {
        const std::uint64_t each = (end_ - begin + mostExact - 1) / mostExact;
        const std::uint64_t most = std::min((each + one - 1) / one * one, LargestSize::mostBounded);
        addBytes(std::min(count - mostExact, LargestSize::mostBounded) * most);
    }
}

void KeyMeter::addMembers(const StructType& type)
{
    auto members = allMembers(type);
    std::erase_if(members, [&type](const Member* member) { return type.hasKey && !member->key; });
    std::ranges::stable_sort(members, {}, &Member::id);
    for (const Member* const member : members) {
        constexpr std::uint64_t longestHeader = 16;
        addBytes(member->optional ? longestHeader : 0);
        add(*member->type);
    }
}

void KeyMeter::addUnion(const UnionType& type)
{
    add(*type.discriminator);
    if (type.discriminatorIsKey) {
        return;
    }
    const std::uint64_t begin = end_;
    std::uint64_t most = begin;
    for (const UnionCase& one : type.cases) {
        end_ = begin;
        add(*one.type);
        most = std::max(most, end_);
    }
    end_ = most;
}

void KeyMeter::addParts(const Type& type)
{
    const auto addDelimiter = [this](const Type& element) {
        if (version_ == XcdrVersion::Xcdr2 && delimitsListOf(element, delimitsEnumerations_)) {
            addNumber(sizeof(std::uint32_t));
        }
    };
    if (const auto* const structure = as<StructType>(type)) {
        addMembers(*structure);
    } else if (const auto* const choice = as<UnionType>(type)) {
        addUnion(*choice);
    } else if (const auto* const array = as<ArrayType>(type)) {
        const ArrayShape shape(*array);
        addDelimiter(*shape.element);
        addList(*shape.element, shape.count);
    } else if (const auto* const sequence = as<SequenceType>(type)) {
        addDelimiter(*sequence->element);
        const std::uint32_t bound = boundOf(*sequence);
        addLength(bound);
        addList(*sequence->element, bound == 0 ? LargestSize::assumedElements : bound);
    } else if (const auto* const text = as<StringType>(type)) {
        addLength(text->bound);
        addBytes((text->bound == 0 ? LargestSize::assumedCharacters : text->bound) + 1);
    }
}

void KeyMeter::add(const Type& declared)
{
    const Type& type = resolved(declared);
    if (const std::uint32_t width = widthOf(type); width != 0) {
        addNumber(width);
        return;
    }
    constexpr std::size_t deepest = 512; // deeper than values may be
    const auto [known, isNew] = extents_.try_emplace({&type, end_ % 8});
    if (isNew && depth_ < deepest) {
        const std::uint64_t begin = end_;
        const bool wasBounded = std::exchange(isBounded_, true);
        ++depth_;
        addParts(type);
        --depth_;
        known->second = {end_ - begin, isBounded_};
        isBounded_ = isBounded_ && wasBounded;
    } else {
        addBytes(known->second.bytes);
        isBounded_ = isBounded_ && known->second.isBounded;
    }
}

} // namespace

LargestSize largestKey(const Type& type, XcdrVersion version, bool delimitsEnumerations)
{
    return KeyMeter(version, delimitsEnumerations).measure(type);
}

} // namespace ovra::plex::idl
