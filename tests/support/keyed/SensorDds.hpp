// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/module/PubSubType.hpp>

#include <fastcdr/Cdr.h>
#include <fastcdr/CdrSizeCalculator.hpp>

#include <cstddef>
#include <string>
#include <utility>

namespace generated::dds_::keyed
{

/// A sensor's reading as it travels over DDS; the name is its key.
class PLEX_EXPORT Sensor
{
public:
    /// The longest name that can be sent, in characters.
    static constexpr std::size_t maxNameLength = 64;

    void name(std::string value) { name_ = std::move(value); }

    const std::string& name() const { return name_; }

    std::string& name() { return name_; }

    void value(double value) noexcept { value_ = value; }

    double value() const noexcept { return value_; }

    double& value() noexcept { return value_; }

    bool operator==(const Sensor& other) const = default;

private:
    std::string name_;
    double value_ = 0.0;
};

} // namespace generated::dds_::keyed

namespace eprosima::fastcdr
{

template <>
PLEX_EXPORT std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                                  const generated::dds_::keyed::Sensor& data,
                                                  std::size_t& currentAlignment);

/// @throws exception::Exception when the stream's buffer is too small or the name is too long or holds a
/// NUL.
template <>
PLEX_EXPORT void serialize(Cdr& cdr, const generated::dds_::keyed::Sensor& data);

/// @throws exception::Exception when the input is truncated or malformed or the name is too long or holds a
/// NUL.
template <>
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Sensor& data);

PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Sensor& data, EncodingAlgorithmFlag encoding);

/// Writes the key members. @throws as serialize().
PLEX_EXPORT void serialize_key(Cdr& cdr, const generated::dds_::keyed::Sensor& data);

} // namespace eprosima::fastcdr

namespace generated::dds_::keyed
{

/// How Fast DDS handles samples of Sensor.
class PLEX_EXPORT SensorPubSubType : public ovra::plex::ps::PubSubType<Sensor>
{
public:
    using type = Sensor;

    SensorPubSubType();
    ~SensorPubSubType() override;
};

} // namespace generated::dds_::keyed
