// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/MrvSubscriber.hpp>
#include <vexstubif/AltAz.hpp>

#include <chrono>
#include <memory>
#include <vector>

namespace plex::test
{

/// A subscriber of another transport than DDS.
struct ForeignMrvSubscriber final : ovra::plex::ps::MrvSubscriber<vexstubif::AltAz> {
    void close() override {}

    std::vector<std::shared_ptr<vexstubif::AltAz>>
    readMostRecent(const std::chrono::milliseconds& /*timeout*/) override
    {
        return {};
    }
};

} // namespace plex::test
