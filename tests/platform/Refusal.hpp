// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/PlexException.hpp>

#include <gtest/gtest.h>

#include <string>

namespace plex::test
{

/// What an operation says when it is refused with PlexException.
template <class Operation>
std::string refusalOf(Operation&& operation)
{
    try {
        operation();
    } catch (const ovra::plex::PlexException& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
}

} // namespace plex::test
