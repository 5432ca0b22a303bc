// SPDX-License-Identifier: Apache-2.0
#include <vexstubif/AltAz.hpp>

namespace vexstubif
{

AltAz::~AltAz() = default;

} // namespace vexstubif
