// SPDX-License-Identifier: Apache-2.0
#include "ChannelAdapter.hpp"

#include <plex/ps/DataEntities.hpp>

#include <utility>

namespace generated::ddsimpl::keyed
{

using ovra::plex::icd::dds::createSample;
using ovra::plex::icd::dds::ddsSampleDeleter;
using ovra::plex::icd::dds::noOpDeleter;

Channel::Channel() : Channel(SamplePointer(createSample<DdsType>(), ddsSampleDeleter<DdsType>)) {}

Channel::Channel(const DdsType& source)
    : Channel(SamplePointer(createSample<DdsType>(source), ddsSampleDeleter<DdsType>))
{
}

Channel::Channel(DdsType& borrowed, ovra::plex::icd::dds::Borrow /*tag*/)
    : Channel(SamplePointer(&borrowed, noOpDeleter<DdsType>))
{
}

Channel::Channel(SamplePointer sample)
    : sample_(std::move(sample))
    , number_(sample_->number())
    , level_(sample_->level())
{
}

Channel::~Channel() = default;

std::unique_ptr<::keyed::Channel> Channel::clone() const
{
    return std::make_unique<Channel>(wire());
}

bool Channel::keyEquals(const ::keyed::Channel& other) const
{
    auto logger = log4cplus::Logger::getInstance("keyed_Channel");
    const auto& key = ovra::plex::ps::obtainImpl<::keyed::Channel, Channel>(other, logger);
    return number_ == key.number_;
}

std::unique_ptr<::keyed::Channel> Channel::cloneKey() const
{
    auto key = std::make_unique<Channel>();
    key->number_ = number_;
    return key;
}

bool Channel::hasKey() const
{
    return true;
}

std::int32_t Channel::getNumber() const
{
    return number_;
}

void Channel::setNumber(std::int32_t number)
{
    number_ = number;
}

double Channel::getLevel() const
{
    return level_;
}

void Channel::setLevel(double level)
{
    level_ = level;
}

void Channel::assign(const DdsType& source)
{
    number_ = source.number();
    level_ = source.level();
}

void Channel::copy(const ::keyed::Channel& from, ::keyed::Channel& to)
{
    to.setNumber(from.getNumber());
    to.setLevel(from.getLevel());
}

} // namespace generated::ddsimpl::keyed
