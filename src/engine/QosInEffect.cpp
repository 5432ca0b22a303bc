// SPDX-License-Identifier: Apache-2.0
#include "QosSettings.hpp"

#include <plex/fastdds/Transports.hpp>
#include <plex/ps/internal/DdsEntityBase.hpp>
#include <plex/ps/internal/Settings.hpp>

#include <utility>

namespace ovra::plex::ps::internal
{

namespace
{

using Settings = std::vector<QosSetting>;

/// A setting that a property decides where it is present.
QosSetting byProperty(const Plex::Properties& properties, const char* name, const std::string& property,
                      std::string value)
{
    const bool isPresent = properties.contains(property);
    return {name, std::move(value), isPresent ? QosOrigin::Property : QosOrigin::LibraryDefault,
            isPresent ? property : "", ""};
}

/// An age limit that an object of the QoS list decides where it is above 0.
QosSetting ageLimit(const char* name, const char* argument, std::int32_t milliseconds)
{
    const bool isGiven = milliseconds > 0;
    return {name, isGiven ? std::to_string(milliseconds) + " ms" : "none",
            isGiven ? QosOrigin::Argument : QosOrigin::LibraryDefault, isGiven ? argument : "", ""};
}

/// Whether a URI says the domain itself: something stands between "//" and the next slash.
bool namesDomain(const std::string& uri)
{
    const auto authority = uri.find("//");
    return authority != std::string::npos && uri.find('/', authority + 2) != authority + 2;
}

} // namespace

Settings DdsEntityBase::commonSettings() const
{
    const auto domain = std::to_string(participant_->get_domain_id());
    Settings settings{{"topic", topicName_, QosOrigin::Uri, "", ""},
                      namesDomain(uri_.string()) ? QosSetting{"domain", domain, QosOrigin::Uri, "", ""}
                                                 : byProperty(properties_, "domain", "dds.domain", domain)};
    const auto qos = participant_->get_qos();
    const auto transports = settings.size();
    addSettings(settings, qos, profileInUse(properties_, ProfileType::Participant), {});
    const auto chosen = fastdds::transportsOfEnvironment();
    if (qos.transport().use_builtin_transports && !chosen.empty()) {
        settings[transports] = {"transports", chosen, QosOrigin::Environment, fastdds::transportsVariable,
                                ""};
    }
    return settings;
}

Settings DdsEntityBase::settingsOf(const dds::DataWriter& writer,
                                   std::optional<std::int32_t> historyDepth) const
{
    auto settings = commonSettings();
    addSettings(settings, writer.get_publisher()->get_qos(),
                profileInUse(properties_, ProfileType::Publisher), {});
    const auto profile = profileInUse(properties_, ProfileType::Writer);
    addSettings(settings, writer.get_qos(), profile,
                profile ? layersOnWriterProfile(wishes()) : writerLayers(wishes(), historyDepth));
    const std::string property = "dds.wait_for_ack.timeout_ms";
    settings.push_back(byProperty(properties_, "wait for acknowledgments at close", property,
                                  std::to_string(waitForAckTimeoutMs(properties_)) + " ms"));
    return settings;
}

Settings DdsEntityBase::readersSettings(const dds::DataReader& reader) const
{
    auto settings = commonSettings();
    addSettings(settings, reader.get_subscriber()->get_qos(),
                profileInUse(properties_, ProfileType::Subscriber), {});
    return settings;
}

Settings DdsEntityBase::settingsOf(const dds::DataReader& reader) const
{
    auto settings = readersSettings(reader);
    const auto profile = profileInUse(properties_, ProfileType::Reader);
    addSettings(settings, reader.get_qos(), profile,
                profile ? layersOnReaderProfile(wishes()) : readerLayers(wishes()));
    settings.push_back(ageLimit("oldest value delivered by latency", "qos::Latency", latencyMs_));
    settings.push_back(ageLimit("oldest value delivered by deadline", "qos::Deadline", deadlineMs_));
    const bool isOwn = callbacksOn(properties_) == CallbacksOn::OwnThread;
    settings.push_back(
        byProperty(properties_, "callback thread", "dds.callback.thread", isOwn ? "own" : "transport"));
    settings.push_back(byProperty(properties_, "callback exceptions", "dds.callback.exceptions",
                                  logsCallbackExceptions(properties_) ? "log" : "pass"));
    return settings;
}

Settings DdsEntityBase::mostRecentSettingsOf(const dds::DataReader& reader) const
{
    auto settings = readersSettings(reader);
    addSettings(settings, reader.get_qos(), std::nullopt, mostRecentReaderLayers(wishes()));
    return settings;
}

} // namespace ovra::plex::ps::internal
