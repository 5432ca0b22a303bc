// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Channel.hpp"
#include "Sensor.hpp"

#include <plex/Plex.hpp>

#include <memory>

/// What libplex-dds-keyed exports for the DDS transport, as every module library does.
extern "C" {

PLEX_EXPORT ovra::plex::ps::Publisher<keyed::Channel>*
generated_dds_Publisher_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                      const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                      const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::Subscriber<keyed::Channel>*
generated_dds_Subscriber_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                       const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                       const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::MrvSubscriber<keyed::Channel>*
generated_dds_MrvSubscriber_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                          const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                          const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT keyed::Channel* generated_dds_DataEntity_keyed_Channel();

PLEX_EXPORT ovra::plex::ps::Publisher<keyed::Sensor>*
generated_dds_Publisher_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                     const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                     const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::Subscriber<keyed::Sensor>*
generated_dds_Subscriber_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                      const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                      const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::MrvSubscriber<keyed::Sensor>*
generated_dds_MrvSubscriber_keyed_Sensor(const std::shared_ptr<ovra::plex::Plex>& plex,
                                         const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                         const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT keyed::Sensor* generated_dds_DataEntity_keyed_Sensor();

} // extern "C"
