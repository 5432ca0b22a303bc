// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/Failure.hpp>

#include <log4cplus/loggingmacros.h>

namespace ovra::plex::ps::internal
{

std::string withUri(const std::string& what, const Uri& uri)
{
    return what + " Uri:" + uri.string();
}

std::string withCode(const std::string& what, fastdds::ReturnCode code)
{
    return what + " code:" + std::to_string(code);
}

template <class Exception>
void fail(const log4cplus::Logger& logger, const std::string& text)
{
    LOG4CPLUS_ERROR(logger, text);
    throw Exception(text);
}

template <class Exception>
void failWithErrMsg(const log4cplus::Logger& logger, const std::string& text)
{
    recordErrMsg(logger, text);
    throw Exception(text);
}

void throwWithUri(const char* what, const Uri& uri)
{
    throw PlexException(withUri(what, uri));
}

void recordErrMsg(const log4cplus::Logger& logger, const std::string& text)
{
    LOG4CPLUS_ERROR(logger, "errMsg:" << text);
}

void recordWarning(const log4cplus::Logger& logger, const char* text)
{
    LOG4CPLUS_WARN(logger, text);
}

void recordDebug(const log4cplus::Logger& logger, const char* text)
{
    LOG4CPLUS_DEBUG(logger, text);
}

void recordCallbackFailure(const log4cplus::Logger& logger, const std::string& topic)
{
    LOG4CPLUS_ERROR(logger, "A callback of topic " << topic << " has thrown: " << currentExceptionText());
}

std::string currentExceptionText()
{
    try {
        throw;
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "an exception of unknown type";
    }
}

void recordCreated(const log4cplus::Logger& logger, const char* entity, const Uri& uri)
{
    LOG4CPLUS_TRACE(logger, entity << " for " << uri.string() << " created");
}

template void fail<PlexException>(const log4cplus::Logger&, const std::string&);
template void fail<IllegalStateException>(const log4cplus::Logger&, const std::string&);
template void failWithErrMsg<PlexException>(const log4cplus::Logger&, const std::string&);
template void failWithErrMsg<IllegalStateException>(const log4cplus::Logger&, const std::string&);

} // namespace ovra::plex::ps::internal
