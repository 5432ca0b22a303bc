// SPDX-License-Identifier: Apache-2.0
#include "TypeSource.hpp"

#include "Failure.hpp"
#include "Modules.hpp"
#include "Words.hpp"

#include <plex/idl/Parse.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

std::vector<std::string> partsOf(const std::string& scopedName)
{
    std::vector<std::string> parts;
    std::string::size_type begin = 0;
    for (auto end = scopedName.find("::"); end != std::string::npos; end = scopedName.find("::", begin)) {
        parts.push_back(scopedName.substr(begin, end - begin));
        begin = end + 2;
    }
    parts.push_back(scopedName.substr(begin));
    return parts;
}

/// How generated code calls a type by default.
std::string generatedName(const std::string& definedName)
{
    return "generated::dds_::" + definedName;
}

std::vector<std::string> structsOf(const idl::Model& model)
{
    std::vector<std::string> names;
    for (const auto* const type : model.types) {
        if (type->kind == idl::TypeKind::Struct) {
            names.push_back(type->scopedName);
        }
    }
    return names;
}

std::shared_ptr<const idl::Model> parse(const TypeOptions& options)
{
    static const std::map<std::string, idl::Extensibility> extensibilities{
        {"final", idl::Extensibility::Final},
        {"appendable", idl::Extensibility::Appendable},
        {"mutable", idl::Extensibility::Mutable}};
    idl::ParseOptions parsing;
    parsing.includeDirectories = options.includeDirectories;
    parsing.extensibility = extensibilities.at(options.extensibility);
    auto result = idl::parseFiles(options.files, parsing);
    std::cerr << toString(result.diagnostics);
    if (!result.model) {
        throw Failure(ExitCode::Usage, "the definition has errors");
    }
    return std::make_shared<const idl::Model>(std::move(*result.model));
}

KnownType fromDefinitions(const std::string& name, const TypeOptions& options)
{
    const auto model = parse(options);
    const bool isNamed = !options.name.empty();
    const auto* found = model->findType(isNamed ? options.name : name);
    bool isInDds = true; // whether the name is already that of DDS
    if (found == nullptr && !isNamed) {
        found = model->findType(definedName(name));
    } else if (!isNamed) {
        isInDds = false;
    }
    const auto* const type = found == nullptr ? nullptr : idl::as<idl::StructType>(*found);
    if (type == nullptr) {
        const auto names = structsOf(*model);
        std::string text = "the definition has no struct \"" + (isNamed ? options.name : name) + "\"";
        text += suggestion(isNamed ? options.name : definedName(name), names);
        throw Failure(ExitCode::NotFound, text + (isNamed ? "" : "; --type names it"));
    }
    idl::CodecOptions codec;
    codec.delimitsEnumerations = options.enumDelimiters == "standard";
    return {model, type, isInDds ? name : generatedName(name), codec,
            options.keyHash == "xcdr2" ? idl::XcdrVersion::Xcdr2 : idl::XcdrVersion::Xcdr1};
}

KnownType fromModule(const ps::TypeDescription& description)
{
    auto result = idl::parseText(description.definition, description.ddsName);
    const auto* const found = result.model ? result.model->findType(description.name) : nullptr;
    const auto* const type = found == nullptr ? nullptr : idl::as<idl::StructType>(*found);
    if (!result.model || type == nullptr) {
        throw Failure(ExitCode::Failed,
                      std::string("the module of ") + description.ddsName +
                          " describes it in a way that this program does not understand:\n" +
                          toString(result.diagnostics));
    }
    idl::CodecOptions codec;
    codec.delimitsEnumerations = description.delimitsEnumerations;
    return {std::make_shared<const idl::Model>(std::move(*result.model)), type, description.ddsName, codec,
            description.keyVersion == 2 ? idl::XcdrVersion::Xcdr2 : idl::XcdrVersion::Xcdr1};
}

} // namespace

std::string definedName(const std::string& ddsName)
{
    auto parts = partsOf(ddsName);
    if (parts.size() > 2 && parts[0] == "generated" && parts[1] == "dds_") {
        parts.erase(parts.begin(), parts.begin() + 2);
    } else if (parts.size() > 1 && parts[parts.size() - 2] == "dds_" && parts.back().ends_with('_')) {
        parts.erase(parts.end() - 2);
        parts.back().pop_back();
    }
    std::string name;
    for (const auto& part : parts) {
        name += (name.empty() ? "" : "::") + part;
    }
    return name;
}

std::optional<KnownType> findType(const std::string& name, const TypeOptions& options)
{
    if (!options.files.empty()) {
        return fromDefinitions(name, options);
    }
    const auto* const description =
        findDescription(moduleDirectories(options.modulePath), name,
                        [&](const auto& each) { return name == each.ddsName || name == each.name; });
    return description == nullptr ? std::nullopt : std::optional(fromModule(*description));
}

} // namespace ovra::plex::tool
