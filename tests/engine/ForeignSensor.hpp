// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <keyed/Sensor.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace plex::test
{

/// A sensor's reading as another transport's binding would make it.
class ForeignSensor final : public keyed::Sensor
{
public:
    explicit ForeignSensor(std::string name) : name_(std::move(name)) {}

    std::unique_ptr<keyed::Sensor> clone() const override { return std::make_unique<ForeignSensor>(*this); }

    bool keyEquals(const keyed::Sensor& other) const override { return other.getName() == name_; }

    std::unique_ptr<keyed::Sensor> cloneKey() const override
    {
        return std::make_unique<ForeignSensor>(name_);
    }

    bool hasKey() const override { return true; }

    std::string_view getName() const override { return name_; }

    void setName(std::string_view name) override { name_ = name; }

    double getValue() const override { return value_; }

    void setValue(double value) override { value_ = value; }

private:
    std::string name_;
    double value_ = 0;
};

} // namespace plex::test
