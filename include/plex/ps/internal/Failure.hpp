// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/PlexException.hpp>
#include <plex/Uri.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <string>

/// How failures are worded, logged and thrown.
namespace ovra::plex::ps::internal
{

inline std::string withUri(const std::string& what, const Uri& uri)
{
    return what + " Uri:" + uri.string();
}

inline std::string withCode(const std::string& what, ReturnCode code)
{
    return what + " code:" + std::to_string(code);
}

/// Logs the text at ERROR and throws it.
template <class Exception = PlexException>
[[noreturn]] void fail(const log4cplus::Logger& logger, const std::string& text)
{
    LOG4CPLUS_ERROR(logger, text);
    throw Exception(text);
}

/// Logs the text at ERROR behind "errMsg:" and throws it.
template <class Exception = PlexException>
[[noreturn]] void failWithErrMsg(const log4cplus::Logger& logger, const std::string& text)
{
    LOG4CPLUS_ERROR(logger, "errMsg:" << text);
    throw Exception(text);
}

/// Throws the text with the URI behind it, without a record.
[[noreturn]] inline void throwWithUri(const char* what, const Uri& uri)
{
    throw PlexException(withUri(what, uri));
}

} // namespace ovra::plex::ps::internal
