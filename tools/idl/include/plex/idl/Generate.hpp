// SPDX-License-Identifier: Apache-2.0
// From a model to the source files of its interface module: value types of the contract, and their binding to
// DDS. Any thread may call this; what it returns refers to nothing.
#pragma once

#include <plex/idl/Diagnostics.hpp>
#include <plex/idl/Encoding.hpp>
#include <plex/idl/Model.hpp>
#include <plex/idl/Topics.hpp>

#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::idl
{

struct GenerateOptions {
    TopicSelection topics = TopicSelection::Automatic;
    /// The name of a topic's type in DDS, with {module} ("a::b") and {type} in it.
    std::string typeName = "generated::dds_::{module}::{type}";
    /// Over how many source files, which include the others, what is compiled is spread; at least 1.
    unsigned shards = 1;
    /// Whether to look at the definitions only: they may have no topic.
    bool definitionsOnly = false;
    /// See EncodingRules; nothing: false, with a warning where it makes a difference.
    std::optional<bool> delimitsEnumerations;
    /// See EncodingRules; nothing: version 1, with a warning where it makes a difference.
    std::optional<XcdrVersion> keyVersion;
};

struct GeneratedFile {
    std::string path; ///< relative: "include/…", "src/…" or "dds/…"
    std::string text;
};

struct Generation {
    std::vector<GeneratedFile> files; ///< none where there is an error
    Diagnostics diagnostics;
};

/// Writes what the named files declare; what they include is used.
Generation generate(const Model& model, const GenerateOptions& options = {});

} // namespace ovra::plex::idl
