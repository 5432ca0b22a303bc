// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/PlexException.hpp>
#include <plex/ps/TopicAdapter.hpp>

#include <log4cplus/logger.h>

#include <memory>
#include <typeinfo>

namespace ovra::plex::ps
{

/// A new value over a default wire value; adapter and control block are one allocation.
/// @throws std::runtime_error "failed to create a DDS sample".
template <class T, class ST>
std::shared_ptr<T> createDataEntityInternal()
{
    return std::make_shared<ST>();
}

/// A new value with a copy of every field of a wire value; throws as above.
template <class T, class ST>
std::shared_ptr<T> createDataEntityFrom(const typename ST::DdsType& sample)
{
    auto entity = std::make_shared<ST>();
    entity->assign(sample);
    return entity;
}

namespace internal
{

/// The adapter behind an interface value, or null. Nearly always the value is exactly that; a class derived
/// from it costs a search.
template <class Adapter, class Value>
inline Adapter* adapterOf(Value& value)
{
    return typeid(value) == typeid(Adapter) ? static_cast<Adapter*>(&value) : dynamic_cast<Adapter*>(&value);
}

/// Logs and throws for a value that is not this binding's.
/// @param line where the log record says that it comes from.
[[noreturn]] inline void refuseForeignValue(const log4cplus::Logger& logger, int line)
{
    const std::string text = "Data type for instance or value is incorrect. Not a DDS supported type";
    if (logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL)) {
        logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, text, "include/plex/ps/internal/DdsBasePubSub", line);
    }
    throw IllegalStateException(text);
}

} // namespace internal

/// The adapter behind an interface value.
/// @param logger the caller's, for the ERROR record of a refusal.
/// @throws IllegalStateException when the value is of another class.
template <class T, class ST>
inline const ST& obtainImpl(const T& value, log4cplus::Logger& logger)
{
    if (const auto* const adapter = internal::adapterOf<const ST>(value)) {
        return *adapter;
    }
    internal::refuseForeignValue(logger, 105);
}

/// As above, for a value that may be changed.
template <class T, class ST>
inline ST& obtainImpl(T& value, log4cplus::Logger& logger)
{
    if (auto* const adapter = internal::adapterOf<ST>(value)) {
        return *adapter;
    }
    internal::refuseForeignValue(logger, 127);
}

} // namespace ovra::plex::ps
