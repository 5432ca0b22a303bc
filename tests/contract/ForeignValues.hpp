// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vexstubif/AltAz.hpp>
#include <vexstubif/DomeTemperature.hpp>

#include <memory>

namespace plex::test
{

/// Values as another transport's binding would make them.
class ForeignAltAz final : public vexstubif::AltAz
{
public:
    std::unique_ptr<vexstubif::AltAz> clone() const override { return std::make_unique<ForeignAltAz>(*this); }

    bool keyEquals(const vexstubif::AltAz& /*other*/) const override { return false; }

    std::unique_ptr<vexstubif::AltAz> cloneKey() const override { return std::make_unique<ForeignAltAz>(); }

    bool hasKey() const override { return false; }

    double getAlt() const override { return alt_; }

    void setAlt(double alt) override { alt_ = alt; }

    double getAz() const override { return az_; }

    void setAz(double az) override { az_ = az; }

private:
    double alt_ = 0;
    double az_ = 0;
};

class ForeignDomeTemperature final : public vexstubif::DomeTemperature
{
public:
    std::unique_ptr<vexstubif::DomeTemperature> clone() const override
    {
        return std::make_unique<ForeignDomeTemperature>(*this);
    }

    bool keyEquals(const vexstubif::DomeTemperature& /*other*/) const override { return false; }

    std::unique_ptr<vexstubif::DomeTemperature> cloneKey() const override
    {
        return std::make_unique<ForeignDomeTemperature>();
    }

    bool hasKey() const override { return false; }

    double getTemp() const override { return temp_; }

    void setTemp(double temp) override { temp_ = temp; }

private:
    double temp_ = 0;
};

} // namespace plex::test
