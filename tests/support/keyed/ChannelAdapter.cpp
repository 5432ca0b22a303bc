// SPDX-License-Identifier: Apache-2.0
#include "ChannelAdapter.hpp"

#include <plex/ps/DataEntities.hpp>

namespace generated::ddsimpl::keyed
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

Channel::Channel() : sample_(createSample<DdsType>(), ddsSampleDeleter<DdsType>) {}

Channel::Channel(const DdsType& source) : sample_(createSample<DdsType>(source), ddsSampleDeleter<DdsType>) {}

Channel::Channel(DdsType& borrowed, ovra::plex::icd::dds::Borrow) : sample_(&borrowed, noOpDeleter<DdsType>)
{
}

Channel::~Channel() = default;

std::unique_ptr<::keyed::Channel> Channel::clone() const
{
    return std::make_unique<Channel>(wire());
}

bool Channel::keyEquals(const ::keyed::Channel& other) const
{
    auto logger = log4cplus::Logger::getInstance("keyedChannel");
    return wire().number() ==
           ovra::plex::ps::obtainImpl<::keyed::Channel, Channel>(other, logger).wire().number();
}

std::unique_ptr<::keyed::Channel> Channel::cloneKey() const
{
    auto key = std::make_unique<Channel>();
    key->wire().number(wire().number());
    return key;
}

bool Channel::hasKey() const
{
    return true;
}

std::int32_t Channel::getNumber() const
{
    return wire().number();
}

void Channel::setNumber(std::int32_t number)
{
    wire().number(number);
}

double Channel::getLevel() const
{
    return wire().level();
}

void Channel::setLevel(double level)
{
    wire().level(level);
}

void Channel::assign(const DdsType& source)
{
    wire() = source;
}

void Channel::copy(const ::keyed::Channel& from, ::keyed::Channel& to)
{
    to.setNumber(from.getNumber());
    to.setLevel(from.getLevel());
}

} // namespace generated::ddsimpl::keyed
