// SPDX-License-Identifier: Apache-2.0
#include "ModelBuilder.hpp"

#include <plex/idl/Model.hpp>

#include <algorithm>
#include <bit>
#include <ranges>

namespace ovra::plex::idl
{

namespace
{

/// The type as a class, where its kind is between two.
template <class T>
const T* between(const Type& type, TypeKind first, TypeKind last)
{
    return type.kind >= first && type.kind <= last ? static_cast<const T*>(&type) : nullptr;
}

template <class T>
const T* only(const Type& type, TypeKind kind)
{
    return between<T>(type, kind, kind);
}

} // namespace

Model::Model() : storage_(std::make_unique<Storage>())
{
    root = &storage_->modules.emplace_back();
}

Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;
Model::~Model() = default;

const NamedType* Model::findType(std::string_view scopedName) const
{
    const auto found = storage_->typesByName.find(std::string(scopedName));
    return found == storage_->typesByName.end() ? nullptr : found->second;
}

const Constant* Model::findConstant(std::string_view scopedName) const
{
    const auto found = storage_->constantsByName.find(std::string(scopedName));
    return found == storage_->constantsByName.end() ? nullptr : found->second;
}

const UnionCase* UnionType::caseOf(std::uint64_t bits) const
{
    const UnionCase* otherwise = nullptr;
    for (const UnionCase& candidate : cases) {
        const auto selects = [bits](const Label& label) {
            return label.bits == bits;
        };
        if (std::ranges::any_of(candidate.labels, selects)) {
            return &candidate;
        }
        otherwise = candidate.isDefault ? &candidate : otherwise;
    }
    return otherwise;
}

bool UnionType::takes(std::uint64_t bits) const
{
    const Type& type = resolved(*discriminator);
    if (const auto* const enumeration = as<EnumType>(type)) {
        return std::ranges::any_of(enumeration->enumerators, [bits](const Enumerator& each) {
            return static_cast<std::uint64_t>(std::int64_t{each.value}) == bits;
        });
    }
    return type.kind == TypeKind::Boolean || caseOf(bits) != nullptr;
}

const Type& resolved(const Type& type)
{
    const Type* result = &type;
    while (const auto* const alias = as<AliasType>(*result)) {
        result = alias->target;
    }
    return *result;
}

template <>
const StringType* as<StringType>(const Type& type)
{
    return between<StringType>(type, TypeKind::String, TypeKind::WString);
}

template <>
const SequenceType* as<SequenceType>(const Type& type)
{
    return only<SequenceType>(type, TypeKind::Sequence);
}

template <>
const ArrayType* as<ArrayType>(const Type& type)
{
    return only<ArrayType>(type, TypeKind::Array);
}

template <>
const MapType* as<MapType>(const Type& type)
{
    return only<MapType>(type, TypeKind::Map);
}

template <>
const NamedType* as<NamedType>(const Type& type)
{
    return between<NamedType>(type, TypeKind::Alias, TypeKind::Union);
}

template <>
const AliasType* as<AliasType>(const Type& type)
{
    return only<AliasType>(type, TypeKind::Alias);
}

template <>
const EnumType* as<EnumType>(const Type& type)
{
    return only<EnumType>(type, TypeKind::Enum);
}

template <>
const BitmaskType* as<BitmaskType>(const Type& type)
{
    return only<BitmaskType>(type, TypeKind::Bitmask);
}

template <>
const BitsetType* as<BitsetType>(const Type& type)
{
    return only<BitsetType>(type, TypeKind::Bitset);
}

template <>
const StructType* as<StructType>(const Type& type)
{
    return only<StructType>(type, TypeKind::Struct);
}

template <>
const UnionType* as<UnionType>(const Type& type)
{
    return only<UnionType>(type, TypeKind::Union);
}

bool isPrimitive(TypeKind kind)
{
    return kind <= TypeKind::LongDouble;
}

bool isInteger(TypeKind kind)
{
    return kind == TypeKind::Octet || (kind >= TypeKind::Int8 && kind <= TypeKind::Uint64);
}

bool isFloating(TypeKind kind)
{
    return kind >= TypeKind::Float && kind <= TypeKind::LongDouble;
}

namespace
{

/// The smallest of 8, 16, 32 and 64 that is not below a number of bits.
std::uint32_t storageFor(std::uint32_t bits)
{
    return std::max(8U, std::bit_ceil(bits));
}

} // namespace

std::uint32_t storageBits(const Type& type)
{
    if (const auto* const enumeration = as<EnumType>(type)) {
        return storageFor(enumeration->bitBound);
    }
    if (const auto* const bitmask = as<BitmaskType>(type)) {
        return storageFor(bitmask->bitBound);
    }
    switch (type.kind) {
    case TypeKind::Octet:
    case TypeKind::Int8:
    case TypeKind::Uint8:
        return 8;
    case TypeKind::Int16:
    case TypeKind::Uint16:
        return 16;
    case TypeKind::Int32:
    case TypeKind::Uint32:
        return 32;
    case TypeKind::Int64:
    case TypeKind::Uint64:
        return 64;
    default:
        return 0;
    }
}

std::vector<const Member*> allMembers(const StructType& type)
{
    std::vector<const StructType*> chain;
    for (const StructType* part = &type; part != nullptr; part = part->base) {
        chain.push_back(part);
    }
    std::vector<const Member*> members;
    for (const StructType* const part : chain | std::views::reverse) {
        for (const Member& member : part->members) {
            members.push_back(&member);
        }
    }
    return members;
}

std::uint32_t elementCount(const ArrayType& type)
{
    std::uint32_t count = 1;
    for (const std::uint32_t dimension : type.dimensions) {
        count *= dimension;
    }
    return count;
}

} // namespace ovra::plex::idl
