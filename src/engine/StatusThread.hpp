// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BackgroundThread.hpp"

namespace ovra::plex::ps::internal
{

/// The thread of the process on which changes of status are recorded and told, "plex-status".
BackgroundThread& statusThread();

} // namespace ovra::plex::ps::internal
