// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <cstdint>

namespace generated::dds_::keyed
{

/// The level of one of many channels, which its number tells apart, as it travels over DDS. The key is made
/// of number.
class PLEX_EXPORT Channel
{
public:
    Channel();
    Channel(const Channel&);
    Channel(Channel&&) noexcept;
    Channel& operator=(const Channel&);
    Channel& operator=(Channel&&) noexcept;
    ~Channel();

    /// Key; default 0.
    void number(std::int32_t value) noexcept;
    std::int32_t number() const noexcept;
    std::int32_t& number() noexcept;

    /// Default 0.
    void level(double value) noexcept;
    double level() const noexcept;
    double& level() noexcept;

    /// Member by member with floating-point ==, so a value that holds a NaN differs from itself.
    bool operator==(const Channel& other) const noexcept;
    bool operator!=(const Channel& other) const noexcept;

private:
    std::int32_t number_ = 0;
    double level_ = 0.0;
};

} // namespace generated::dds_::keyed
