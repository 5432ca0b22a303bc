// SPDX-License-Identifier: Apache-2.0
#include "Contents.hpp"
#include "Crc32.hpp"

#include <algorithm>
#include <utility>

namespace ovra::plex::mcap
{

namespace
{

constexpr std::uint64_t blockSize = 64U << 10U;
constexpr std::uint64_t looseBytes = 4U << 20U; ///< of messages without a chunk, in one section

/// The beginnings of records, read in blocks.
class Beginnings
{
public:
    explicit Beginnings(const InputFile& file) : file_(file) {}

    /// @param size little. @returns what is there, if less.
    Input at(std::uint64_t offset, std::uint64_t size)
    {
        size = std::min(size, file_.size() - offset);
        if (offset < offset_ || offset + size > offset_ + block_.size()) {
            block_ = file_.read(offset, std::min(blockSize, file_.size() - offset));
            offset_ = offset;
        }
        return {std::span(block_).subspan(offset - offset_, size), offset};
    }

private:
    const InputFile& file_;
    std::vector<std::uint8_t> block_;
    std::uint64_t offset_ = 0;
};

class Scan
{
public:
    Scan(const InputFile& file, bool isEnded, const ReaderOptions& options)
        : file_(file)
        , options_(options)
        , isEnded_(isEnded)
        , end_(isEnded ? file.size() - magic.size() : file.size())
        , beginnings_(file)
    {
    }

    Contents run()
    {
        std::uint64_t offset = std::min<std::uint64_t>(magic.size(), file_.size());
        bool isData = true;
        while (isData && offset < end_) {
            const auto length = lengthAt(offset);
            if (length == 0) {
                break;
            }
            isData = add(offset, length);
            offset += length;
        }
        if (!isEnded_) {
            contents_.cutAt = offset;
        }
        std::ranges::stable_sort(contents_.sections, {}, &Section::begin);
        return std::move(contents_);
    }

private:
    /// The length of a record with its prefix. @returns 0: the file was cut off within it.
    std::uint64_t lengthAt(std::uint64_t offset)
    {
        auto prefix = beginnings_.at(offset, std::min<std::uint64_t>(prefixSize, end_ - offset));
        std::uint64_t length = 0;
        // No record is of kind 0. A system that loses its power leaves such bytes.
        if (prefix.left() == prefixSize && prefix.number<std::uint8_t>() != 0) {
            const auto content = prefix.number<std::uint64_t>();
            length = content > end_ - offset - prefixSize ? 0 : content + prefixSize;
        }
        if (length == 0 && isEnded_) {
            throw FormatError("a record is damaged: its kind or its length can not be", offset);
        }
        return length;
    }

    /// @returns whether further data may follow.
    bool add(std::uint64_t offset, std::uint64_t length)
    {
        const auto opcode = static_cast<Opcode>(beginnings_.at(offset, prefixSize).number<std::uint8_t>());
        if (!hasHeader_ && opcode != Opcode::Header) {
            throw FormatError("the file does not begin with a header", offset);
        }
        const Section record{offset, length, opcode == Opcode::Chunk, 0, 0};
        switch (opcode) {
        case Opcode::Header:
            contents_.header = parseHeader(contentOf(record));
            hasHeader_ = true;
            break;
        case Opcode::Schema:
            addSchema(contents_, contentOf(record));
            break;
        case Opcode::Channel:
            addChannel(contents_, contentOf(record));
            break;
        case Opcode::Message:
            addLoose(record);
            break;
        case Opcode::Chunk:
            addChunk(record);
            break;
        case Opcode::DataEnd:
            checkData(offset, contentOf(record).number<std::uint32_t>());
            return false;
        case Opcode::Footer:
            return false;
        default: // what is passed over, and what later versions may have
            break;
        }
        return true;
    }

    /// The content of a record, valid until the next one's.
    Input contentOf(const Section& record)
    {
        bytes_ = load(file_, record, options_);
        auto input = recordsOf(record, bytes_);
        return nextRecord(input).value().content; // NOLINT(bugprone-unchecked-optional-access): just loaded
    }

    void count(const Message& message, const Input& where, Section& section, bool isFirst)
    {
        if (!contents_.channels.contains(message.channel)) {
            where.fail("a message has channel " + std::to_string(message.channel) + ", which is not there");
        }
        const auto time = message.logTime;
        section.begin = isFirst ? time : std::min(section.begin, time);
        section.end = isFirst ? time : std::max(section.end, time);
        auto& all = contents_.statistics;
        all.begin = all.messages == 0 ? time : std::min(all.begin, time);
        all.end = all.messages == 0 ? time : std::max(all.end, time);
        ++all.messages;
        ++all.messagesOfChannels[message.channel];
    }

    /// A message outside of chunks joins those before it.
    void addLoose(const Section& record)
    {
        auto content = beginnings_.at(record.offset + prefixSize,
                                      std::min<std::uint64_t>(messageHeadSize, record.length - prefixSize));
        auto& sections = contents_.sections;
        const bool joins = !sections.empty() && !sections.back().isChunk &&
                           sections.back().offset + sections.back().length == record.offset &&
                           sections.back().length < looseBytes;
        if (!joins) {
            sections.push_back({record.offset, 0, false, 0, 0});
        }
        count(parseMessage(content), content, sections.back(), !joins);
        sections.back().length += record.length;
    }

    void addChunk(const Section& record)
    {
        const auto bytes = load(file_, record, options_);
        auto records = recordsOf(record, bytes);
        Section section = record;
        bool isEmpty = true;
        while (const auto each = nextRecord(records)) {
            if (each->opcode == Opcode::Schema) {
                addSchema(contents_, each->content);
            } else if (each->opcode == Opcode::Channel) {
                addChannel(contents_, each->content);
            } else if (each->opcode == Opcode::Message) {
                count(parseMessage(each->content), each->content, section, isEmpty);
                isEmpty = false;
            }
        }
        if (!isEmpty) {
            contents_.sections.push_back(section);
        }
    }

    /// Checks the checksum of all that comes before the end of the data.
    void checkData(std::uint64_t end, std::uint32_t crc) const
    {
        if (crc == 0) {
            return;
        }
        Crc32 found;
        for (std::uint64_t offset = 0; offset < end; offset += blockSize) {
            found.add(file_.read(offset, std::min(blockSize, end - offset)));
        }
        if (found.value() != crc) {
            throw FormatError("the data has a wrong checksum", end);
        }
    }

    const InputFile& file_;
    const ReaderOptions& options_;
    const bool isEnded_;
    const std::uint64_t end_;
    Beginnings beginnings_;
    bool hasHeader_ = false;
    std::vector<std::uint8_t> bytes_;
    Contents contents_;
};

} // namespace

Contents scan(const InputFile& file, bool isEnded, const ReaderOptions& options)
{
    return Scan(file, isEnded, options).run();
}

} // namespace ovra::plex::mcap
