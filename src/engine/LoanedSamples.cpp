// SPDX-License-Identifier: Apache-2.0
#include <plex/module/UndecodableSamples.hpp>
#include <plex/ps/internal/Endpoint.hpp>
#include <plex/ps/internal/LoanedSamples.hpp>

#include <fastdds/dds/topic/TopicDescription.hpp>
#include <log4cplus/loggingmacros.h>

#include <limits>

namespace ovra::plex::ps::internal
{

namespace
{

void warnOf(const UndecodableSamples& undecodable, const dds::DataReader& reader)
{
    const auto* const topic = reader.get_topicdescription();
    LOG4CPLUS_WARN(log4cplus::Logger::getInstance("plexDdsBasePubSub"),
                   "Passed over " << undecodable.count() << " samples of topic " << topic->get_name()
                                  << " that can not be decoded as " << topic->get_type_name());
    noteUndecodable(reader, undecodable.count(), undecodable.lastBytes());
}

} // namespace

/// Fills the samples and marks those that can not be decoded: Fast DDS lends them out like the others, with
/// whatever their memory held before.
template <class Operation>
fastdds::ReturnCode AnyLoanedSamples::fillBy(dds::DataReader& reader, Operation operation)
{
    const UndecodableSamples undecodable;
    const auto result = fastdds::code(operation());
    if (undecodable.areAny()) {
        for (std::int32_t i = 0; i < size(); ++i) {
            if (infos[i].valid_data && undecodable.contain(values_.buffer()[i])) {
                undecodable_.push_back(i);
            }
        }
        warnOf(undecodable, reader);
    }
    return result;
}

fastdds::ReturnCode AnyLoanedSamples::take(dds::DataReader& reader, std::int32_t limit,
                                           const SampleStates& states)
{
    return fillBy(reader, [&] {
        return reader.take(values_, infos, limit, states.sample, states.view, states.instance);
    });
}

fastdds::ReturnCode AnyLoanedSamples::takeInstance(dds::DataReader& reader,
                                                   const fastdds::InstanceHandle_t& instance)
{
    const auto result = fillBy(reader, [&] {
        return reader.take_instance(values_, infos, 1, instance, dds::ANY_SAMPLE_STATE, dds::ANY_VIEW_STATE,
                                    dds::ANY_INSTANCE_STATE);
    });
    return result == fastdds::RETCODE_BAD_PARAMETER ? fastdds::RETCODE_NO_DATA : result;
}

fastdds::ReturnCode AnyLoanedSamples::readNextInstance(dds::DataReader& reader,
                                                       const fastdds::InstanceHandle_t& previous,
                                                       std::int32_t limit, dds::InstanceStateMask states)
{
    return fillBy(reader, [&] {
        return reader.read_next_instance(values_, infos, limit, previous, dds::ANY_SAMPLE_STATE,
                                         dds::ANY_VIEW_STATE, states);
    });
}

fastdds::ReturnCode AnyLoanedSamples::giveBack(dds::DataReader& reader)
{
    return fastdds::code(reader.return_loan(values_, infos));
}

std::uint64_t AnyLoanedSamples::countUnread() const
{
    std::uint64_t count = 0;
    for (std::int32_t i = 0; i < size(); ++i) {
        count += infos[i].sample_state == dds::NOT_READ_SAMPLE_STATE ? 1U : 0U;
    }
    return count;
}

ArrivedSamples::ArrivedSamples(dds::DataReader& reader) : reader_(reader), unread_(reader.get_unread_count())
{
    fastdds::SampleTime::now(begin_);
}

fastdds::ReturnCode ArrivedSamples::take(AnyLoanedSamples& samples)
{
    if (all_) {
        return fastdds::RETCODE_NO_DATA;
    }
    if (unread_ > 0) {
        const auto result = samples.take(reader_, sampleLimit(unread_));
        if (result == fastdds::RETCODE_OK) {
            unread_ -= std::min(unread_, samples.countUnread());
        }
        return result;
    }
    // What is left has been read without being taken, by a look on behalf of notifiers, which may go on
    // meanwhile.
    const auto result = samples.take(reader_, dds::LENGTH_UNLIMITED, alreadyRead);
    all_ = result != fastdds::RETCODE_OK || samples.infos[samples.size() - 1].reception_timestamp > begin_;
    return result;
}

bool takeNextSample(dds::DataReader& reader, void* sample, dds::SampleInfo& info)
{
    const UndecodableSamples undecodable; // Fast DDS passes over them
    const auto result = fastdds::code(reader.take_next_sample(sample, &info));
    if (undecodable.areAny()) {
        warnOf(undecodable, reader);
    }
    return result == fastdds::RETCODE_OK;
}

std::int32_t sampleLimit(std::size_t count) noexcept
{
    constexpr std::size_t largest = std::numeric_limits<std::int32_t>::max();
    return count == 0 ? dds::LENGTH_UNLIMITED : static_cast<std::int32_t>(std::min(count, largest));
}

// Where it throws, the process ends, and its terminate handler sees why.
LoanGuard::~LoanGuard() // NOLINT(bugprone-exception-escape)
{
    const auto result = samples_.giveBack(reader_);
    if (result != fastdds::RETCODE_OK) {
        refused(result);
    }
}

void LoanGuard::refused(fastdds::ReturnCode result) const
{
    const auto text = withCode(failureText_, result);
    recordErrMsg(logger_, text);
    if (onRefusal_ == OnRefusal::EndProcess) {
        throw PlexException(text);
    }
}

} // namespace ovra::plex::ps::internal
