// SPDX-License-Identifier: Apache-2.0
#include "Failure.hpp"

#include "Output.hpp"

#include <exception>
#include <new>

namespace ovra::plex::tool
{

int exitCodeOf(const std::function<int()>& command)
{
    try {
        return command();
    } catch (const OutputClosed&) {
        return static_cast<int>(ExitCode::Done);
    } catch (const Failure& failure) {
        remark(failure.what());
        return static_cast<int>(failure.code());
    } catch (const std::bad_alloc&) {
        remark("there is not enough memory");
    } catch (const std::exception& error) {
        remark(error.what());
    }
    return static_cast<int>(ExitCode::Failed);
}

} // namespace ovra::plex::tool
