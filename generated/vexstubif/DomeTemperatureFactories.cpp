// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperatureAdapter.hpp"
#include "Factories.hpp"

#include <plex/ps/Factories.hpp>

using Interface = vexstubif::DomeTemperature;
using Adapter = generated::ddsimpl::vexstubif::DomeTemperature;

namespace ps = ovra::plex::ps;

ps::Publisher<Interface>*
generated_dds_Publisher_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                  const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                  const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<Interface, Adapter>(plex, uri, qos, properties);
}

ps::Subscriber<Interface>*
generated_dds_Subscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                   const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                   const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<Interface, Adapter>(plex, uri, qos, properties);
}

ps::MrvSubscriber<Interface>*
generated_dds_MrvSubscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                      const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                                      const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<Interface, Adapter>(plex, uri, qos, properties);
}

Interface* generated_dds_DataEntity_vexstubif_DomeTemperature()
{
    return new Adapter();
}
