// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

#include <map>
#include <memory>
#include <mutex>

namespace eprosima::fastdds::dds
{
class DomainParticipant;
}

namespace ovra::plex
{

/// The transport of a module that has the type AltAz only.
class DdsPlex : public Plex
{
public:
    explicit DdsPlex(const Properties& properties) : Plex(properties) {}

    ~DdsPlex() override;

    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant>
    getDomainParticipant(const Uri& uri, const Properties& properties);

protected:
    Factory findFactory(const std::string& kind, const std::type_info& valueType, const std::string& scheme,
                        const Properties& properties) override;

private:
    std::mutex mutex_; ///< guards participants_
    std::map<unsigned, std::weak_ptr<eprosima::fastdds::dds::DomainParticipant>> participants_;
};

} // namespace ovra::plex
