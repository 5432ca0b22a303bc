// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <stdexcept>
#include <string>

namespace ovra::plex
{

/// An operation failed or was given a bad argument; what() says which and why.
///
/// Thrown by value, caught by reference. Safe to copy between threads (std::exception_ptr).
class PLEX_EXPORT PlexException : public std::runtime_error
{
public:
    explicit PlexException(const std::string& message);
    PlexException(const PlexException&) = default;
    PlexException& operator=(const PlexException&) = default;
    ~PlexException() override;
};

/// The operation does not fit the state of its object: it is closed, not yet set up, does not offer the
/// operation, or was handed a value that another transport made.
class PLEX_EXPORT IllegalStateException : public PlexException
{
public:
    explicit IllegalStateException(const std::string& message);
    IllegalStateException(const IllegalStateException&) = default;
    IllegalStateException& operator=(const IllegalStateException&) = default;
    ~IllegalStateException() override;
};

} // namespace ovra::plex
