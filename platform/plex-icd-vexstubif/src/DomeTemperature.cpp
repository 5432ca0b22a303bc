// SPDX-License-Identifier: Apache-2.0
#include <vexstubif/DomeTemperature.hpp>

namespace vexstubif
{

DomeTemperature::~DomeTemperature() = default;

} // namespace vexstubif
