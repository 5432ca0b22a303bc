// SPDX-License-Identifier: Apache-2.0
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../Printable.hpp"
#include "../Progress.hpp"
#include "../RawWriter.hpp"
#include "../RecordedChannel.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <plex/mcap/Reader.hpp>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <tuple>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr auto longestBlocking = std::chrono::seconds(30); ///< longer than a killed reader stays known

std::string nameIn(const std::string& file, const std::string& text)
{
    return "\"" + file + "\": " + text;
}

/// Old names of topics and their new ones.
std::map<std::string, std::string> renamingsOf(const ReplayOptions& options)
{
    std::map<std::string, std::string> renamings;
    for (const auto& text : options.renamings) {
        const auto sign = text.find('=');
        if (sign == std::string::npos || sign == 0 || sign + 1 == text.size()) {
            throw Failure(ExitCode::Usage, "--rename \"" + text + "\" is not OLD=NEW");
        }
        renamings[text.substr(0, sign)] = text.substr(sign + 1);
    }
    return renamings;
}

/// Refuses names of topics that the recording does not have.
void requireTopics(const mcap::Reader& recording, const ReplayOptions& options,
                   const std::map<std::string, std::string>& renamings)
{
    std::set<std::string> topics;
    for (const auto& [id, channel] : recording.channels()) {
        topics.insert(channel.topic);
    }
    const auto require = [&](const std::string& topic) {
        if (!topics.contains(topic)) {
            throw Failure(ExitCode::NotFound, nameIn(options.file, "it has no topic \"" + topic + "\"") +
                                                  suggestion(topic, {topics.begin(), topics.end()}));
        }
    };
    std::ranges::for_each(options.topics, require);
    for (const auto& [name, newName] : renamings) {
        require(name);
    }
}

/// A publisher of what was recorded of one or several writers that have offered the same.
class Publisher
{
public:
    Publisher(Domain& domain, const std::string& topic, const Replayable& what)
        : domain_(domain)
        , topic_(topic)
        , type_(what.type)
        , writer_(domain, topic,
                  {what.type, what.keyed,
                   what.isXcdr2 ? dds::XCDR2_DATA_REPRESENTATION : dds::XCDR_DATA_REPRESENTATION, true},
                  suited(domain, topic, what))
    {
    }

    const std::string& topic() const { return topic_; }

    std::size_t matched() const { return writer_.matched(); }

    /// Whether it has a reader, and all that fit as far as they are known.
    bool hasAll() const
    {
        const auto readers = readersIn(domain_.scene());
        const auto fitting = std::ranges::count_if(
            readers, [&](const auto& reader) { return writer_.refusalsOf(reader).empty(); });
        return matched() >= std::max<std::size_t>(1, static_cast<std::size_t>(fitting));
    }

    /// Why readers of the topic do not match.
    std::string refusals() const
    {
        const Scene scene = domain_.scene();
        std::string text;
        for (const auto& reader : scene.readersOf(topic_)) {
            for (const auto& refusal : writer_.refusalsOf(reader)) {
                text += "\n  " + shortPlace(scene, reader.guid) + ": " + toString(refusal);
            }
        }
        return text;
    }

    bool write(const RawSample& sample) { return writer_.tryToWrite(sample); }

    bool waitForAcknowledgments() { return writer_.waitForAcknowledgments(longestWait) || matched() == 0; }

private:
    std::vector<fastdds::AnnouncedEndpoint> readersIn(const Scene& scene) const
    {
        auto readers = scene.readersOf(topic_);
        std::erase_if(readers, [&](const auto& reader) { return reader.type != type_; });
        return readers;
    }

    /// What was offered then, and what is asked for now.
    static std::vector<fastdds::AnnouncedEndpoint> suited(const Domain& domain, const std::string& topic,
                                                          const Replayable& what)
    {
        std::vector<fastdds::AnnouncedEndpoint> readers{what.suited};
        for (const auto& reader : domain.scene().readersOf(topic)) {
            readers.push_back(reader);
            readers.back().partitions.clear(); // those of the recording stay
        }
        return readers;
    }

    const Domain& domain_;
    const std::string topic_;
    const std::string type_;
    RawWriter writer_;
};

/// The channels of a recording that are replayed.
class Replay
{
public:
    Replay(const ReplayOptions& options, mcap::Reader& recording)
        : options_(options)
        , recording_(recording)
        , renamings_(renamingsOf(options))
    {
        requireTopics(recording, options, renamings_);
        std::set<std::string> reasons;
        for (const auto& [id, channel] : recording.channels()) {
            if (isWanted(channel)) {
                addChannel(channel, reasons);
            }
        }
        if (channels_.empty()) {
            std::string text = "there is nothing to replay";
            for (const auto& reason : reasons) {
                text += "\n  " + reason;
            }
            throw Failure(ExitCode::Usage, nameIn(options.file, text));
        }
        for (const auto& reason : reasons) {
            remark(reason + "; it is left out");
        }
    }

    void createPublishers(Domain& domain)
    {
        for (auto& [id, channel] : channels_) {
            auto& publisher = publishers_[keyOf(channel)];
            if (!publisher) {
                publisher = std::make_unique<Publisher>(domain, channel.topic, channel.what);
            }
            channel.publisher = publisher.get();
        }
    }

    /// Waits until each topic has its readers, one at least.
    void waitForReaders()
    {
        waitFor(options_.wait, [&] {
            return std::ranges::all_of(publishers_, [](const auto& each) { return each.second->hasAll(); });
        });
        std::set<std::string> without;
        for (const auto& [key, publisher] : publishers_) {
            if (publisher->matched() == 0 && without.insert(publisher->topic()).second && !isInterrupted()) {
                remark("nobody listens to topic \"" + printable(publisher->topic()) + "\"" +
                       publisher->refusals());
            }
        }
        if (without.size() < publishers_.size()) {
            // A best-effort reader gets nothing before it has heard of the writer, and nobody tells when it
            // has.
            waitFor(0.5, [] { return false; });
        }
    }

    void run()
    {
        begin_ = Clock::now();
        std::uint64_t before = 0;
        do {
            before = published_;
            publishAll();
            recording_.rewind();
        } while (options_.loop && published_ > before && !isInterrupted());
        for (const auto& each : publishers_) {
            Publisher& publisher = *each.second;
            isAcknowledged_ &= waitFor(5.0, [&publisher] { return publisher.waitForAcknowledgments(); });
        }
        progress_.clear();
    }

    ExitCode summarise() const
    {
        const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
        std::set<std::string> topics;
        for (const auto& [id, channel] : channels_) {
            topics.insert(channel.topic);
        }
        if (options_.json) {
            writeJson(Json{{"file", options_.file},
                           {"seconds", seconds},
                           {"values", published_},
                           {"topics", topics},
                           {"undecodable", undecodable_},
                           {"acknowledged", isAcknowledged_}});
        } else {
            remark("published " + counted(published_, "value") + " of " + counted(topics.size(), "topic") +
                   " in " + inSeconds(seconds) +
                   (undecodable_ == 0
                        ? ""
                        : "; " + counted(undecodable_, "value") + " left out, which do not fit their type"));
        }
        if (!isAcknowledged_ && !isInterrupted()) {
            throw Failure(ExitCode::Failed, "not every reader has acknowledged what was sent");
        }
        return ExitCode::Done;
    }

private:
    struct ReplayedChannel {
        std::string topic; ///< its new name
        Replayable what;
        Publisher* publisher = nullptr;
    };

    using Key = std::tuple<std::string, std::string, bool, bool, int, int, std::vector<std::string>>;

    /// By which channels share a publisher.
    static Key keyOf(const ReplayedChannel& channel)
    {
        const auto& suited = channel.what.suited;
        return {channel.topic,
                channel.what.type,
                channel.what.keyed,
                channel.what.isXcdr2,
                static_cast<int>(suited.durability),
                static_cast<int>(suited.ownership),
                suited.partitions};
    }

    bool isWanted(const mcap::Channel& channel) const
    {
        return options_.topics.empty() ||
               std::ranges::find(options_.topics, channel.topic) != options_.topics.end();
    }

    void addChannel(const mcap::Channel& channel, std::set<std::string>& reasons)
    {
        const auto schema = recording_.schemas().find(channel.schema);
        const auto* const found = schema == recording_.schemas().end() ? nullptr : &schema->second;
        const auto renamed = renamings_.find(channel.topic);
        try {
            channels_[channel.id] = {renamed == renamings_.end() ? channel.topic : renamed->second,
                                     replayableOf(channel, found, options_.types), nullptr};
        } catch (const Failure& failure) {
            reasons.insert("topic \"" + printable(channel.topic) +
                           "\" can not be replayed: " + failure.what());
        }
    }

    void publishAll()
    {
        const auto begin = Clock::now();
        std::optional<std::uint64_t> first;
        while (!isInterrupted()) {
            const auto message = recording_.next();
            if (!message) {
                return;
            }
            const auto channel = channels_.find(message->channel);
            if (channel != channels_.end()) {
                first = std::min(first.value_or(message->logTime), message->logTime);
                pace(begin, message->logTime - *first);
                publish(channel->second, *message);
            }
        }
    }

    /// Waits until it is time for a message. @param offset from the first one, in nanoseconds.
    void pace(Clock::time_point begin, std::uint64_t offset)
    {
        constexpr double longest = 1e17; // three years, which a clock can count
        if (options_.speed > 0.0) {
            const std::chrono::duration<double, std::nano> span(
                std::min(static_cast<double>(offset) / options_.speed, longest));
            const auto due = begin + std::chrono::duration_cast<Clock::duration>(span);
            while (!isInterrupted() && Clock::now() < due) {
                showProgress(offset);
                std::this_thread::sleep_until(std::min(due, Clock::now() + longestWait));
            }
        }
        showProgress(offset);
    }

    void showProgress(std::uint64_t offset)
    {
        if (progress_.isDue()) {
            const auto& statistics = recording_.statistics();
            progress_.show("replaying: " + inSeconds(static_cast<double>(offset) * 1e-9) + " of " +
                           inSeconds(static_cast<double>(statistics.end - statistics.begin) * 1e-9) + ", " +
                           counted(published_, "value"));
        }
    }

    void publish(const ReplayedChannel& channel, const mcap::Message& message)
    {
        constexpr std::size_t header = 4;
        sample_.payload.assign(message.data.begin(), message.data.end());
        if (sample_.payload.size() < header || (channel.what.known && !setKey(*channel.what.known))) {
            ++undecodable_;
            return;
        }
        const auto end = Clock::now() + longestBlocking;
        while (!isInterrupted() && !channel.publisher->write(sample_)) {
            if (Clock::now() >= end) {
                throw Failure(ExitCode::Failed, "a reader of topic \"" + channel.topic +
                                                    "\" has acknowledged nothing for 30 s");
            }
        }
        ++published_;
    }

    /// @returns false: the payload is no value of the type.
    bool setKey(const KnownType& type)
    {
        try {
            const auto value = idl::decode(*type.type, sample_.payload, type.codec);
            sample_.key = idl::keyHash(*type.type, value, type.keyVersion, type.codec);
            return true;
        } catch (const idl::CodecError&) {
            return false;
        }
    }

    const ReplayOptions& options_;
    mcap::Reader& recording_;
    const std::map<std::string, std::string> renamings_;
    std::map<std::uint16_t, ReplayedChannel> channels_;
    std::map<Key, std::unique_ptr<Publisher>> publishers_;
    RawSample sample_; ///< that is sent
    std::uint64_t published_ = 0;
    std::uint64_t undecodable_ = 0;
    bool isAcknowledged_ = true;
    Clock::time_point begin_;
    Progress progress_;
};

ExitCode replayThem(const ReplayOptions& options)
{
    mcap::Reader recording(options.file);
    if (const auto offset = recording.cutAt()) {
        remark(nameIn(options.file, "it was cut off at byte " + std::to_string(*offset) +
                                        "; what it has up to there is " +
                                        counted(recording.statistics().messages, "value")));
    }
    Replay replay(options, recording);
    Domain domain(options.domain, "plex replay");
    domain.settle(); // publishers are to suit the readers
    if (isInterrupted()) {
        return ExitCode::Done;
    }
    replay.createPublishers(domain);
    replay.waitForReaders();
    replay.run();
    return replay.summarise();
}

} // namespace

ExitCode replay(const ReplayOptions& options)
{
    try {
        return replayThem(options);
    } catch (const mcap::FormatError& error) {
        throw Failure(ExitCode::Usage, nameIn(options.file, error.what()));
    } catch (const mcap::FileError& error) {
        throw Failure(ExitCode::Failed, error.what());
    }
}

} // namespace ovra::plex::tool
