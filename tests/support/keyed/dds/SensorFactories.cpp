// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"
#include "SensorAdapter.hpp"

#include <plex/ps/Factories.hpp>

namespace ps = ovra::plex::ps;

ps::Publisher<keyed::Sensor>*
generated_dds_Publisher_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                     const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                     const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<keyed::Sensor, generated::ddsimpl::keyed::Sensor>(plex, uri, qos,
                                                                                    properties);
}

ps::Subscriber<keyed::Sensor>*
generated_dds_Subscriber_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                      const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                      const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<keyed::Sensor, generated::ddsimpl::keyed::Sensor>(plex, uri, qos,
                                                                                     properties);
}

ps::MrvSubscriber<keyed::Sensor>*
generated_dds_MrvSubscriber_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                         const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                         const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<keyed::Sensor, generated::ddsimpl::keyed::Sensor>(plex, uri, qos,
                                                                                        properties);
}

keyed::Sensor* generated_dds_DataEntity_keyed_Sensor()
{
    return new generated::ddsimpl::keyed::Sensor();
}
