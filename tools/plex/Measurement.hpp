// SPDX-License-Identifier: Apache-2.0
// What comes of topics, counted without looking at values: what `plex hz`, `plex bw` and `plex delay` have in
// common.
#pragma once

#include "Description.hpp"
#include "Histogram.hpp"
#include "commands/Commands.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// What has come of a topic in a span of time.
struct Window {
    double seconds = 0.0;
    std::uint64_t values = 0;
    std::uint64_t lost = 0;
    Histogram sizes;     ///< bytes of payloads
    Histogram intervals; ///< nanoseconds between two arrivals
    Histogram ages;      ///< nanoseconds from the source time to the arrival

    double rate() const { return seconds > 0.0 ? static_cast<double>(values) / seconds : 0.0; }

    double bytes() const { return sizes.mean() * static_cast<double>(sizes.count()); }
};

/// How a command shows what was measured.
struct Presentation {
    const char* participant; ///< "plex hz"
    std::vector<std::string> heads;
    std::function<std::vector<std::string>(const Window&)> cells;   ///< below these
    std::function<void(Json&, const Window&)> addTo;                ///< members of a JSON object
    std::function<std::vector<std::string>(const Window&)> details; ///< lines at the end; may be empty
};

/// Reports once an interval, and altogether at the end.
ExitCode measure(const MeasureOptions& options, const Presentation& presentation);

} // namespace ovra::plex::tool
