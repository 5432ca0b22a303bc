// SPDX-License-Identifier: Apache-2.0
// What values of a topic look like, by the name of their type.
#pragma once

#include <plex/idl/Codec.hpp>
#include <plex/idl/Model.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// Where types are looked for.
struct TypeOptions {
    std::vector<std::string> files;              ///< definitions, which are looked at first
    std::vector<std::string> includeDirectories; ///< for these
    std::string extensibility = "appendable";    ///< of their types that say nothing
    std::string enumDelimiters = "none";         ///< or "standard": how their types are encoded
    std::string keyHash = "xcdr1";               ///< or "xcdr2": likewise
    std::string name;                            ///< in the definition; empty: as DDS calls it
    std::vector<std::string> modulePath;         ///< folders with libraries of modules
};

/// A type of which the values can be read and written.
struct KnownType {
    std::shared_ptr<const idl::Model> model;
    const idl::StructType* type; ///< of the model
    std::string ddsName;
    idl::CodecOptions codec;
    idl::XcdrVersion keyVersion;
};

/// Finds a type in the definitions, else in the modules that are installed.
/// @param name in DDS ("generated::dds_::dome::Shutter") or in the definition ("dome::Shutter").
/// @returns nothing: it is unknown.
/// @throws Failure where a definition has errors, or has no such type.
std::optional<KnownType> findType(const std::string& name, const TypeOptions& options);

/// The name in the definition of a type that DDS knows by a name that a generator has made of it: "a::b::T"
/// of "generated::dds_::a::b::T", or "a::T" of "a::dds_::T_".
std::string definedName(const std::string& ddsName);

} // namespace ovra::plex::tool
