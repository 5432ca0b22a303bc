// SPDX-License-Identifier: Apache-2.0
#include "ChannelAdapter.hpp"
#include "Factories.hpp"

#include <plex/ps/Factories.hpp>

namespace ps = ovra::plex::ps;

ps::Publisher<keyed::Channel>*
generated_dds_Publisher_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                      const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                      const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<keyed::Channel, generated::ddsimpl::keyed::Channel>(plex, uri, qos,
                                                                                      properties);
}

ps::Subscriber<keyed::Channel>*
generated_dds_Subscriber_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                       const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                       const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<keyed::Channel, generated::ddsimpl::keyed::Channel>(plex, uri, qos,
                                                                                       properties);
}

ps::MrvSubscriber<keyed::Channel>*
generated_dds_MrvSubscriber_keyed_Channel(const std::shared_ptr<ovra::plex::Plex>& plex,
                                          const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                          const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<keyed::Channel, generated::ddsimpl::keyed::Channel>(plex, uri, qos,
                                                                                          properties);
}

keyed::Channel* generated_dds_DataEntity_keyed_Channel()
{
    return new generated::ddsimpl::keyed::Channel();
}
