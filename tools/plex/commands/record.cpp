// SPDX-License-Identifier: Apache-2.0
#include "../Interrupt.hpp"
#include "../Losses.hpp"
#include "../Output.hpp"
#include "../Printable.hpp"
#include "../Progress.hpp"
#include "../RecordedChannel.hpp"
#include "../RecordingFile.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <list>
#include <map>
#include <set>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

/// How much of a topic was recorded.
struct Recorded {
    std::string topic;
    std::string type;
    std::uint64_t values = 0;
    std::uint64_t bytes = 0;
    std::uint64_t unwritten = 0; ///< as the disk did not keep up
    Losses losses;

    std::uint64_t lost() const { return losses.lost() + unwritten; }
};

mcap::WriterOptions fileOptions(const RecordOptions& options)
{
    static const std::map<std::string, mcap::Compression> compressions{{"none", mcap::Compression::None},
                                                                       {"lz4", mcap::Compression::Lz4},
                                                                       {"zstd", mcap::Compression::Zstd}};
    mcap::WriterOptions result;
    result.compression = compressions.at(options.compression);
    result.overwrites = options.force;
    result.library = "plex " PLEX_VERSION;
    return result;
}

/// A topic that is recorded.
class TopicRecorder
{
public:
    /// @param channels how many the file has already; counts on.
    TopicRecorder(const RecordOptions& options, const Domain& domain, RawReader& reader, RecordingFile& file,
                  std::size_t& channels)
        : domain_(domain)
        , reader_(reader)
        , file_(file)
        , channels_(channels)
        , type_(typeOf(reader.type(), options.types))
    {
        recorded_.topic = reader.topic();
        recorded_.type = reader.type();
        if (!type_) {
            remark("type \"" + printable(reader.type()) + "\" of topic \"" + printable(reader.topic()) +
                   "\" is unknown, so it is recorded without its definition; --idl names that");
        }
    }

    /// @param most so many values at most.
    /// @returns how many values were recorded.
    std::uint64_t take(std::uint64_t most)
    {
        const auto before = recorded_.values;
        reader_.take([&](const Received& received) {
            if (recorded_.values - before < most && !file_.hasFailed()) {
                add(received);
            }
        });
        return recorded_.values - before;
    }

    const Recorded& recorded() const { return recorded_; }

private:
    /// A definition need not have all of the topics.
    static std::optional<KnownType> typeOf(const std::string& name, TypeOptions options)
    {
        try {
            return findType(name, options);
        } catch (const Failure& failure) {
            if (failure.code() != ExitCode::NotFound) {
                throw;
            }
        }
        options.files.clear();
        return findType(name, options);
    }

    void add(const Received& received)
    {
        recorded_.losses.add(received);
        if (!received.isValue) {
            return; // there is nothing to record of the end of an instance
        }
        const auto logTime = static_cast<std::uint64_t>(received.receptionTime);
        const auto publishTime =
            received.sourceTime == 0 ? logTime : static_cast<std::uint64_t>(received.sourceTime);
        const auto& payload = received.sample.payload;
        if (!file_.add({channelOf(received.writer), static_cast<std::uint32_t>(received.sequence), logTime,
                        publishTime},
                       payload)) {
            ++recorded_.unwritten;
            return;
        }
        ++recorded_.values;
        recorded_.bytes += payload.size();
    }

    /// Each writer has a channel of its own, as it counts its values by itself.
    std::size_t channelOf(const fastdds::Guid& writer)
    {
        const auto known = channelsOfWriters_.find(writer);
        if (known != channelsOfWriters_.end()) {
            return known->second;
        }
        const bool isFull = channels_ >= mostChannels && !channelsOfWriters_.empty();
        const auto channel = isFull ? channelsOfWriters_.begin()->second : addChannel(writer);
        channelsOfWriters_.emplace(writer, channel);
        return channel;
    }

    std::size_t addChannel(const fastdds::Guid& writer)
    {
        const Scene scene = domain_.scene();
        const auto writers = scene.writersOf(reader_.topic());
        const auto found = std::ranges::find(writers, writer, &fastdds::AnnouncedEndpoint::guid);
        fastdds::AnnouncedEndpoint announced;
        if (found != writers.end()) {
            announced = *found;
        } else { // it has gone already
            announced.guid = writer;
            announced.topic = reader_.topic();
            announced.type = reader_.type();
        }
        file_.add(type_ ? std::optional(schemaOf(*type_)) : std::nullopt,
                  tool::channelOf(scene, announced, type_ ? &*type_ : nullptr));
        return channels_++;
    }

    static constexpr std::size_t mostChannels = 60'000; ///< a file has 65535; writers beyond share them

    const Domain& domain_;
    RawReader& reader_;
    RecordingFile& file_;
    std::size_t& channels_;
    const std::optional<KnownType> type_;
    std::map<fastdds::Guid, std::size_t> channelsOfWriters_;
    Recorded recorded_;
};

/// The recording that Ctrl-C, --duration, --count or a full disk ends.
class Recording
{
public:
    Recording(const RecordOptions& options, Domain& domain)
        : options_(options)
        , domain_(domain)
        , readers_(domain, options.topics, true)
        , file_(options.file, fileOptions(options))
    {
        for (const auto& reader : readers_.all()) {
            record(*reader);
        }
    }

    void run()
    {
        std::uint64_t changes = 0;
        while (!isInterrupted() && !isOver() && !file_.hasFailed()) {
            if (options_.topics.empty() && changes != domain_.changes()) {
                changes = domain_.changes();
                addTopics();
            }
            if (!isSettled_ && elapsed() >= settlingTime) {
                domain_.settle(); // has nothing to wait for any more, and lets the second participant go
                isSettled_ = true;
            }
            readers_.wait();
            for (auto& topic : topics_) {
                values_ += topic.take(options_.count == 0 ? UINT64_MAX : options_.count - values_);
            }
            if (progress_.isDue()) {
                progress_.show("recording: " + summary());
            }
        }
        seconds_ = elapsed();
        progress_.clear();
    }

    /// Completes the file.
    void finish()
    {
        try {
            file_.close();
        } catch (const mcap::FileError& error) {
            throw Failure(ExitCode::Failed, std::string(error.what()) +
                                                "; what was written before can be replayed up to there");
        }
    }

    void summarise() const
    {
        if (options_.json) {
            writeJson(toJson());
            return;
        }
        std::vector<std::vector<std::string>> rows{{"TOPIC", "VALUES", "BYTES", "LOST"}};
        for (const auto& topic : topics_) {
            const auto& recorded = topic.recorded();
            rows.push_back({recorded.topic, std::to_string(recorded.values),
                            inBytes(static_cast<double>(recorded.bytes)), std::to_string(recorded.lost())});
        }
        for (bool isHead = true; const auto& line : aligned(rows)) {
            if (!topics_.empty()) {
                writeLine(isHead ? coloured(line, Colour::Dim) : line);
            }
            isHead = false;
        }
        const auto unwritten = sum([](const Recorded& recorded) { return recorded.unwritten; });
        remark("recorded " + summary() +
               (unwritten == 0 ? ""
                               : ", of which " + std::to_string(unwritten) + " as the disk did not keep up"));
    }

private:
    /// Adds topics with writers that are not there yet.
    void addTopics()
    {
        const Scene scene = domain_.scene();
        for (const auto& topic : scene.topics()) {
            if (scene.writersOf(topic).empty() || !seen_.insert(topic).second) {
                continue;
            }
            progress_.clear();
            try {
                record(readers_.add(domain_, topic, true));
            } catch (const Failure& failure) {
                remark(failure.what());
                if (failure.code() == ExitCode::NotFound) {
                    seen_.erase(topic); // it has gone, and may come back
                }
            }
        }
    }

    void record(RawReader& reader) { topics_.emplace_back(options_, domain_, reader, file_, channels_); }

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - begin_).count(); }

    bool isOver() const
    {
        return (options_.duration > 0.0 && elapsed() >= options_.duration) ||
               (options_.count > 0 && values_ >= options_.count);
    }

    template <class Number>
    std::uint64_t sum(Number number) const
    {
        std::uint64_t sum = 0;
        for (const auto& topic : topics_) {
            sum += number(topic.recorded());
        }
        return sum;
    }

    std::string summary() const
    {
        const auto bytes = sum([](const Recorded& recorded) { return recorded.bytes; });
        const auto lost = sum([](const Recorded& recorded) { return recorded.lost(); });
        return counted(values_, "value") + " of " + counted(topics_.size(), "topic") + " in " +
               inSeconds(seconds_ > 0.0 ? seconds_ : elapsed()) + ", " + inBytes(static_cast<double>(bytes)) +
               ", as a file " + inBytes(static_cast<double>(file_.size())) + ", " + std::to_string(lost) +
               " lost";
    }

    Json toJson() const
    {
        Json json{{"file", options_.file},
                  {"seconds", seconds_},
                  {"values", values_},
                  {"fileBytes", file_.size()},
                  {"topics", Json::array()}};
        for (const auto& topic : topics_) {
            const auto& recorded = topic.recorded();
            json["topics"].push_back({{"topic", recorded.topic},
                                      {"type", recorded.type},
                                      {"values", recorded.values},
                                      {"bytes", recorded.bytes},
                                      {"lost", recorded.losses.lost()},
                                      {"unwritten", recorded.unwritten}});
        }
        return json;
    }

    static constexpr double settlingTime = 3.0; // seconds

    const RecordOptions& options_;
    Domain& domain_;
    RawReaders readers_;
    RecordingFile file_;
    std::list<TopicRecorder> topics_;
    std::set<std::string> seen_; ///< topics that were added, or can not be
    bool isSettled_ = false;
    std::size_t channels_ = 0;
    std::uint64_t values_ = 0;
    const Clock::time_point begin_ = Clock::now();
    double seconds_ = 0.0; ///< that it took, once it is over
    Progress progress_;
};

} // namespace

ExitCode record(const RecordOptions& options)
{
    if (!options.force && std::filesystem::exists(options.file)) {
        throw Failure(ExitCode::Usage, "\"" + options.file + "\" is there already; --force replaces it");
    }
    Domain domain(options.domain, "plex record");
    Recording recording(options, domain);
    recording.run();
    const auto summarise = [&] {
        recording.summarise();
    };
    try {
        recording.finish();
    } catch (const Failure&) {
        summarise();
        throw;
    }
    summarise();
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
