// SPDX-License-Identifier: Apache-2.0
#include "Sizes.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

constexpr std::uint64_t encapsulationBytes = 4;
constexpr std::uint64_t lengthBytes = 4;  ///< of a delimiter, too
constexpr std::uint64_t headerBytes = 12; ///< of a member, the longest one
constexpr std::uint64_t largestAlignment = 8;

constexpr std::uint64_t assumedCharacters = 256; ///< of a string without a bound
constexpr std::uint64_t assumedElements = 64;    ///< of a sequence without a bound
constexpr std::uint64_t mostKeyElements = 1024;  ///< that are looked at one by one
constexpr std::uint64_t largestBounded = 64ULL << 20U;
constexpr std::uint64_t largestAtFirst = 64ULL << 10U;

std::uint64_t aligned(std::uint64_t position, std::uint64_t alignment)
{
    return (position + alignment - 1) / alignment * alignment;
}

/// Goes from the beginning of a value to its end, with the most that each part takes.
class Measure
{
public:
    explicit Measure(std::uint64_t begin) : end_(begin) {}

    void add(const Type& type);
    void addMember(const Member& member, Extensibility extensibility);
    void addKeyOf(const Type& type);

    LargestSize size() const
    {
        const bool isBounded = isBounded_ && end_ <= largestBounded;
        return {static_cast<std::uint32_t>(isBounded ? end_ : std::min(end_, largestAtFirst)), isBounded};
    }

private:
    void addNumber(std::uint64_t size) { end_ = aligned(end_, size) + size; }

    /// Elements, each of which may begin at any place.
    template <class AddOne>
    void addTimes(std::uint64_t count, AddOne addOne);

    void addLength(std::uint32_t bound, std::uint64_t assumed, std::uint64_t& count);
    void addUnion(const UnionType& type);
    void addKeyElements(const Type& element, std::uint64_t count);

    std::uint64_t end_;
    bool isBounded_ = true;
};

/// How many bytes a number and the like takes, which is also how it is aligned.
std::uint64_t bytesOf(const Type& type)
{
    switch (type.kind) {
    case TypeKind::Boolean:
    case TypeKind::Char:
        return 1;
    case TypeKind::Float:
        return 4;
    case TypeKind::Double:
        return 8;
    default:
        return storageBits(type) / 8;
    }
}

void Measure::addLength(std::uint32_t bound, std::uint64_t assumed, std::uint64_t& count)
{
    isBounded_ = isBounded_ && bound > 0;
    count = bound > 0 ? bound : assumed;
    addNumber(lengthBytes);
}

template <class AddOne>
void Measure::addTimes(std::uint64_t count, AddOne addOne)
{
    Measure one(0);
    addOne(one);
    isBounded_ = isBounded_ && one.isBounded_;
    const std::uint64_t each = std::min(aligned(one.end_, largestAlignment), largestBounded);
    end_ = std::min(aligned(end_, largestAlignment) + count * each, 2 * largestBounded);
}

void Measure::addUnion(const UnionType& type)
{
    add(*type.discriminator);
    std::uint64_t most = end_;
    for (const UnionCase& each : type.cases) {
        Measure one(end_);
        one.addMember(each, type.extensibility);
        most = std::max(most, one.end_);
        isBounded_ = isBounded_ && one.isBounded_;
    }
    end_ = most + 2 * headerBytes; // of the discriminator, and the mark at the end
}

void Measure::add(const Type& type)
{
    const Type& known = resolved(type);
    std::uint64_t count = 0;
    if (const auto* const text = as<StringType>(known)) {
        addLength(text->bound, assumedCharacters, count);
        end_ += count + 1;
    } else if (const auto* const sequence = as<SequenceType>(known)) {
        addNumber(lengthBytes); // of the delimiter
        addLength(sequence->bound, assumedElements, count);
        addTimes(count, [&](Measure& one) { one.add(*sequence->element); });
    } else if (const auto* const array = as<ArrayType>(known)) {
        addNumber(lengthBytes);
        addTimes(elementCount(*array), [&](Measure& one) { one.add(*array->element); });
    } else if (const auto* const structure = as<StructType>(known)) {
        addNumber(lengthBytes);
        for (const Member* const member : allMembers(*structure)) {
            addMember(*member, structure->extensibility);
        }
        end_ += lengthBytes + largestAlignment; // of the mark at the end
    } else if (const auto* const choice = as<UnionType>(known)) {
        addNumber(lengthBytes);
        addUnion(*choice);
    } else {
        addNumber(bytesOf(known));
    }
}

void Measure::addMember(const Member& member, Extensibility extensibility)
{
    if (extensibility == Extensibility::Mutable || member.optional) {
        end_ = aligned(aligned(end_, lengthBytes) + headerBytes, largestAlignment);
    }
    add(*member.type);
}

void Measure::addKeyElements(const Type& element, std::uint64_t count)
{
    if (count > mostKeyElements) { // far from a key that is its own hash
        addTimes(count, [&](Measure& one) { one.addKeyOf(element); });
        return;
    }
    for (std::uint64_t i = 0; i < count; ++i) {
        addKeyOf(element);
    }
}

/// Without headers and delimiters, and key members only. It is exact, since it decides on whether a key is
/// hashed.
void Measure::addKeyOf(const Type& type)
{
    const Type& known = resolved(type);
    if (const auto* const structure = as<StructType>(known)) {
        for (const Member* const member : allMembers(*structure)) {
            if (member->key || !structure->hasKey) {
                addKeyOf(*member->type);
            }
        }
    } else if (const auto* const array = as<ArrayType>(known)) {
        addKeyElements(*array->element, elementCount(*array));
    } else if (const auto* const sequence = as<SequenceType>(known)) {
        std::uint64_t count = 0;
        addLength(sequence->bound, assumedElements, count);
        addKeyElements(*sequence->element, count);
    } else {
        add(known);
    }
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
    Measure measure(0);
    for (const MemberPlan* const plan : topic.keys()) {
        measure.addKeyOf(*plan->member->type);
    }
    return measure.size();
}

} // namespace ovra::plex::idl
