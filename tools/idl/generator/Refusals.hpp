// SPDX-License-Identifier: Apache-2.0
// What a definition may say that nothing is generated for.
#pragma once

#include <plex/idl/Diagnostics.hpp>
#include <plex/idl/Model.hpp>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ovra::plex::idl
{

/// Looks for what can not be generated, and says so with a hint.
class Refusals
{
public:
    Refusals(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    /// Whether a type can have a plain form.
    bool accept(const NamedType& type);

    /// Whether a constant can be one of C++.
    bool accept(const Constant& constant);

    /// Whether a struct can be a topic.
    bool acceptTopic(const StructType& topic);

    /// Refuses members of included types whose plain form would be in a header that is written, where it is
    /// not: that has the types of the named files only.
    void refuseMissingTypes(const std::vector<const NamedType*>& declared);

    /// Says that there is no topic.
    void refuseToDoNothing();

private:
    void refuse(const Location& place, const std::string& message, const std::string& hint);
    void checkPlace(const NamedType& type);
    void checkName(const void* scope, const Declared& declared, const std::string& name);
    void checkAccessors(const StructType& topic);
    void checkKey(const Type& declared, const Member& key);
    void checkUnion(const UnionType& type);
    void checkType(const Type& type, const Location& place);
    void checkIsDeclared(const Type& type, const Location& place, const std::set<std::string>& modules);
    void checkRecursion(const NamedType& type);
    void checkSize(const NamedType& type);
    std::uint64_t sizeOf(const Type& declared);
    std::uint64_t sizeOfParts(const Type& type);

    static constexpr std::uint64_t mostBytes = 64ULL
                                               << 20U; ///< of a value without what strings and sequences hold

    std::map<std::pair<const void*, std::string>, const Declared*> names_; ///< of C++, by module or enum
    std::unordered_map<const Type*, std::uint64_t> sizes_;
    const Model& model_;
    Diagnostics& diagnostics_;
};

} // namespace ovra::plex::idl
