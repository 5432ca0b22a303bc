// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperatureAdapter.hpp"
#include "Factories.hpp"

#include <plex/ps/Factories.hpp>

namespace ps = ovra::plex::ps;

ps::Publisher<vexstubif::DomeTemperature>*
generated_dds_Publisher_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                  const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                  const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<vexstubif::DomeTemperature, generated::ddsimpl::vexstubif::DomeTemperature>(
        plex, uri, qos, properties);
}

ps::Subscriber<vexstubif::DomeTemperature>*
generated_dds_Subscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                   const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                   const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<vexstubif::DomeTemperature,
                                   generated::ddsimpl::vexstubif::DomeTemperature>(plex, uri, qos,
                                                                                   properties);
}

ps::MrvSubscriber<vexstubif::DomeTemperature>*
generated_dds_MrvSubscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                      const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                      const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<vexstubif::DomeTemperature,
                                      generated::ddsimpl::vexstubif::DomeTemperature>(plex, uri, qos,
                                                                                      properties);
}

vexstubif::DomeTemperature* generated_dds_DataEntity_vexstubif_DomeTemperature()
{
    return new generated::ddsimpl::vexstubif::DomeTemperature();
}
