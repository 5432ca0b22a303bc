// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Stage.hpp"

#include <string_view>

namespace plex::test::callbacks
{

/// What must be there for something to be asked of it.
enum class Needs {
    Nothing,
    LocalPublisher,   ///< the value's publisher is in this process
    LocalAsync,       ///< … and the callback is an asynchronous one
    InstancePublisher ///< the value's publisher is an instance publisher
};

/// Something that one may ask for inside a callback.
struct Asked {
    using Step = void (*)(Stage&);

    const char* word;
    Needs needs;
    Step prepare; ///< before the callback, outside
    Step ask;     ///< inside the callback
    Step check;   ///< that it has worked, outside, after the callback
};

/// @throws std::out_of_range when nothing has that name.
const Asked& askedOf(std::string_view word);

} // namespace plex::test::callbacks
