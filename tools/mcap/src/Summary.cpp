// SPDX-License-Identifier: Apache-2.0
#include "Contents.hpp"
#include "Crc32.hpp"

#include <algorithm>

namespace ovra::plex::mcap
{

namespace
{

struct Summary {
    Contents contents;
    bool hasStatistics = false;
    std::uint64_t chunks = 0; ///< that the statistics count
};

void addStatistics(Summary& summary, Input content)
{
    auto& statistics = summary.contents.statistics;
    statistics.messages = content.number<std::uint64_t>();
    content.bytes(2 + 4 + 4 + 4); // the numbers of schemas, channels, attachments and metadata
    summary.chunks = content.number<std::uint32_t>();
    statistics.begin = content.number<std::uint64_t>();
    statistics.end = content.number<std::uint64_t>();
    statistics.messagesOfChannels = content.numbers();
    summary.hasStatistics = true;
}

void addChunkIndex(Summary& summary, Input content, std::uint64_t end)
{
    const Input begin = content;
    Section section;
    section.begin = content.number<std::uint64_t>();
    section.end = content.number<std::uint64_t>();
    section.offset = content.number<std::uint64_t>();
    section.length = content.number<std::uint64_t>();
    if (section.offset > end || section.length > end - section.offset) {
        begin.fail("the index names a chunk that is not within the data");
    }
    summary.contents.sections.push_back(section);
}

Summary parse(Input input, std::uint64_t begin)
{
    Summary summary;
    while (auto record = nextRecord(input)) {
        switch (record->opcode) {
        case Opcode::Schema:
            addSchema(summary.contents, record->content);
            break;
        case Opcode::Channel:
            addChannel(summary.contents, record->content);
            break;
        case Opcode::Statistics:
            addStatistics(summary, record->content);
            break;
        case Opcode::ChunkIndex:
            addChunkIndex(summary, record->content, begin);
            break;
        default:
            break;
        }
    }
    return summary;
}

/// Whether all that is to be known of the file is in its summary.
bool saysEnough(const Summary& summary)
{
    const auto& contents = summary.contents;
    const auto& counts = contents.statistics.messagesOfChannels;
    if (!summary.hasStatistics || summary.chunks != contents.sections.size()) {
        return false;
    }
    return contents.statistics.messages == 0 || (!contents.sections.empty() && !counts.empty() &&
                                                 std::ranges::all_of(counts, [&](const auto& each) {
                                                     return contents.channels.contains(each.first);
                                                 }));
}

Header readHeader(const InputFile& file, const ReaderOptions& options)
{
    Section section{magic.size(), prefixSize, false, 0, 0};
    auto bytes = load(file, section, options);
    Input prefix = recordsOf(section, bytes);
    if (static_cast<Opcode>(prefix.number<std::uint8_t>()) != Opcode::Header) {
        throw FormatError("the file does not begin with a header", magic.size());
    }
    section.offset += prefixSize;
    section.length = prefix.number<std::uint64_t>();
    if (section.length > file.size() - section.offset) {
        throw FormatError("the header is longer than the file", magic.size());
    }
    bytes = load(file, section, options);
    return parseHeader(recordsOf(section, bytes));
}

} // namespace

std::optional<Contents> readSummary(const InputFile& file, const ReaderOptions& options)
{
    const std::uint64_t footerAt = file.size() - magic.size() - footerSize - prefixSize;
    const auto footer = file.read(footerAt, prefixSize + footerSize);
    Input input(footer, footerAt);
    const auto record = nextRecord(input);
    if (!record || record->opcode != Opcode::Footer || input.left() > 0) {
        throw FormatError("there is no footer", footerAt);
    }
    Input content = record->content;
    const auto begin = content.number<std::uint64_t>();
    content.number<std::uint64_t>(); // where the summary offsets are: all of the summary is read
    const auto crc = content.number<std::uint32_t>();
    if (begin == 0) {
        return std::nullopt;
    }
    if (begin < magic.size() || begin > footerAt) {
        throw FormatError("the footer names a summary at byte " + std::to_string(begin), footerAt);
    }
    const Section section{begin, footerAt - begin, false, 0, 0};
    const auto bytes = load(file, section, options);
    if (crc != 0) {
        Crc32 found;
        found.add(bytes);
        found.add(std::span(footer).first(footer.size() - sizeof crc));
        if (found.value() != crc) {
            throw FormatError("the summary has a wrong checksum", begin);
        }
    }
    auto summary = parse(recordsOf(section, bytes), begin);
    if (!saysEnough(summary)) {
        return std::nullopt;
    }
    summary.contents.header = readHeader(file, options);
    return std::move(summary.contents);
}

} // namespace ovra::plex::mcap
