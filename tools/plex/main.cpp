// SPDX-License-Identifier: Apache-2.0
// The program plex: see what is exchanged over DDS, and try it.
#include "CommandLine.hpp"
#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Output.hpp"

#include <exception>

int main(int argc, char** argv)
{
    using namespace ovra::plex::tool;
    try {
        installInterrupt();
        return runCommandLine(argc, argv);
    } catch (const OutputClosed&) {
        return static_cast<int>(ExitCode::Done);
    } catch (const Failure& failure) {
        remark(failure.what());
        return static_cast<int>(failure.code());
    } catch (const std::exception& error) {
        remark(error.what());
        return static_cast<int>(ExitCode::Failed);
    }
}
