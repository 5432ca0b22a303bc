// SPDX-License-Identifier: Apache-2.0
// The interface modules that are installed: libraries that describe their topic types.
#pragma once

#include <plex/module/TypeDescription.hpp>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// Where libraries of modules are looked for: in the folders given, in those of LD_LIBRARY_PATH, beside this
/// program's own libraries and where the system has its libraries. Each once, in this order.
std::vector<std::filesystem::path> moduleDirectories(const std::vector<std::string>& first);

/// The names of the functions of a library that describe types, generated_dds_Description_…, without opening
/// it.
/// @returns empty for what is no library of this machine's kind.
std::vector<std::string> descriptionSymbols(const std::filesystem::path& library);

/// Finds the first description that is wanted, and opens as few libraries as it can: what the name of a type
/// ends with is looked for first. A library that was opened stays so, and what it describes stays valid.
/// @returns null: none is wanted.
const ps::TypeDescription* findDescription(const std::vector<std::filesystem::path>& directories,
                                           const std::string& typeName,
                                           const std::function<bool(const ps::TypeDescription&)>& isWanted);

} // namespace ovra::plex::tool
