// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Annotations.hpp"
#include "Context.hpp"

#include <optional>
#include <string>
#include <unordered_map>

namespace ovra::plex::idl
{

/// The names and ids of the members of a struct or union, each of which is there once.
class MemberTable
{
public:
    /// @param base of those of the type that this one extends; may be null. @param first id that is given.
    MemberTable(const MemberTable* base, std::uint32_t first, bool hashesIds)
        : base_(base)
        , next_(base == nullptr ? first : base->highest_ + 1)
        , highest_(base == nullptr ? HasNoId : base->highest_)
        , hashesIds_(hashesIds)
    {
    }

    /// Enters a member and gives it its id; says so where name or id is taken.
    void add(Context& context, Member& member, const AnnotationList& annotations);

private:
    static constexpr std::uint32_t HasNoId = ~0U; ///< behind it comes 0

    std::uint32_t idOf(Context& context, const Member& member, const AnnotationList& annotations) const;
    void addName(Context& context, const Member& member);
    void addId(Context& context, const Member& member);

    const MemberTable* base_;
    std::uint32_t next_;    ///< the id that comes after that of the last member
    std::uint32_t highest_; ///< of all so far, those of the base included
    bool hashesIds_;
    std::unordered_map<std::string, Location> names_; ///< in lower case
    std::unordered_map<std::uint32_t, std::string> ids_;
};

/// Whether ids are made of names: @autoid before the type, or before a module around it.
bool hashesIds(Context& context, const AnnotationList& annotations);

/// Fills in what annotations say about a member or case, but its id.
void annotate(Context& context, Member& member, const AnnotationList& annotations, Annotated what);

/// Fills in unit, least and greatest value, where annotations say them or else a type's alias does.
void annotate(Context& context, Quantity& quantity, const Type& type, const AnnotationList& annotations);

/// Fills in what a declared thing has by where it stands. @param begin of its first token, @param annotated
/// that behind its annotations, @param end that of its last one.
void describe(Context& context, Declared& declared, const Token& name, std::size_t begin,
              std::size_t annotated, std::size_t end);

} // namespace ovra::plex::idl
