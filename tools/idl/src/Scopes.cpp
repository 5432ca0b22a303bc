// SPDX-License-Identifier: Apache-2.0
#include "Scopes.hpp"

#include "Text.hpp"

namespace ovra::plex::idl
{

const Symbol* Scope::add(const Symbol& symbol)
{
    const auto [known, isNew] = symbols_.try_emplace(lowerCase(symbol.name), symbol);
    return isNew ? nullptr : &known->second;
}

const Symbol* Scope::find(std::string_view name) const
{
    const auto found = symbols_.find(lowerCase(name));
    return found == symbols_.end() ? nullptr : &found->second;
}

const Symbol* Scopes::findIn(const Symbol& symbol, std::string_view name)
{
    if (auto* const* module = std::get_if<Module*>(&symbol.meaning)) {
        return of(**module).find(name);
    }
    if (auto* const* type = std::get_if<NamedType*>(&symbol.meaning)) {
        return of(**type).find(name);
    }
    return nullptr;
}

const Symbol* Scopes::findFrom(const Module& module, std::string_view name)
{
    const Symbol* nearest = nullptr;
    for (const Module* scope = &module; scope != nullptr; scope = scope->parent) {
        const Symbol* const symbol = of(*scope).find(name);
        if (symbol != nullptr && symbol->name == name) {
            return symbol;
        }
        nearest = nearest == nullptr ? symbol : nearest;
    }
    return nearest;
}

} // namespace ovra::plex::idl
