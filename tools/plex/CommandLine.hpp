// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ovra::plex::tool
{

/// Reads the command line and carries out its command. CLI11 stays in the source file.
/// @returns what the program ends with. Help and complaints about the command line are written.
/// @throws Failure and OutputClosed, as commands do.
int runCommandLine(int argc, const char* const* argv);

} // namespace ovra::plex::tool
