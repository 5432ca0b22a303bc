// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace ovra::plex::ps::detail
{

std::string newUUID();

} // namespace ovra::plex::ps::detail
