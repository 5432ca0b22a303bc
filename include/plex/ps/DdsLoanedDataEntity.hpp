// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/LoanedDataEntity.hpp>
#include <plex/ps/DdsSubscriber.hpp> // NOLINT(misc-header-include-cycle): this is a class nested in it

#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace ovra::plex::ps
{

/// One loaned sample and the reader that it goes back to, also when the subscriber was closed meanwhile.
template <class T, class ST>
class DdsSubscriber<T, ST>::DdsLoanedDataEntity final : public LoanedDataEntity<T>
{
public:
    DdsLoanedDataEntity(std::shared_ptr<DdsSubscriber> owner, internal::SharedReader::Use reader)
        : owner_(std::move(owner))
        , reader_(std::move(reader))
    {
    }

    DdsLoanedDataEntity(const DdsLoanedDataEntity&) = delete;
    DdsLoanedDataEntity& operator=(const DdsLoanedDataEntity&) = delete;

    ~DdsLoanedDataEntity() override
    {
        try {
            close();
        } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): returnLoan() has logged it
        }
        if (owner_.use_count() == 1) { // so as not to slow down those that are not the last
            internal::giveUp(std::move(owner_));
        }
    }

    T& getData() override
    {
        return *value_; // NOLINT(bugprone-unchecked-optional-access): a loan is given out with its value only
    }

    void close() override
    {
        if (closed_) {
            return;
        }
        if (samples_.areOnLoan()) { // some generations of Fast DDS refuse to take back nothing
            owner_->returnLoan(*reader_, samples_);
        }
        closed_ = true;
        reader_.end();
    }

    /// The reader that the loan is taken from; there until the loan is closed.
    internal::dds::DataReader& reader() { return *reader_; }

    Samples& samples() { return samples_; }

    void view(DdsType& sample) { value_.emplace(sample, ovra::plex::icd::dds::Borrow{}); }

private:
    Samples samples_;
    std::shared_ptr<DdsSubscriber> owner_;
    internal::SharedReader::Use reader_; ///< the last one deletes it where the subscriber was closed
    std::optional<ST> value_;
    bool closed_ = false;
};

} // namespace ovra::plex::ps
