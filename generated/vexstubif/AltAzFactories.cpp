// SPDX-License-Identifier: Apache-2.0
#include "AltAzAdapter.hpp"
#include "Factories.hpp"

#include <plex/ps/Factories.hpp>

namespace ps = ovra::plex::ps;

ps::Publisher<vexstubif::AltAz>*
generated_dds_Publisher_vexstubif_AltAz(const std::shared_ptr<ovra::plex::Plex>& plex,
                                        const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                        const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<vexstubif::AltAz, generated::ddsimpl::vexstubif::AltAz>(plex, uri, qos,
                                                                                          properties);
}

ps::Subscriber<vexstubif::AltAz>*
generated_dds_Subscriber_vexstubif_AltAz(const std::shared_ptr<ovra::plex::Plex>& plex,
                                         const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                         const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<vexstubif::AltAz, generated::ddsimpl::vexstubif::AltAz>(plex, uri, qos,
                                                                                           properties);
}

ps::MrvSubscriber<vexstubif::AltAz>*
generated_dds_MrvSubscriber_vexstubif_AltAz(const std::shared_ptr<ovra::plex::Plex>& plex,
                                            const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                            const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<vexstubif::AltAz, generated::ddsimpl::vexstubif::AltAz>(plex, uri, qos,
                                                                                              properties);
}

vexstubif::AltAz* generated_dds_DataEntity_vexstubif_AltAz()
{
    return new generated::ddsimpl::vexstubif::AltAz();
}
