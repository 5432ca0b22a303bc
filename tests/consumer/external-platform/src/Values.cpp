// SPDX-License-Identifier: Apache-2.0
#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

vexstubif::AltAz::~AltAz() = default;

vexstubif::DomeTemperature::~DomeTemperature() = default;
