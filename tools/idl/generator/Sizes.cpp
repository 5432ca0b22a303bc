// SPDX-License-Identifier: Apache-2.0
#include "Sizes.hpp"

#include <algorithm>
#include <map>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

constexpr std::uint64_t encapsulationBytes = 4;
constexpr std::uint64_t lengthBytes = 4;  ///< of a delimiter, too
constexpr std::uint64_t headerBytes = 12; ///< of a member, the longest one
constexpr std::uint64_t largestAlignment = 8;

std::uint64_t aligned(std::uint64_t position, std::uint64_t alignment)
{
    return (position + alignment - 1) / alignment * alignment;
}

/// Goes from the beginning of a value to its end, with the most that each part takes.
class Measure
{
public:
    explicit Measure(std::uint64_t begin) : end_(begin) {}

    void addMember(const Member& member, Extensibility extensibility);

    LargestSize size() const { return LargestSize::of(end_, isBounded_); }

private:
    /// What a type takes that begins at some place between two multiples of 8.
    struct Extent {
        std::uint64_t bytes = 0;
        bool isBounded = true;
    };

    void add(const Type& declared);
    void addParts(const Type& type);
    void addUnion(const UnionType& type);
    void addList(const Type& element, std::uint64_t count);
    void addLength(std::uint32_t bound);

    void addNumber(std::uint64_t size) { moveTo(aligned(end_, size) + size); }

    void moveTo(std::uint64_t end) { end_ = std::min(end, 2 * LargestSize::mostBounded); }

    std::map<std::pair<const Type*, std::uint64_t>, Extent> extents_;
    std::uint64_t end_;
    bool isBounded_ = true;
};

void Measure::addLength(std::uint32_t bound)
{
    isBounded_ = isBounded_ && bound > 0;
    addNumber(lengthBytes);
}

/// Each of the elements may begin at any place.
void Measure::addList(const Type& element, std::uint64_t count)
{
    moveTo(aligned(end_, largestAlignment));
    const std::uint64_t begin = end_;
    add(element);
    const std::uint64_t each = std::min(aligned(end_ - begin, largestAlignment), LargestSize::mostBounded);
    moveTo(begin + count * each);
}

void Measure::addUnion(const UnionType& type)
{
    add(*type.discriminator);
    const std::uint64_t begin = end_;
    std::uint64_t most = begin;
    for (const UnionCase& each : type.cases) {
        end_ = begin;
        addMember(each, type.extensibility);
        most = std::max(most, end_);
    }
    moveTo(most + 2 * headerBytes); // of the discriminator, and the mark at the end
}

void Measure::addParts(const Type& type)
{
    if (const auto* const text = as<StringType>(type)) {
        addLength(text->bound);
        moveTo(end_ + (text->bound > 0 ? text->bound : LargestSize::assumedCharacters) + 1);
        return;
    }
    addNumber(lengthBytes); // of the delimiter
    if (const auto* const sequence = as<SequenceType>(type)) {
        const std::uint32_t bound = boundOf(*sequence);
        addLength(bound);
        addList(*sequence->element, bound > 0 ? bound : LargestSize::assumedElements);
    } else if (const auto* const array = as<ArrayType>(type)) {
        addList(*array->element, elementCount(*array));
    } else if (const auto* const structure = as<StructType>(type)) {
        for (const Member* const member : allMembers(*structure)) {
            addMember(*member, structure->extensibility);
        }
        moveTo(end_ + lengthBytes + largestAlignment); // of the mark at the end
    } else if (const auto* const choice = as<UnionType>(type)) {
        addUnion(*choice);
    }
}

void Measure::add(const Type& declared)
{
    const Type& type = resolved(declared);
    if (const std::uint32_t width = widthOf(type); width != 0) {
        addNumber(width);
        return;
    }
    const auto [known, isNew] = extents_.try_emplace({&type, end_ % largestAlignment});
    if (isNew) {
        const std::uint64_t begin = end_;
        const bool wasBounded = std::exchange(isBounded_, true);
        addParts(type);
        known->second = {end_ - begin, isBounded_};
        isBounded_ = isBounded_ && wasBounded;
    } else {
        moveTo(end_ + known->second.bytes);
        isBounded_ = isBounded_ && known->second.isBounded;
    }
}

void Measure::addMember(const Member& member, Extensibility extensibility)
{
    if (extensibility == Extensibility::Mutable || member.optional) {
        moveTo(aligned(aligned(end_, lengthBytes) + headerBytes, largestAlignment));
    }
    add(*member.type);
}

} // namespace

LargestSize largestPayload(const TopicPlan& topic)
{
    Measure measure(topic.type->extensibility == Extensibility::Final ? 0 : lengthBytes);
    for (const MemberPlan& plan : topic.members) {
        measure.addMember(*plan.member, topic.type->extensibility);
    }
    LargestSize size = measure.size();
    const std::uint64_t mark = topic.type->extensibility == Extensibility::Mutable ? 2 * lengthBytes : 0;
    size.bytes += static_cast<std::uint32_t>(encapsulationBytes + mark);
    return size;
}

LargestSize largestKey(const TopicPlan& topic)
{
    return topic.keys().empty()
               ? LargestSize()
               : largestKey(*topic.type, topic.rules.keyVersion, topic.rules.delimitsEnumerations);
}

std::uint64_t LeastSizes::ofParts(const Type& type, XcdrVersion version)
{
    const bool isVersion2 = version == XcdrVersion::Xcdr2;
    const auto isFramed = [isVersion2](Extensibility extensibility) { // by a delimiter, or a mark at the end
        return extensibility == Extensibility::Mutable ||
               (isVersion2 && extensibility != Extensibility::Final);
    };
    if (const auto* const array = as<ArrayType>(type)) {
        return std::min<std::uint64_t>(elementCount(*array), LargestSize::mostBounded) *
               of(*array->element, version);
    }
    if (const auto* const choice = as<UnionType>(type)) {
        return isFramed(choice->extensibility) ? lengthBytes : of(*choice->discriminator, version);
    }
    const auto* const structure = as<StructType>(type);
    if (structure == nullptr || isFramed(structure->extensibility)) {
        return lengthBytes;
    }
    std::uint64_t size = 0;
    for (const Member* const member : allMembers(*structure)) {
        const std::uint64_t absent = isVersion2 ? 1 : 4; // a flag, or a header
        size = std::min(size + (member->optional ? absent : of(*member->type, version)),
                        LargestSize::mostBounded);
    }
    return size;
}

std::uint64_t LeastSizes::of(const Type& declared, XcdrVersion version)
{
    const Type& type = resolved(declared);
    if (const std::uint32_t width = widthOf(type); width != 0) {
        return width;
    }
    const auto known = known_.find({&type, version});
    if (known != known_.end()) {
        return known->second;
    }
    const std::uint64_t size = std::min(ofParts(type, version), LargestSize::mostBounded);
    known_.emplace(std::pair(&type, version), size);
    return size;
}

} // namespace ovra::plex::idl
