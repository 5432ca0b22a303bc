// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../RawWriter.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double acknowledgmentTime = 5.0; // seconds

KnownType typeOf(const PubOptions& options)
{
    auto type = findType(options.type, options.types);
    if (!type) {
        throw Failure(ExitCode::NotFound,
                      "type \"" + options.type +
                          "\" is unknown: no installed module has it; name its definition with "
                          "--idl");
    }
    return *std::move(type);
}

/// A value as JSON, read and checked.
idl::Datum read(const KnownType& type, const std::string& text)
{
    try {
        return idl::fromJson(*type.type, text, type.codec);
    } catch (const idl::CodecError& error) {
        throw Failure(ExitCode::Usage, "this is no value of " + type.type->scopedName + ": " + error.what());
    }
}

RawSample encoded(const KnownType& type, const idl::Datum& value, idl::XcdrVersion version)
{
    RawSample sample;
    idl::Encoding encoding;
    encoding.version = version;
    try {
        sample.payload = idl::encode(*type.type, value, encoding, type.codec);
        sample.key = idl::keyHash(*type.type, value, type.keyVersion, type.codec);
    } catch (const idl::CodecError& error) {
        throw Failure(ExitCode::Usage, "this value can not be sent: " + std::string(error.what()));
    }
    return sample;
}

/// The readers of a topic that are of the type, by whatever name it goes in DDS.
std::vector<fastdds::AnnouncedEndpoint> readersOf(const Scene& scene, const PubOptions& options,
                                                  const KnownType& type)
{
    auto readers = scene.readersOf(options.topic);
    std::erase_if(readers, [&](const auto& reader) {
        return reader.type != type.ddsName && definedName(reader.type) != type.type->scopedName;
    });
    return readers;
}

/// The name that goes with the readers, if there are any.
std::string ddsNameFor(const std::vector<fastdds::AnnouncedEndpoint>& readers, const KnownType& type)
{
    const bool isKnown =
        std::ranges::any_of(readers, [&](const auto& reader) { return reader.type == type.ddsName; });
    return readers.empty() || isKnown ? type.ddsName : readers.front().type;
}

/// What is asked for, else what the first reader likes best.
fastdds::DataRepresentationId representationFor(const PubOptions& options,
                                                const std::vector<fastdds::AnnouncedEndpoint>& readers)
{
    if (!options.representation.empty()) {
        return options.representation == "xcdr2" ? dds::XCDR2_DATA_REPRESENTATION
                                                 : dds::XCDR_DATA_REPRESENTATION;
    }
    return readers.empty() || readers.front().representations.empty()
               ? dds::XCDR_DATA_REPRESENTATION
               : readers.front().representations.front();
}

class Pub
{
public:
    Pub(const PubOptions& options, const KnownType& type, Domain& domain)
        : options_(options)
        , type_(type)
        , domain_(domain)
        , readers_(readersOf(domain.scene(), options, type))
        , representation_(representationFor(options, readers_))
        , ddsName_(ddsNameFor(readers_, type))
        , writer_(domain, options.topic, {ddsName_, type.type->hasKey, representation_}, readers_)
    {
    }

    void waitForReaders()
    {
        if (options_.wait <= 0.0) {
            return;
        }
        const std::size_t wanted = std::max<std::size_t>(
            1, static_cast<std::size_t>(std::ranges::count_if(
                   readers_, [&](const auto& reader) { return writer_.refusalsOf(reader).empty(); })));
        if (!waitFor(options_.wait, [&] { return writer_.matched() >= wanted; }) && writer_.matched() == 0 &&
            !isInterrupted()) {
            throw Failure(ExitCode::NotFound, reasonsForNobody());
        }
        // A best-effort reader gets nothing before it has heard of the writer, and nobody tells when it has.
        const bool mayMiss =
            std::ranges::any_of(domain_.scene().readersOf(options_.topic), [](const auto& reader) {
                return reader.reliability == dds::BEST_EFFORT_RELIABILITY_QOS;
            });
        if (mayMiss) {
            waitFor(0.2, [] { return false; });
        }
    }

    void publish(const idl::Datum& value)
    {
        const auto version = representation_ == dds::XCDR2_DATA_REPRESENTATION ? idl::XcdrVersion::Xcdr2
                                                                               : idl::XcdrVersion::Xcdr1;
        writer_.write(encoded(type_, value, version));
        ++published_;
    }

    /// The same value again and again, or once.
    void publishRepeatedly(const idl::Datum& value)
    {
        const std::uint64_t count = options_.count > 0 || options_.rate > 0.0 ? options_.count : 1;
        auto next = Clock::now();
        while (!isInterrupted() && (count == 0 || published_ < count)) {
            publish(value);
            pace(next);
        }
    }

    /// What stands on the lines of the standard input.
    void publishLines()
    {
        auto next = Clock::now();
        std::string line;
        while (!isInterrupted() && (options_.count == 0 || published_ < options_.count) &&
               std::getline(std::cin, line)) {
            if (line.find_first_not_of(" \t\r") != std::string::npos) {
                publish(read(type_, line));
                pace(next);
            }
        }
    }

    void finish()
    {
        const auto readers = writer_.matched();
        // A reader that has gone acknowledges nothing more.
        const bool isAcknowledged = waitFor(acknowledgmentTime, [&] {
            return writer_.waitForAcknowledgments(longestWait) || writer_.matched() == 0;
        });
        if (options_.json) {
            writeJson(Json{{"topic", options_.topic},
                           {"type", ddsName_},
                           {"values", published_},
                           {"readers", readers},
                           {"acknowledged", isAcknowledged}});
        } else {
            remark("published " + counted(published_, "value") + " to " + counted(readers, "reader"));
        }
        if (!isAcknowledged && !isInterrupted()) {
            throw Failure(ExitCode::Failed, "not every reader has acknowledged what was sent");
        }
    }

private:
    /// Waits until it is time for the next value.
    void pace(Clock::time_point& next) const
    {
        if (options_.rate > 0.0) {
            next += std::chrono::duration_cast<Clock::duration>(
                std::chrono::duration<double>(1.0 / options_.rate));
            while (!isInterrupted() && Clock::now() < next) {
                std::this_thread::sleep_until(std::min(next, Clock::now() + longestWait));
            }
        }
    }

    std::string reasonsForNobody() const
    {
        const Scene scene = domain_.scene();
        const auto readers = scene.readersOf(options_.topic);
        std::string text = "nobody listens to topic \"" + options_.topic + "\"";
        if (readers.empty()) {
            return text + suggestion(options_.topic, scene.topics()) + "; --wait 0 publishes all the same";
        }
        text = "no reader of topic \"" + options_.topic + "\" matches:";
        for (const auto& reader : readers) {
            for (const auto& refusal : writer_.refusalsOf(reader)) {
                text += "\n  " + shortPlace(scene, reader.guid) + ": " + toString(refusal);
            }
        }
        return text;
    }

    const PubOptions& options_;
    const KnownType& type_;
    const Domain& domain_;
    const std::vector<fastdds::AnnouncedEndpoint> readers_;
    const fastdds::DataRepresentationId representation_;
    const std::string ddsName_;
    RawWriter writer_;
    std::uint64_t published_ = 0;
};

} // namespace

ExitCode pub(const PubOptions& options)
{
    requireTopicName(options.topic);
    const KnownType type = typeOf(options);
    const bool isOneValue = options.value != "-";
    const idl::Datum value = isOneValue ? read(type, options.value) : idl::Datum();
    if (isOneValue) {
        encoded(type, value, idl::XcdrVersion::Xcdr1); // refused before anything is on the air
    }
    Domain domain(options.domain, "plex pub");
    const auto isAwaited = [&](const Scene& scene) {
        return options.wait <= 0.0 || !scene.readersOf(options.topic).empty();
    };
    if (!domain.settleUnless(isAwaited)) { // the writer is to suit its readers, so they come first
        waitFor(options.wait, [&] { return isAwaited(domain.scene()); });
    }
    if (isInterrupted()) {
        return ExitCode::Done;
    }
    Pub publication(options, type, domain);
    publication.waitForReaders();
    if (isOneValue) {
        publication.publishRepeatedly(value);
    } else {
        publication.publishLines();
    }
    publication.finish();
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
