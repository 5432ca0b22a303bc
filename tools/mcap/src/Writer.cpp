// SPDX-License-Identifier: Apache-2.0
#include "Compression.hpp"
#include "Crc32.hpp"
#include "File.hpp"
#include "Output.hpp"

#include <plex/mcap/Writer.hpp>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace ovra::plex::mcap
{

namespace
{

/// Where the messages of a channel are in a chunk: log times, and places in what is uncompressed.
using MessagePlaces = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

void put(Output& output, const Schema& schema)
{
    output.record(Opcode::Schema, [&] {
        output.put(schema.id);
        output.put(std::string_view(schema.name));
        output.put(std::string_view(schema.encoding));
        output.put(std::string_view(schema.data));
    });
}

void put(Output& output, const Channel& channel)
{
    output.record(Opcode::Channel, [&] {
        output.put(channel.id);
        output.put(channel.schema);
        output.put(std::string_view(channel.topic));
        output.put(std::string_view(channel.encoding));
        output.put(channel.metadata);
    });
}

/// What the summary says of a chunk.
struct ChunkIndex {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    std::map<std::uint16_t, std::uint64_t> messageIndexes;
    std::uint64_t messageIndexLength = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t uncompressedSize = 0;
};

/// Adds a log time to a span of times.
void extend(std::uint64_t& begin, std::uint64_t& end, std::uint64_t time, bool isFirst)
{
    begin = isFirst ? time : std::min(begin, time);
    end = isFirst ? time : std::max(end, time);
}

} // namespace

class Writer::Implementation
{
public:
    Implementation(const std::filesystem::path& path, const WriterOptions& options)
        : options_(options)
        , file_(path, options.overwrites)
        , compressor_(options.compression)
    {
        Output output;
        output.put(std::span<const std::uint8_t>(magic));
        output.record(Opcode::Header, [&] {
            output.put(std::string_view());
            output.put(std::string_view(options.library));
        });
        append(output);
    }

    std::uint16_t add(Schema schema)
    {
        schema.id = nextId(schemas_);
        put(chunk_, schema);
        schemas_.push_back(std::move(schema));
        return schemas_.back().id;
    }

    std::uint16_t add(Channel channel)
    {
        channel.id = nextId(channels_);
        put(chunk_, channel);
        channels_.push_back(std::move(channel));
        return channels_.back().id;
    }

    void write(const Message& message)
    {
        if (message.channel == 0 || message.channel > channels_.size()) {
            throw std::invalid_argument("a message is of a channel that is not there");
        }
        places_[message.channel].emplace_back(message.logTime, chunk_.size());
        chunk_.put(static_cast<std::uint8_t>(Opcode::Message));
        chunk_.put(std::uint64_t{messageHeadSize + message.data.size()});
        chunk_.put(message.channel);
        chunk_.put(message.sequence);
        chunk_.put(message.logTime);
        chunk_.put(message.publishTime);
        chunk_.put(message.data);
        extend(begin_, end_, message.logTime, messages_++ == 0);
        extend(statistics_.begin, statistics_.end, message.logTime, statistics_.messages++ == 0);
        ++statistics_.messagesOfChannels[message.channel];
        if (chunk_.size() >= options_.chunkBytes) {
            flush();
        }
    }

    void flush()
    {
        if (chunk_.size() == 0) {
            return;
        }
        const auto records = compressor_.compress(chunk_.bytes());
        ChunkIndex index{begin_, end_, file_.size(), 0, {}, 0, records.size(), chunk_.size()};
        Output output;
        output.record(Opcode::Chunk, [&] {
            output.put(begin_);
            output.put(end_);
            output.put(std::uint64_t{chunk_.size()});
            output.put(crc32(chunk_.bytes()));
            output.put(nameOf(options_.compression));
            output.put(std::uint64_t{records.size()});
            output.put(records);
        });
        index.length = output.size();
        putMessageIndexes(output, index);
        append(output);
        chunks_.push_back(std::move(index));
        chunk_.clear();
        places_.clear();
        messages_ = 0;
        begin_ = end_ = 0;
    }

    void close()
    {
        flush();
        Output end;
        end.record(Opcode::DataEnd, [&] { end.put(dataCrc_.value()); });
        append(end);
        append(summary());
        file_.synchronise();
    }

    const Statistics& statistics() const { return statistics_; }

    std::uint64_t size() const { return file_.size(); }

private:
    template <class Things>
    static std::uint16_t nextId(const Things& things)
    {
        if (things.size() >= UINT16_MAX) {
            throw std::length_error("a file has at most 65535 channels and schemas");
        }
        return static_cast<std::uint16_t>(things.size() + 1);
    }

    /// Appends what stays as it is, or nothing.
    void append(const Output& output)
    {
        file_.append(output.bytes());
        dataCrc_.add(output.bytes());
    }

    void putMessageIndexes(Output& output, ChunkIndex& index) const
    {
        const auto begin = output.size();
        for (const auto& [channel, places] : places_) {
            index.messageIndexes[channel] = index.offset + output.size();
            output.record(Opcode::MessageIndex, [&, &all = places, id = channel] {
                output.put(id);
                output.put(static_cast<std::uint32_t>(all.size() * 2 * sizeof(std::uint64_t)));
                for (const auto& [time, place] : all) {
                    output.put(time);
                    output.put(place);
                }
            });
        }
        index.messageIndexLength = output.size() - begin;
    }

    void putChunkIndex(Output& output, const ChunkIndex& index) const
    {
        output.record(Opcode::ChunkIndex, [&] {
            output.put(index.begin);
            output.put(index.end);
            output.put(index.offset);
            output.put(index.length);
            output.put(index.messageIndexes);
            output.put(index.messageIndexLength);
            output.put(nameOf(options_.compression));
            output.put(index.compressedSize);
            output.put(index.uncompressedSize);
        });
    }

    void putStatistics(Output& output) const
    {
        output.record(Opcode::Statistics, [&] {
            output.put(statistics_.messages);
            output.put(static_cast<std::uint16_t>(schemas_.size()));
            output.put(static_cast<std::uint32_t>(channels_.size()));
            output.put(std::uint32_t{0}); // attachments
            output.put(std::uint32_t{0}); // metadata
            output.put(static_cast<std::uint32_t>(chunks_.size()));
            output.put(statistics_.begin);
            output.put(statistics_.end);
            output.put(statistics_.messagesOfChannels);
        });
    }

    /// The summary, where in it each kind of records is, and the end of the file.
    Output summary() const
    {
        struct Group {
            Opcode opcode;
            std::uint64_t begin;
            std::uint64_t length;
        };

        Output output;
        std::vector<Group> groups;
        const auto group = [&](Opcode opcode, const auto& putRecords) {
            const auto begin = output.size();
            putRecords();
            if (output.size() > begin) {
                groups.push_back({opcode, file_.size() + begin, output.size() - begin});
            }
        };
        group(Opcode::Schema,
              [&] { std::ranges::for_each(schemas_, [&](const auto& schema) { put(output, schema); }); });
        group(Opcode::Channel,
              [&] { std::ranges::for_each(channels_, [&](const auto& channel) { put(output, channel); }); });
        group(Opcode::Statistics, [&] { putStatistics(output); });
        group(Opcode::ChunkIndex, [&] {
            std::ranges::for_each(chunks_, [&](const auto& index) { putChunkIndex(output, index); });
        });
        const std::uint64_t offsets = file_.size() + output.size();
        for (const auto& each : groups) {
            output.record(Opcode::SummaryOffset, [&] {
                output.put(static_cast<std::uint8_t>(each.opcode));
                output.put(each.begin);
                output.put(each.length);
            });
        }
        output.put(
            static_cast<std::uint8_t>(Opcode::Footer)); // at once, as the checksum is of its length, too
        output.put(std::uint64_t{footerSize});
        output.put(file_.size());
        output.put(offsets);
        output.put(crc32(output.bytes()));
        output.put(std::span<const std::uint8_t>(magic));
        return output;
    }

    const WriterOptions options_;
    OutputFile file_;
    Crc32 dataCrc_; ///< of what is in the file
    Compressor compressor_;
    std::vector<Schema> schemas_;   ///< ids are places, from 1 on
    std::vector<Channel> channels_; ///< likewise
    std::vector<ChunkIndex> chunks_;
    Statistics statistics_;
    // The chunk that grows:
    Output chunk_;
    std::map<std::uint16_t, MessagePlaces> places_;
    std::uint64_t messages_ = 0;
    std::uint64_t begin_ = 0;
    std::uint64_t end_ = 0;
};

Writer::Writer(const std::filesystem::path& file, const WriterOptions& options)
    : implementation_(std::make_unique<Implementation>(file, options))
{
}

Writer::~Writer() = default;

std::uint16_t Writer::add(Schema schema)
{
    return implementation_->add(std::move(schema));
}

std::uint16_t Writer::add(Channel channel)
{
    return implementation_->add(std::move(channel));
}

void Writer::write(const Message& message)
{
    implementation_->write(message);
}

void Writer::flush()
{
    implementation_->flush();
}

void Writer::close()
{
    implementation_->close();
}

const Statistics& Writer::statistics() const
{
    return implementation_->statistics();
}

std::uint64_t Writer::size() const
{
    return implementation_->size();
}

} // namespace ovra::plex::mcap
