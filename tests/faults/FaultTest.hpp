// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DyingProcess.hpp"
#include "FaultInjection.hpp"
#include "KeyedTest.hpp"

#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>

#include <csignal>
#include <string>

namespace plex::test
{

using fastdds::RETCODE_ERROR;
using fastdds::RETCODE_NO_DATA;
using fastdds::RETCODE_PRECONDITION_NOT_MET;
using fastdds::RETCODE_TIMEOUT;

/// Every code with which DDS can refuse an operation (DDS 1.4, 2.2.1.1), but for NO_DATA.
inline constexpr ReturnCode refusals[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12};

/// A vocabulary for tests of what happens when DDS refuses something.
class FaultTest : protected DyingProcess, public KeyedTest
{
protected:
    using CallbackTest::hearing;
    using KeyedTest::hearing;

    /// What DDS never says of a sample: that its instance is neither new nor known.
    static void loseViewState(eprosima::fastdds::dds::SampleInfo& info)
    {
        info.view_state = static_cast<eprosima::fastdds::dds::ViewStateKind>(0);
    }

    std::string uriText() const { return uri.string(); }

    /// Runs an operation that must throw and must log this one record at ERROR. @param prefix is only logged.
    template <class Exception = PlexException, class Operation>
    static void expectFailure(const std::string& logger, const std::string& text, Operation operation,
                              const std::string& prefix = "")
    {
        const LogCapture log;
        EXPECT_EQ(thrownText<Exception>(operation), text);
        EXPECT_EQ(recordsOf(log), records({{logger, log4cplus::ERROR_LOG_LEVEL, prefix + text}}));
    }

    struct Record {
        std::string logger;
        log4cplus::LogLevel level;
        std::string text;
    };

    /// Log records in a form that is easy to compare, without those below WARN.
    static std::vector<std::string> records(const std::vector<Record>& all)
    {
        std::vector<std::string> result;
        for (const auto& [logger, level, text] : all) {
            if (level >= log4cplus::WARN_LOG_LEVEL) {
                result.push_back(log4cplus::getLogLevelManager().toString(level) + " " + logger + ": " +
                                 text);
            }
        }
        return result;
    }

    static std::vector<std::string> recordsOf(const LogCapture& log)
    {
        std::vector<Record> all;
        for (const auto& record : log.records()) {
            all.push_back({record.logger, record.level, record.text});
        }
        return records(all);
    }

    static Record error(const std::string& logger, const std::string& text)
    {
        return {logger, log4cplus::ERROR_LOG_LEVEL, text};
    }

    static Record warning(const std::string& logger, const std::string& text)
    {
        return {logger, log4cplus::WARN_LOG_LEVEL, text};
    }

    /// Runs an operation, in a process of its own, that must end it with this record at ERROR as its last
    /// one.
    template <class Operation>
    void expectDeath(const std::string& logger, const std::string& text, Operation operation)
    {
        EXPECT_EXIT(runToDeath(operation), testing::KilledBySignal(SIGABRT),
                    lastRecord("ERROR " + logger + ": " + text));
    }

    /// The same without a record.
    template <class Operation>
    static void expectDeath(Operation operation)
    {
        EXPECT_EXIT(runToDeath(operation), testing::KilledBySignal(SIGABRT), "");
    }

private:
    template <class Operation>
    static void runToDeath(Operation operation)
    {
        logToStandardError();
        leaveNothingBehind();
        operation();
    }

    static void logToStandardError()
    {
        const log4cplus::SharedAppenderPtr console(new log4cplus::ConsoleAppender(true, true));
        console->setLayout(std::make_unique<log4cplus::PatternLayout>("%p %c: %m%n"));
        log4cplus::Logger::getRoot().addAppender(console);
    }

    /// The record with any URI of this test in it, as another process has another one.
    testing::Matcher<const std::string&> lastRecord(const std::string& record) const
    {
        std::string pattern = escaped(record);
        const std::string own = escaped(uriText());
        if (const auto at = pattern.find(own); at != std::string::npos) {
            pattern.replace(at, own.size(), "dds\\+ps://[0-9]+/[^ ]+/topic");
        }
        return testing::ContainsRegex("(^|\n)" + pattern + "\n");
    }

    static std::string escaped(const std::string& text)
    {
        std::string result;
        for (const char c : text) {
            if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) {
                result += '\\';
            }
            result += c;
        }
        return result;
    }
};

} // namespace plex::test
