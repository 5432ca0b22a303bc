// SPDX-License-Identifier: Apache-2.0
#include "Measurement.hpp"

#include "Interrupt.hpp"
#include "Losses.hpp"
#include "Output.hpp"
#include "Printable.hpp"
#include "RawReader.hpp"
#include "Words.hpp"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

double secondsOf(Clock::duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

/// What comes of a topic: since the last report, and altogether.
class TopicMeasurement
{
public:
    explicit TopicMeasurement(RawReader& reader) : reader_(reader) {}

    const std::string& topic() const { return reader_.topic(); }

    void take()
    {
        reader_.take([this](const Received& received) { add(received); });
    }

    /// What has come since the last report.
    Window report(double seconds)
    {
        Window window = std::exchange(current_, {});
        window.seconds = seconds;
        const auto lost = losses_.lost();
        window.lost = lost - std::min(lost, std::exchange(lostBefore_, lost));
        return window;
    }

    /// Altogether. The rate is that between the first and the last value, whatever came before and after.
    Window total() const
    {
        Window window = total_;
        window.lost = losses_.lost();
        window.seconds = 1e-9 * window.intervals.mean() * static_cast<double>(window.intervals.count());
        if (window.values > 1 && window.seconds > 0.0) {
            window.seconds *= static_cast<double>(window.values) / static_cast<double>(window.values - 1);
        }
        return window;
    }

private:
    void add(const Received& received)
    {
        losses_.add(received);
        if (received.isValue) {
            add(current_, received);
            add(total_, received);
            last_ = received.receptionTime;
        }
    }

    void add(Window& window, const Received& received) const
    {
        ++window.values;
        window.sizes.add(received.sample.size);
        if (last_) {
            window.intervals.add(received.receptionTime - *last_);
        }
        if (received.sourceTime != 0) {
            window.ages.add(received.receptionTime - received.sourceTime);
        }
    }

    RawReader& reader_;
    Losses losses_;
    std::uint64_t lostBefore_ = 0; ///< the last report
    std::optional<std::int64_t> last_;
    Window current_;
    Window total_;
};

class Measuring
{
public:
    Measuring(const MeasureOptions& options, const Presentation& presentation, RawReaders& readers)
        : options_(options)
        , presentation_(presentation)
        , readers_(readers)
    {
        for (const auto& reader : readers.all()) {
            topics_.emplace_back(*reader);
        }
    }

    void run()
    {
        showHeads();
        const auto begin = Clock::now();
        auto reported = begin;
        while (!isInterrupted() && !isOutputClosed() && !isOver(begin)) {
            readers_.wait();
            for (auto& topic : topics_) {
                topic.take();
            }
            const auto now = Clock::now();
            if (secondsOf(now - reported) >= options_.interval) {
                report(secondsOf(now - reported));
                reported = now;
            }
        }
        showTotals();
    }

private:
    bool isOver(Clock::time_point begin) const
    {
        return options_.duration > 0.0 && secondsOf(Clock::now() - begin) >= options_.duration;
    }

    void showHeads()
    {
        std::vector<std::string> heads{"TOPIC"};
        std::ranges::copy(presentation_.heads, std::back_inserter(heads));
        if (!options_.json && !topics_.empty()) {
            writeLine(coloured(row(heads), Colour::Dim));
        }
    }

    /// Cells that stand below each other in many rows: all but the topic are about as wide as they ever
    /// become.
    std::string row(const std::vector<std::string>& cells) const
    {
        constexpr std::size_t usual = 10;
        std::size_t width = 0;
        for (const auto& topic : topics_) {
            width = std::max(width, printable(topic.topic()).size() + 2);
        }
        std::string line;
        for (const auto& cell : cells) {
            line += padded(cell, width);
            width = usual;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        return line;
    }

    void report(double seconds)
    {
        for (auto& topic : topics_) {
            show(topic.topic(), topic.report(seconds), false);
        }
    }

    void show(const std::string& topic, const Window& window, bool isTotal)
    {
        if (options_.json) {
            Json json{{"topic", topic},
                      {"total", isTotal},
                      {"seconds", window.seconds},
                      {"values", window.values},
                      {"lost", window.lost}};
            presentation_.addTo(json, window);
            writeJson(json);
            return;
        }
        std::vector<std::string> cells{printable(topic)};
        std::ranges::copy(presentation_.cells(window), std::back_inserter(cells));
        writeLine(coloured(row(cells), window.lost > 0 ? Colour::Red : Colour::Plain));
    }

    void showTotals()
    {
        if (!options_.json && !topics_.empty()) {
            writeLine(coloured("altogether", Colour::Dim));
        }
        for (const auto& topic : topics_) {
            const Window total = topic.total();
            show(topic.topic(), total, true);
            if (!options_.json && presentation_.details) {
                for (const auto& line : presentation_.details(total)) {
                    writeLine("  " + line);
                }
            }
        }
    }

    const MeasureOptions& options_;
    const Presentation& presentation_;
    RawReaders& readers_;
    std::vector<TopicMeasurement> topics_;
};

} // namespace

ExitCode measure(const MeasureOptions& options, const Presentation& presentation)
{
    Domain domain(options.domain, presentation.participant);
    RawReaders readers(domain, options.topics, false);
    if (!isInterrupted()) {
        Measuring(options, presentation, readers).run();
    }
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
