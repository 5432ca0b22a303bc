// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../LastValues.hpp"
#include "../Losses.hpp"
#include "../Pairs.hpp"
#include "../Text.hpp"
#include "../TopScreen.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <unistd.h>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::size_t mostMeasured = 200; ///< topics, each with a reader

/// A topic that has writers: what comes of it.
class Watched
{
public:
    Watched(Domain& domain, const std::string& topic) : reader_(domain, topic, false) {}

    RawReader& reader() { return reader_; }

    std::uint64_t lost() const { return losses_.lost(); }

    double rate() const { return rates_.empty() ? 0.0 : rates_.back(); }

    double bytes() const { return bytes_; }

    std::vector<double> rates() const { return {rates_.begin(), rates_.end()}; }

    /// Takes what has come. @param keep is given the payloads of values; may be empty.
    void take(const std::function<void(const std::vector<std::uint8_t>&)>& keep)
    {
        reader_.take([&](const Received& received) {
            losses_.add(received);
            if (received.isValue) {
                ++values_;
                sizes_ += received.sample.size;
                if (keep) {
                    keep(received.sample.payload);
                }
            }
        });
    }

    /// Begins another second.
    void turn(double seconds)
    {
        rates_.push_back(static_cast<double>(std::exchange(values_, 0)) / seconds);
        bytes_ = static_cast<double>(std::exchange(sizes_, 0)) / seconds;
        if (rates_.size() > topSeconds) {
            rates_.pop_front();
        }
    }

private:
    RawReader reader_;
    Losses losses_;
    std::uint64_t values_ = 0; ///< of this second
    std::uint64_t sizes_ = 0;  ///< likewise, in bytes
    std::deque<double> rates_;
    double bytes_ = 0.0;
};

/// The topic that is open, and its last values.
class OpenTopic
{
public:
    OpenTopic(Watched& watched, const TypeOptions& types) : reader_(watched.reader())
    {
        try {
            type_ = findType(reader_.type(), types);
        } catch (const Failure& failure) {
            remark_ = failure.what();
        }
        if (!type_ && remark_.empty()) {
            remark_ = "Type \"" + reader_.type() +
                      "\" is unknown, so its bytes are shown: name its definition with --idl";
        }
        reader_.keepBytes(true);
    }

    OpenTopic(const OpenTopic&) = delete;
    OpenTopic& operator=(const OpenTopic&) = delete;

    ~OpenTopic() { reader_.keepBytes(false); }

    const std::string& remark() const { return remark_; }

    LastValues& values() { return values_; }

private:
    std::string inWords(const LastValues::Payload& payload) const
    {
        std::string fault;
        if (type_) {
            try {
                return inOneLine(
                    Json::parse(idl::toJson(*type_->type, idl::decode(*type_->type, payload, type_->codec))));
            } catch (const idl::CodecError& error) {
                fault = std::string("not decodable: ") + error.what() + "; ";
            }
        }
        const auto shown = std::min(payload.size(), LastValues::longestLine / 2);
        return fault + counted(payload.size(), "byte") + ": " +
               inHexadecimal(std::span(payload).first(shown));
    }

    RawReader& reader_;
    std::optional<KnownType> type_;
    std::string remark_;
    LastValues values_{[this](const auto& payload) {
        return inWords(payload);
    }};
};

/// What is known, kept up to date.
class Top
{
public:
    explicit Top(const TopOptions& options) : options_(options), domain_(options.domain, "plex top")
    {
        state_.domain = options.domain;
    }

    const TopState& state()
    {
        if (open_) {
            state_.values = open_->values().lines();
        }
        return state_;
    }

    /// Takes what has come, and each second counts anew.
    void update()
    {
        for (auto& [name, watched] : watched_) {
            if (open_ && name == state_.selected) {
                watched->take([&](const auto& payload) { open_->values().add(payload); });
            } else {
                watched->take({});
            }
        }
        const double seconds = std::chrono::duration<double>(Clock::now() - turned_).count();
        if (seconds >= 1.0) {
            turned_ = Clock::now();
            for (auto& [name, watched] : watched_) {
                watched->turn(seconds);
            }
            refresh();
        }
    }

    /// @returns whether the key means something.
    bool obey(const ftxui::Event& event)
    {
        if (event == ftxui::Event::Escape || event == ftxui::Event::Backspace) {
            close();
            return true;
        }
        return !state_.isOpen && obeyInTable(event);
    }

private:
    bool obeyInTable(const ftxui::Event& event)
    {
        static const std::map<std::string, TopOrder> orders{
            {"n", TopOrder::Name},    {"v", TopOrder::Rate},    {"b", TopOrder::Bytes},
            {"w", TopOrder::Writers}, {"r", TopOrder::Readers}, {"l", TopOrder::Lost}};
        if (event == ftxui::Event::ArrowDown || event == ftxui::Event::ArrowUp) {
            moveSelection(state_, event == ftxui::Event::ArrowDown ? 1 : -1);
        } else if (event == ftxui::Event::Return) {
            open();
        } else if (const auto order = orders.find(event.input()); order != orders.end()) {
            state_.order = order->second;
            sort(state_);
        } else {
            return false;
        }
        return true;
    }

    /// Goes by what is announced now.
    void refresh()
    {
        const Scene scene = domain_.scene();
        std::erase_if(watched_, [&](const auto& entry) {
            return !isThere(scene, *entry.second) && !(open_ && entry.first == state_.selected);
        });
        std::vector<TopTopic> topics;
        for (const auto& name : scene.topics()) {
            topics.push_back(describe(scene, name));
        }
        state_.participants = scene.participants.size();
        state_.topics = std::move(topics);
        sort(state_);
    }

    /// Whether the topic is still announced, with the type that its reader has.
    static bool isThere(const Scene& scene, Watched& watched)
    {
        return std::ranges::any_of(scene.endpoints, [&](const auto& endpoint) {
            return endpoint.topic == watched.reader().topic() && endpoint.type == watched.reader().type();
        });
    }

    TopTopic describe(const Scene& scene, const std::string& name)
    {
        TopTopic topic;
        topic.name = name;
        topic.writers = scene.writersOf(name).size();
        topic.readers = scene.readersOf(name).size();
        for (const auto& pair : pairsOf(scene, name)) {
            if (!pair.isMatched) {
                topic.refusals.push_back(inWords(scene, pair));
            }
        }
        if (auto* const watched = watch(name, topic.writers > 0)) {
            topic.type = watched->reader().type();
            topic.rate = watched->rate();
            topic.bytes = watched->bytes();
            topic.lost = watched->lost();
            topic.rates = watched->rates();
        } else {
            topic.isMeasured = topic.writers == 0;
        }
        return topic;
    }

    static std::string inWords(const Scene& scene, const Pair& pair)
    {
        std::string text = shortPlace(scene, pair.writer.guid) + " → " + shortPlace(scene, pair.reader.guid);
        for (const auto& refusal : pair.refusals) {
            text += (&refusal == pair.refusals.data() ? ": " : "; ") + toString(refusal);
        }
        return text;
    }

    /// @returns null: it is not measured.
    Watched* watch(const std::string& topic, bool hasWriters)
    {
        const auto found = watched_.find(topic);
        if (found != watched_.end()) {
            return found->second.get();
        }
        if (!hasWriters || watched_.size() >= mostMeasured) {
            return nullptr;
        }
        try {
            return watched_.emplace(topic, std::make_unique<Watched>(domain_, topic)).first->second.get();
        } catch (const Failure&) {
            return nullptr; // it has gone since, or DDS refuses; it is tried again
        }
    }

    void open()
    {
        const auto selected = selectedTopic(state_);
        const auto watched = selected ? watched_.find(state_.topics[*selected].name) : watched_.end();
        if (watched != watched_.end()) {
            state_.selected = watched->first;
            open_.emplace(*watched->second, options_.types);
            state_.remark = open_->remark();
            state_.isOpen = true;
        }
    }

    void close()
    {
        open_.reset();
        state_.isOpen = false;
        state_.values.clear();
    }

    const TopOptions& options_;
    Domain domain_;
    TopState state_;
    std::map<std::string, std::unique_ptr<Watched>> watched_;
    std::optional<OpenTopic> open_; ///< goes before what is watched
    Clock::time_point turned_ = Clock::now();
};

void requireTerminal()
{
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        throw Failure(ExitCode::Usage, "plex top needs a terminal; plex hz TOPIC measures without one");
    }
}

} // namespace

ExitCode top(const TopOptions& options)
{
    requireTerminal();
    Top top(options);
    showOnScreen({[&] { top.update(); }, [&]() -> const TopState& { return top.state(); },
                  [&](const ftxui::Event& event) {
                      return top.obey(event);
                  }});
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
