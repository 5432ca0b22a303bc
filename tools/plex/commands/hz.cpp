// SPDX-License-Identifier: Apache-2.0
#include "../Measurement.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

namespace ovra::plex::tool
{

namespace
{

std::vector<std::string> intervalCells(const Window& window)
{
    const Histogram& intervals = window.intervals;
    return {fixed(window.rate(), 2),
            inSeconds(intervals.mean() * 1e-9),
            inSeconds(intervals.minimum() * 1e-9),
            inSeconds(intervals.maximum() * 1e-9),
            inSeconds(intervals.deviation() * 1e-9),
            std::to_string(window.values),
            std::to_string(window.lost)};
}

void addIntervals(Json& json, const Window& window)
{
    const Histogram& intervals = window.intervals;
    json["rate"] = window.rate();
    json["interval"] = {{"mean", intervals.mean() * 1e-9},
                        {"min", intervals.minimum() * 1e-9},
                        {"max", intervals.maximum() * 1e-9},
                        {"jitter", intervals.deviation() * 1e-9}};
}

} // namespace

ExitCode hz(const MeasureOptions& options)
{
    return measure(options, {"plex hz",
                             {"VALUES/S", "INTERVAL", "SHORTEST", "LONGEST", "JITTER", "VALUES", "LOST"},
                             intervalCells,
                             addIntervals,
                             [](const Window& window) {
                                 return drawn(window.intervals);
                             }});
}

} // namespace ovra::plex::tool
