// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/SubscriptionManager.hpp> // NOLINT(misc-header-include-cycle): this is a class nested in it

#include <fastdds/dds/subscriber/DataReaderListener.hpp>
#include <log4cplus/logger.h>

#include <memory>
#include <utility>

namespace ovra::plex::ps
{

/// Hands what DDS reports of a reader to its subscription manager.
///
/// Fast DDS copies the reader's listener pointer and calls through it without counting, so detaching does not
/// wait for a call under way. Two things make it safe:
/// - Whatever holds the reader holds the listener, which keeps the manager, so both outlive
///   delete_datareader(). When that returns, every call is over,
///   in both generations: those about data, deadlines and liveliness run with the RTPS reader's mutex held,
///   which the deletion takes to detach the reader's inner listener; receiving threads, in-process writers
///   and discovery reach a reader only under locks or counts that the deletion waits for before it frees it,
///   and the deadline's timer only while the event thread, for which it waits too, is busy.
/// - A call takes the manager's turn, which gives none any more once the manager is shut down.
template <class T, class ST>
class SubscriptionManager<T, ST>::SubscriptionReaderListener final : public internal::dds::DataReaderListener
{
public:
    explicit SubscriptionReaderListener(std::shared_ptr<SubscriptionManager> manager)
        : manager_(std::move(manager))
    {
    }

    void on_data_available(internal::dds::DataReader* /*reader*/) override { manager_->dataArrived(); }

    void on_subscription_matched(internal::dds::DataReader* reader,
                                 const internal::dds::SubscriptionMatchedStatus& status) override
    {
        tellStatus(*reader, [&](auto& listener) { listener.on_subscription_matched(reader, status); });
    }

    void on_requested_deadline_missed(internal::dds::DataReader* reader,
                                      const internal::dds::RequestedDeadlineMissedStatus& status) override
    {
        internal::recordWarning(logger_, "on_requested_deadline_missed");
        tellStatus(*reader, [&](auto& listener) { listener.on_requested_deadline_missed(reader, status); });
    }

    void on_liveliness_changed(internal::dds::DataReader* /*reader*/,
                               const internal::dds::LivelinessChangedStatus& /*status*/) override
    {
    }

    void on_sample_rejected(internal::dds::DataReader* reader,
                            const internal::dds::SampleRejectedStatus& status) override
    {
        tellStatus(*reader, [&](auto& listener) { listener.on_sample_rejected(reader, status); });
    }

    void
    on_requested_incompatible_qos(internal::dds::DataReader* /*reader*/,
                                  const internal::dds::RequestedIncompatibleQosStatus& /*status*/) override
    {
        internal::recordWarning(logger_, "Requested incompatible QoS ");
    }

    void on_sample_lost(internal::dds::DataReader* reader,
                        const internal::dds::SampleLostStatus& status) override
    {
        tellStatus(*reader, [&](auto& listener) { listener.on_sample_lost(reader, status); });
    }

private:
    template <class Tell>
    static void tellStatus(const internal::dds::DataReader& reader, Tell tell)
    {
        if (const auto listener = internal::statusListenerOf(reader)) {
            tell(*listener);
        }
    }

    log4cplus::Logger logger_ = log4cplus::Logger::getInstance("plexDdsSubscriptionReaderListener");
    const std::shared_ptr<SubscriptionManager> manager_;
};

} // namespace ovra::plex::ps
