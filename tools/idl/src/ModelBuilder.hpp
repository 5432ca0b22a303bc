// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Model.hpp>

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ovra::plex::idl
{

/// What a model owns.
struct Model::Storage {
    std::vector<std::unique_ptr<Type>> types;
    std::deque<Constant> constants;
    std::deque<Module> modules; ///< the root comes first
    std::unordered_map<std::string, const NamedType*> typesByName;
    std::unordered_map<std::string, const Constant*> constantsByName;
};

/// Makes the nodes of a model, which stay where they are.
class ModelBuilder
{
public:
    ModelBuilder();

    Module& root() { return storage().modules.front(); }

    const Type& primitive(TypeKind kind) const { return *primitives_.at(static_cast<std::size_t>(kind)); }

    template <class T, class... Arguments>
    T& make(Arguments&&... arguments)
    {
        auto type = std::make_unique<T>(std::forward<Arguments>(arguments)...);
        T& result = *type;
        storage().types.push_back(std::move(type));
        return result;
    }

    Module& makeModule(Module& parent, const std::string& name);

    Constant& makeConstant() { return storage().constants.emplace_back(); }

    /// Puts a type that is complete, or a constant, where it is found.
    void add(Module& module, const NamedType& type);
    void add(Module& module, const Constant& constant);

    Model finish(std::vector<SourceFile> files);

private:
    Model::Storage& storage() { return *model_.storage_; }

    Model model_;
    std::vector<const Type*> primitives_;
};

/// "a::b::name" of something in a module.
std::string scopedNameIn(const Module& module, const std::string& name);

} // namespace ovra::plex::idl
