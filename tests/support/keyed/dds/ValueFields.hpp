// SPDX-License-Identifier: Apache-2.0
// What is within topics, as the codec sees it.
#pragma once

#include <plex/module/CdrFields.hpp>

namespace ovra::plex::ps::cdr
{

} // namespace ovra::plex::ps::cdr
