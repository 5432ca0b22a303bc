// SPDX-License-Identifier: Apache-2.0
#include "Channel.hpp"
#include "Sensor.hpp"

namespace keyed
{

Sensor::~Sensor() = default;

Channel::~Channel() = default;

} // namespace keyed
