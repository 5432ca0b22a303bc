// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Generate.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// Writes files below a folder: all of them, or where that fails, none. One that is there already with the
/// same text is left as it is, so that what was made from it stays up to date.
/// @throws std::runtime_error saying which one can not be written.
void writeFiles(const std::filesystem::path& folder, const std::vector<GeneratedFile>& files);

/// A rule for make: each of the targets depends on what was read.
std::string dependencies(const std::vector<std::string>& targets, const std::vector<std::string>& read);

} // namespace ovra::plex::idl
