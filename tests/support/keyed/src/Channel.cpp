// SPDX-License-Identifier: Apache-2.0
#include <keyed/Channel.hpp>

namespace keyed
{

Channel::~Channel() = default;

} // namespace keyed
