// SPDX-License-Identifier: Apache-2.0
// The program plex: see what is exchanged over DDS, and try it.
#include "CommandLine.hpp"
#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Output.hpp"

int main(int argc, char** argv)
{
    using namespace ovra::plex::tool;
    holdStandardDescriptors();
    installInterrupt();
    return exitCodeOf([&] { return runCommandLine(argc, argv); });
}
