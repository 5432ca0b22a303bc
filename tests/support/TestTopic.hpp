// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Uri.hpp>

#include <gtest/gtest.h>

#include <ReservedDomain.hpp>
#include <string>
#include <unistd.h>

namespace plex::test
{

/// The running test's name, with the process in it.
inline std::string testName()
{
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    return std::string(info->test_suite_name()) + "." + info->name() + "." + std::to_string(getpid());
}

/// The DDS domain of this process's tests.
inline unsigned testDomain()
{
    static const ReservedDomain domain;
    return domain.number();
}

/// A topic that no other test uses. @param topic tells apart the topics of one test.
inline ovra::plex::Uri testUri(const std::string& topic = "topic")
{
    return ovra::plex::Uri("dds+ps://" + std::to_string(testDomain()) + "/" + testName() + "/" + topic);
}

} // namespace plex::test
