// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/PlexException.hpp>
#include <plex/Uri.hpp>
#include <plex/fastdds/Generation.hpp>

#include <log4cplus/logger.h>

#include <string>

/// How failures are worded, logged and thrown.
namespace ovra::plex::ps::internal
{

PLEX_EXPORT std::string withUri(const std::string& what, const Uri& uri);

PLEX_EXPORT std::string withCode(const std::string& what, fastdds::ReturnCode code);

/// Logs the text at ERROR and throws it.
/// @tparam Exception PlexException or IllegalStateException.
template <class Exception = PlexException>
[[noreturn]] PLEX_EXPORT void fail(const log4cplus::Logger& logger, const std::string& text);

/// Logs the text at ERROR behind "errMsg:" and throws it; as fail().
template <class Exception = PlexException>
[[noreturn]] PLEX_EXPORT void failWithErrMsg(const log4cplus::Logger& logger, const std::string& text);

/// Throws the text with the URI behind it, without a record.
[[noreturn]] PLEX_EXPORT void throwWithUri(const char* what, const Uri& uri);

/// Logs the text at ERROR behind "errMsg:", where no exception may pass.
PLEX_EXPORT void recordErrMsg(const log4cplus::Logger& logger, const std::string& text);

PLEX_EXPORT void recordWarning(const log4cplus::Logger& logger, const char* text);

PLEX_EXPORT void recordDebug(const log4cplus::Logger& logger, const char* text);

/// Logs at ERROR the exception being handled, which has left an asynchronous callback.
PLEX_EXPORT void recordCallbackFailure(const log4cplus::Logger& logger, const std::string& topic);

/// What the exception being handled says.
PLEX_EXPORT std::string currentExceptionText();

/// Logs at TRACE that an entity ("Publisher", …) was created.
PLEX_EXPORT void recordCreated(const log4cplus::Logger& logger, const char* entity, const Uri& uri);

extern template void fail<PlexException>(const log4cplus::Logger&, const std::string&);
extern template void fail<IllegalStateException>(const log4cplus::Logger&, const std::string&);
extern template void failWithErrMsg<PlexException>(const log4cplus::Logger&, const std::string&);
extern template void failWithErrMsg<IllegalStateException>(const log4cplus::Logger&, const std::string&);

} // namespace ovra::plex::ps::internal
