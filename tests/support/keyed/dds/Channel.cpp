// SPDX-License-Identifier: Apache-2.0
#include "Channel.hpp"

namespace generated::dds_::keyed
{

Channel::Channel() = default;
Channel::Channel(const Channel&) = default;
Channel::Channel(Channel&&) noexcept = default;
Channel& Channel::operator=(const Channel&) = default;
Channel& Channel::operator=(Channel&&) noexcept = default;
Channel::~Channel() = default;

void Channel::number(std::int32_t value) noexcept
{
    number_ = value;
}

std::int32_t Channel::number() const noexcept
{
    return number_;
}

std::int32_t& Channel::number() noexcept
{
    return number_;
}

void Channel::level(double value) noexcept
{
    level_ = value;
}

double Channel::level() const noexcept
{
    return level_;
}

double& Channel::level() noexcept
{
    return level_;
}

bool Channel::operator==(const Channel& other) const noexcept
{
    return number_ == other.number_ && level_ == other.level_;
}

bool Channel::operator!=(const Channel& other) const noexcept
{
    return !(*this == other);
}

} // namespace generated::dds_::keyed
