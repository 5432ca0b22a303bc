// SPDX-License-Identifier: Apache-2.0
#include <keyed/Sensor.hpp>

namespace keyed
{

Sensor::~Sensor() = default;

} // namespace keyed
