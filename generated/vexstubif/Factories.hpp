// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>
#include <plex/module/TypeDescription.hpp>
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <memory>

/// What libplex-dds-vexstubif exports under plain symbol names. The transport finds these by their pattern,
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

PLEX_EXPORT ovra::plex::ps::Publisher<vexstubif::AltAz>*
generated_dds_Publisher_vexstubif_AltAz(const std::shared_ptr<ovra::plex::Plex>& plex,
                                        const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                        const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::Subscriber<vexstubif::AltAz>*
generated_dds_Subscriber_vexstubif_AltAz(const std::shared_ptr<ovra::plex::Plex>& plex,
                                         const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                         const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::MrvSubscriber<vexstubif::AltAz>* generated_dds_MrvSubscriber_vexstubif_AltAz(
    const std::shared_ptr<ovra::plex::Plex>& plex, const ovra::plex::Uri& uri,
    const ovra::plex::ps::qos::QoSList& qos, const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT vexstubif::AltAz* generated_dds_DataEntity_vexstubif_AltAz();

PLEX_EXPORT const ovra::plex::ps::TypeDescription* generated_dds_Description_vexstubif_AltAz();

PLEX_EXPORT ovra::plex::ps::Publisher<vexstubif::DomeTemperature>*
generated_dds_Publisher_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                  const ovra::plex::Uri& uri,
                                                  const ovra::plex::ps::qos::QoSList& qos,
                                                  const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::Subscriber<vexstubif::DomeTemperature>*
generated_dds_Subscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                   const ovra::plex::Uri& uri,
                                                   const ovra::plex::ps::qos::QoSList& qos,
                                                   const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::MrvSubscriber<vexstubif::DomeTemperature>*
generated_dds_MrvSubscriber_vexstubif_DomeTemperature(const std::shared_ptr<ovra::plex::Plex>& plex,
                                                      const ovra::plex::Uri& uri,
                                                      const ovra::plex::ps::qos::QoSList& qos,
                                                      const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT vexstubif::DomeTemperature* generated_dds_DataEntity_vexstubif_DomeTemperature();

PLEX_EXPORT const ovra::plex::ps::TypeDescription* generated_dds_Description_vexstubif_DomeTemperature();

} // extern "C"
