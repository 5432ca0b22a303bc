// SPDX-License-Identifier: Apache-2.0
// What a file holds, and how that is found out.
#pragma once

#include "File.hpp"
#include "Input.hpp"

#include <plex/mcap/Reader.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace ovra::plex::mcap
{

/// Messages that lie together: a chunk, or some that are in none.
struct Section {
    std::uint64_t offset = 0; ///< of the chunk's record, or of the first one
    std::uint64_t length = 0; ///< of all records
    bool isChunk = true;
    std::uint64_t begin = 0; ///< the earliest log time
    std::uint64_t end = 0;   ///< the latest one
};

struct Contents {
    Header header;
    std::map<std::uint16_t, Schema> schemas;
    std::map<std::uint16_t, Channel> channels;
    Statistics statistics;
    std::vector<Section> sections; ///< with messages; by their beginnings
    std::optional<std::uint64_t> cutAt;
};

/// Whether the file ends as it should. @throws FormatError where it does not begin as it should.
bool isEnded(const InputFile& file);

/// By the summary. @returns nothing: there is none that says enough.
std::optional<Contents> readSummary(const InputFile& file, const ReaderOptions& options);

/// By reading all of the file.
Contents scan(const InputFile& file, bool isEnded, const ReaderOptions& options);

/// The records of a section, uncompressed and checked. The numbers of the section need not be true.
std::vector<std::uint8_t> load(const InputFile& file, const Section& section, const ReaderOptions& options);

/// The same to be read.
Input recordsOf(const Section& section, const std::vector<std::uint8_t>& bytes);

// --- Records -----------------------------------------------------------------------------------------------

Header parseHeader(Input content);
Message parseMessage(Input content);

/// Adds a schema or a channel, which may be there already. @throws FormatError where it is another one then.
void addSchema(Contents& contents, Input content);
void addChannel(Contents& contents, Input content);

} // namespace ovra::plex::mcap
