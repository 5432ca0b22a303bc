// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Model.hpp>

#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace ovra::plex::idl
{

/// What an expression takes an enumerator for.
struct EnumeratorSymbol {
    const EnumType* type = nullptr;
    const Enumerator* enumerator = nullptr;
};

/// What a name stands for.
struct Symbol {
    std::variant<Module*, NamedType*, const Constant*, EnumeratorSymbol, const BitFlag*> meaning;
    std::string name;
    Location place;
};

/// The names of a module, enum or bitmask. Names that differ in case only are the same name.
class Scope
{
public:
    /// @returns the symbol that has this name already, or null where it was added.
    const Symbol* add(const Symbol& symbol);

    /// Finds a name in any case; null where there is none.
    const Symbol* find(std::string_view name) const;

private:
    std::unordered_map<std::string, Symbol> symbols_;
};

/// All scopes by what has them.
class Scopes
{
public:
    Scope& of(const Module& module) { return scopes_[&module]; }

    Scope& of(const NamedType& type) { return scopes_[&type]; }

    /// What a name stands for inside a symbol; null where it has no such name.
    const Symbol* findIn(const Symbol& symbol, std::string_view name);

    /// What a name stands for in a module and those around it; null where it stands for nothing.
    const Symbol* findFrom(const Module& module, std::string_view name);

private:
    std::unordered_map<const void*, Scope> scopes_;
};

} // namespace ovra::plex::idl
