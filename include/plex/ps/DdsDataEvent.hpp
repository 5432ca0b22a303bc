// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEvent.hpp>

#include <memory>
#include <utility>

namespace ovra::plex::ps
{

/// A received sample with its circumstances: an immutable record.
template <class T>
class DdsDataEvent final : public DataEvent<T>
{
public:
    /// @param data empty when there is no valid data.
    DdsDataEvent(double sourceTimestamp, bool validData, std::shared_ptr<T> data, InstanceState instanceState,
                 InstanceEvent instanceEvent)
        : sourceTimestamp_(sourceTimestamp)
        , validData_(validData)
        , data_(std::move(data))
        , instanceState_(instanceState)
        , instanceEvent_(instanceEvent)
    {
    }

    bool hasValidData() const override { return validData_; }

    const std::shared_ptr<T>& getData() const override { return data_; }

    InstanceState getInstanceState() const override { return instanceState_; }

    InstanceEvent getInstanceEvent() const override { return instanceEvent_; }

    double getSourceTimestamp() const override { return sourceTimestamp_; }

private:
    const double sourceTimestamp_;
    const bool validData_;
    const std::shared_ptr<T> data_;
    const InstanceState instanceState_;
    const InstanceEvent instanceEvent_;
};

} // namespace ovra::plex::ps
