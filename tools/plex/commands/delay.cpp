// SPDX-License-Identifier: Apache-2.0
#include "../Measurement.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

namespace ovra::plex::tool
{

namespace
{

std::vector<std::string> ageCells(const Window& window)
{
    const Histogram& ages = window.ages;
    return {inSeconds(ages.minimum() * 1e-9),     inSeconds(ages.quantile(0.5) * 1e-9),
            inSeconds(ages.quantile(0.9) * 1e-9), inSeconds(ages.quantile(0.99) * 1e-9),
            inSeconds(ages.maximum() * 1e-9),     std::to_string(window.values),
            std::to_string(window.lost)};
}

void addAges(Json& json, const Window& window)
{
    const Histogram& ages = window.ages;
    json["age"] = {{"min", ages.minimum() * 1e-9},
                   {"median", ages.quantile(0.5) * 1e-9},
                   {"p90", ages.quantile(0.9) * 1e-9},
                   {"p99", ages.quantile(0.99) * 1e-9},
                   {"max", ages.maximum() * 1e-9}};
}

std::vector<std::string> ageDetails(const Window& window)
{
    auto lines = drawn(window.ages);
    if (window.ages.minimum() < 0.0) {
        lines.emplace_back(
            "values came before they were sent: the clocks of two machines differ, or source times "
            "are in the future");
    }
    if (window.ages.count() < window.values) {
        lines.emplace_back(counted(window.values - window.ages.count(), "value") +
                           " came without a source time");
    }
    return lines;
}

} // namespace

ExitCode delay(const MeasureOptions& options)
{
    return measure(options, {"plex delay",
                             {"SHORTEST", "MEDIAN", "90 %", "99 %", "LONGEST", "VALUES", "LOST"},
                             ageCells,
                             addAges,
                             ageDetails});
}

} // namespace ovra::plex::tool
