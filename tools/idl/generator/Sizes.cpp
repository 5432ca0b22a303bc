// SPDX-License-Identifier: Apache-2.0
#include "Sizes.hpp"

namespace ovra::plex::idl
{

namespace
{

constexpr std::uint32_t encapsulationBytes = 4;
constexpr std::uint32_t delimiterBytes = 4;

/// How many bytes a number and the like takes, which is also how it is aligned.
std::uint32_t bytesOf(const Type& type)
{
    switch (resolved(type).kind) {
    case TypeKind::Boolean:
    case TypeKind::Char:
        return 1;
    case TypeKind::Float:
        return 4;
    case TypeKind::Double:
        return 8;
    default:
        return storageBits(resolved(type)) / 8;
    }
}

std::uint32_t endOf(const Type& type, std::uint32_t begin)
{
    const std::uint32_t size = bytesOf(type);
    return (begin + size - 1) / size * size + size;
}

} // namespace

std::uint32_t largestPayload(const TopicPlan& topic)
{
    std::uint32_t end = delimiterBytes;
    for (const MemberPlan& plan : topic.members) {
        end = endOf(*plan.member->type, end);
    }
    return encapsulationBytes + end;
}

std::uint32_t largestKey(const TopicPlan& topic)
{
    std::uint32_t end = 0;
    for (const MemberPlan* const plan : topic.keys()) {
        end = endOf(*plan->member->type, end);
    }
    return end;
}

} // namespace ovra::plex::idl
