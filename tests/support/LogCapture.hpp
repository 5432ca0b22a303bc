// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace plex::test
{

/// One log record.
struct LogRecord {
    std::string logger;
    log4cplus::LogLevel level;
    std::string text;
    std::string file;
    int line;
};

/// Captures every log record of the process, from TRACE on, while it lives.
class LogCapture
{
public:
    LogCapture()
    {
        auto root = log4cplus::Logger::getRoot();
        previousLevel_ = root.getLogLevel();
        root.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
        root.addAppender(appender_);
    }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    ~LogCapture()
    {
        auto root = log4cplus::Logger::getRoot();
        root.removeAppender(appender_);
        root.setLogLevel(previousLevel_);
    }

    /// All but what the start-up check says of the host that the test happens to run on.
    std::vector<LogRecord> allRecords() const
    {
        auto records = sink_->records();
        std::erase_if(records, [](const LogRecord& record) {
            return record.file.find("StartupCheck.cpp") != std::string::npos;
        });
        return records;
    }

    /// All but those of level INFO that discovery brings about, at any time and on a thread of its own.
    std::vector<LogRecord> records() const
    {
        auto records = allRecords();
        std::erase_if(records, [](const LogRecord& record) {
            return record.logger == "plexDdsDiscovery" && record.level == log4cplus::INFO_LOG_LEVEL;
        });
        return records;
    }

    /// How often a logger wrote exactly this text at this level.
    long count(const std::string& logger, log4cplus::LogLevel level, const std::string& text) const
    {
        const auto all = sink_->records();
        return std::count_if(all.begin(), all.end(), [&](const LogRecord& record) {
            return record.logger == logger && record.level == level && record.text == text;
        });
    }

private:
    class Sink final : public log4cplus::Appender
    {
    public:
        ~Sink() override { destructorImpl(); }

        void close() override {}

        std::vector<LogRecord> records() const
        {
            const std::lock_guard lock(mutex_);
            return records_;
        }

    protected:
        void append(const log4cplus::spi::InternalLoggingEvent& event) override
        {
            const std::lock_guard lock(mutex_);
            records_.push_back({event.getLoggerName(), event.getLogLevel(), event.getMessage(),
                                event.getFile(), event.getLine()});
        }

    private:
        mutable std::mutex mutex_;
        std::vector<LogRecord> records_;
    };

    Sink* const sink_ = new Sink();
    const log4cplus::SharedAppenderPtr appender_{sink_};
    log4cplus::LogLevel previousLevel_ = log4cplus::NOT_SET_LOG_LEVEL;
};

} // namespace plex::test
