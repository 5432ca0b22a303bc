// SPDX-License-Identifier: Apache-2.0
#include "Contents.hpp"
#include "File.hpp"

#include <algorithm>
#include <utility>

namespace ovra::plex::mcap
{

namespace
{

/// A section whose messages are read, in the order of their log times.
struct OpenSection {
    struct Place {
        std::uint64_t logTime;
        std::span<const std::uint8_t> content; ///< of the record, in the bytes
    };

    std::vector<std::uint8_t> bytes;
    std::vector<Place> places;
    std::size_t next = 0;
};

OpenSection opened(const InputFile& file, const Section& section, const Contents& contents,
                   const ReaderOptions& options)
{
    OpenSection open;
    open.bytes = load(file, section, options);
    auto records = recordsOf(section, open.bytes);
    while (auto record = nextRecord(records)) {
        if (record->opcode == Opcode::Message) {
            const auto message = parseMessage(record->content);
            if (!contents.channels.contains(message.channel)) {
                record->content.fail("a message has channel " + std::to_string(message.channel) +
                                     ", which is not there");
            }
            open.places.push_back({message.logTime, record->content.bytes(record->content.left())});
        }
    }
    std::ranges::stable_sort(open.places, {}, &OpenSection::Place::logTime);
    return open;
}

} // namespace

class Reader::Implementation
{
public:
    Implementation(const std::filesystem::path& path, const ReaderOptions& options)
        : options_(options)
        , file_(path)
        , contents_(contentsOf(file_, options_))
    {
    }

    const Contents& contents() const { return contents_; }

    std::optional<Message> next()
    {
        leaveCurrent();
        while (unopened_ < contents_.sections.size() &&
               (open_.empty() || contents_.sections[unopened_].begin <= open_.begin()->first.first)) {
            open(unopened_++);
        }
        if (open_.empty()) {
            return std::nullopt;
        }
        hasCurrent_ = true;
        const auto& section = open_.begin()->second;
        return parseMessage(Input(section.places[section.next].content, 0));
    }

    void rewind()
    {
        open_.clear();
        openBytes_ = 0;
        unopened_ = 0;
        hasCurrent_ = false;
    }

private:
    static Contents contentsOf(const InputFile& file, const ReaderOptions& options)
    {
        const bool ended = isEnded(file);
        auto contents = ended ? readSummary(file, options) : std::nullopt;
        if (!contents) {
            return scan(file, ended, options);
        }
        std::ranges::stable_sort(contents->sections, {}, &Section::begin);
        return *std::move(contents);
    }

    void open(std::size_t number)
    {
        auto section = opened(file_, contents_.sections[number], contents_, options_);
        if (section.places.empty()) {
            return;
        }
        openBytes_ += section.bytes.size();
        if (openBytes_ > options_.mostMemoryBytes) {
            throw FormatError("more chunks overlap in time than fit into " +
                                  std::to_string(options_.mostMemoryBytes) + " bytes",
                              contents_.sections[number].offset);
        }
        const auto time = section.places.front().logTime;
        open_.emplace(std::pair(time, number), std::move(section));
    }

    /// Goes on to the message after the current one.
    void leaveCurrent()
    {
        if (std::exchange(hasCurrent_, false)) {
            auto node = open_.extract(open_.begin());
            auto& section = node.mapped();
            if (++section.next < section.places.size()) {
                node.key().first = section.places[section.next].logTime;
                open_.insert(std::move(node));
            } else {
                openBytes_ -= section.bytes.size();
            }
        }
    }

    const ReaderOptions options_;
    const InputFile file_;
    const Contents contents_;
    std::map<std::pair<std::uint64_t, std::size_t>, OpenSection> open_; ///< by time and number
    std::uint64_t openBytes_ = 0;
    std::size_t unopened_ = 0; ///< the next section to be opened
    bool hasCurrent_ = false;  ///< whether the first message of the first section was given out
};

Reader::Reader(const std::filesystem::path& file, const ReaderOptions& options)
    : implementation_(std::make_unique<Implementation>(file, options))
{
}

Reader::~Reader() = default;

const Header& Reader::header() const
{
    return implementation_->contents().header;
}

const std::map<std::uint16_t, Schema>& Reader::schemas() const
{
    return implementation_->contents().schemas;
}

const std::map<std::uint16_t, Channel>& Reader::channels() const
{
    return implementation_->contents().channels;
}

const Statistics& Reader::statistics() const
{
    return implementation_->contents().statistics;
}

std::optional<std::uint64_t> Reader::cutAt() const
{
    return implementation_->contents().cutAt;
}

std::optional<Message> Reader::next()
{
    return implementation_->next();
}

void Reader::rewind()
{
    implementation_->rewind();
}

} // namespace ovra::plex::mcap
