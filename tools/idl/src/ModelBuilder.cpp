// SPDX-License-Identifier: Apache-2.0
#include "ModelBuilder.hpp"

namespace ovra::plex::idl
{

ModelBuilder::ModelBuilder()
{
    for (auto i = static_cast<int>(TypeKind::Boolean); i <= static_cast<int>(TypeKind::LongDouble); ++i) {
        primitives_.push_back(&make<Type>(static_cast<TypeKind>(i)));
    }
}

Module& ModelBuilder::makeModule(Module& parent, const std::string& name)
{
    Module& module = storage().modules.emplace_back();
    module.name = name;
    module.parent = &parent;
    module.scopedName = scopedNameIn(parent, name);
    parent.declarations.emplace_back(&module);
    return module;
}

void ModelBuilder::add(Module& module, const NamedType& type)
{
    module.declarations.emplace_back(&type);
    model_.types.push_back(&type);
    storage().typesByName.emplace(type.scopedName, &type);
}

void ModelBuilder::add(Module& module, const Constant& constant)
{
    module.declarations.emplace_back(&constant);
    model_.constants.push_back(&constant);
    storage().constantsByName.emplace(constant.scopedName, &constant);
}

Model ModelBuilder::finish(std::vector<SourceFile> files)
{
    model_.files = std::move(files);
    return std::move(model_);
}

std::string scopedNameIn(const Module& module, const std::string& name)
{
    return module.scopedName.empty() ? name : module.scopedName + "::" + name;
}

} // namespace ovra::plex::idl
