// SPDX-License-Identifier: Apache-2.0
#include "../Measurement.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

namespace ovra::plex::tool
{

namespace
{

double bytesPerSecond(const Window& window)
{
    return window.seconds > 0.0 ? window.bytes() / window.seconds : 0.0;
}

std::vector<std::string> sizeCells(const Window& window)
{
    return {inBytes(bytesPerSecond(window)) + "/s",
            inBytes(window.bytes()),
            inBytes(window.sizes.mean()),
            inBytes(window.sizes.minimum()),
            inBytes(window.sizes.maximum()),
            std::to_string(window.values),
            std::to_string(window.lost)};
}

void addSizes(Json& json, const Window& window)
{
    json["bytesPerSecond"] = bytesPerSecond(window);
    json["bytes"] = window.bytes();
    json["size"] = {
        {"mean", window.sizes.mean()}, {"min", window.sizes.minimum()}, {"max", window.sizes.maximum()}};
}

} // namespace

ExitCode bw(const MeasureOptions& options)
{
    return measure(options, {"plex bw",
                             {"BYTES/S", "BYTES", "MEAN", "SMALLEST", "LARGEST", "VALUES", "LOST"},
                             sizeCells,
                             addSizes,
                             {}});
}

} // namespace ovra::plex::tool
