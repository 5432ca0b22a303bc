// SPDX-License-Identifier: Apache-2.0
// From the text of interface definitions to their model.
//
// Any thread may call these at any time. They never throw because of what a file holds, nor without bound in
// time, memory or stack; what is wrong is in the diagnostics.
#pragma once

#include <plex/idl/Diagnostics.hpp>
#include <plex/idl/Model.hpp>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovra::plex::idl
{

/// How definitions are read.
struct ParseOptions {
    /// The text of a file; nothing where there is none.
    using FileReader = std::function<std::optional<std::string>(const std::string& path)>;

    std::vector<std::string> includeDirectories; ///< searched in this order, after the including file's own
    std::vector<std::string> definitions;        ///< "NAME" or "NAME=VALUE"
    Extensibility extensibility = Extensibility::Appendable; ///< of types that say nothing
    /// The same in included files, or all below a folder, which may be of modules that chose another. The
    /// last one holds that a file's path begins with.
    std::vector<std::pair<std::string, Extensibility>> includedExtensibilities;
    /// Also refuse names that differ from a keyword in case only, or are keywords of what is not supported.
    bool strictCase = false;
    FileReader readFile; ///< empty: from disk
};

struct ParseResult {
    std::optional<Model> model; ///< only where there is no error; warnings do not hinder it
    Diagnostics diagnostics;
};

/// Reads a file and what it includes.
ParseResult parseFile(const std::string& path, const ParseOptions& options = {});

/// Reads files as one text, in their order and each once, whether another one of them includes it or not.
/// There is nothing but an empty result for no file.
ParseResult parseFiles(const std::vector<std::string>& paths, const ParseOptions& options = {});

/// Reads a text. @param name what it is called in diagnostics; includes are searched in the folder of that
/// file.
ParseResult parseText(const std::string& text, const std::string& name, const ParseOptions& options = {});

} // namespace ovra::plex::idl
