// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <keyed/Channel.hpp>
#include <keyed/Sensor.hpp>
#include <plex/Plex.hpp>
#include <plex/module/TypeDescription.hpp>

#include <memory>

/// What libplex-dds-keyed exports under plain symbol names. The transport finds these by their pattern,
/// generated_dds_<Kind>_<module>_<Type>.
///
/// 1. The result is new, never null, and owned by the caller, who deletes it through its virtual destructor.
/// 2. `plex` must be the DDS transport's own instance; null or another is refused with PlexException.
/// 3. `uri` must be a DDS publish/subscribe URI; `qos` and `properties` may be empty, and null entries of
///    `qos` are skipped. All of them are copied.
/// 4. Exceptions pass to the caller: PlexException for bad arguments and failures of DDS,
///    std::runtime_error when memory for a value cannot be had. Nothing is left behind then.
/// 5. They may be called from several threads at once.
///
/// A description is what tools need to handle values of a type that they do not know; it is the library's,
/// and never null.
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

PLEX_EXPORT const ovra::plex::ps::TypeDescription* generated_dds_Description_keyed_Channel();

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

PLEX_EXPORT const ovra::plex::ps::TypeDescription* generated_dds_Description_keyed_Sensor();

} // extern "C"
