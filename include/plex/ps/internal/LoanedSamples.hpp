// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/ps/internal/Entities.hpp>
#include <plex/ps/internal/RefusedPayloads.hpp>

#include <fastdds/dds/core/LoanableSequence.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/topic/TopicDescription.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <vector>

/// Samples on loan from a reader.
namespace ovra::plex::ps::internal
{

/// Loaned wire samples with their infos, index by index. Empty until a take or read fills them; must be
/// given back to that reader before they are destroyed.
template <class DdsType>
struct LoanedSamples {
    // Not defaulted: then GCC clears all members at once, by an instruction that takes some 30 ns to begin (a
    // read of one value: 1.20 instead of 1.16 of a bare one).
    LoanedSamples() {} // NOLINT(modernize-use-equals-default)

    dds::LoanableSequence<DdsType> data;
    dds::SampleInfoSeq infos;
    std::vector<std::int32_t> undecoded; ///< those whose memory holds something else than what was sent

    std::int32_t size() const { return infos.length(); }

    /// Whether a sample comes with a value: it has valid data, and could be decoded.
    bool hasValue(std::int32_t index) const
    {
        return infos[index].valid_data && std::ranges::find(undecoded, index) == undecoded.end();
    }

    /// Whether there is anything to give back.
    bool areOnLoan() const { return !data.has_ownership(); }
};

/// A number of samples as the reader's operations want it.
/// @param count 0: no limit.
inline std::int32_t sampleLimit(std::size_t count) noexcept
{
    constexpr std::size_t largest = std::numeric_limits<std::int32_t>::max();
    return count == 0 ? dds::LENGTH_UNLIMITED : static_cast<std::int32_t>(std::min(count, largest));
}

/// Logs at WARN how many samples a take or read has passed over.
[[gnu::cold]] inline void warnOf(const RefusedPayloads& refused, const dds::DataReader& reader)
{
    const auto* const topic = reader.get_topicdescription();
    LOG4CPLUS_WARN(log4cplus::Logger::getInstance("plexDdsBasePubSub"),
                   "Passed over " << refused.count() << " samples of topic " << topic->get_name()
                                  << " that can not be decoded as " << topic->get_type_name());
}

/// Fills loaned samples by a take or read, and marks those that could not be decoded: Fast DDS lends them out
/// like the others, with whatever their memory held before.
template <class DdsType, class Operation>
ReturnCode fill(LoanedSamples<DdsType>& samples, dds::DataReader& reader, Operation operation)
{
    const RefusedPayloads refused;
    const auto result = code(operation());
    if (refused.areAny()) {
        for (std::int32_t i = 0; i < samples.size(); ++i) {
            if (samples.infos[i].valid_data && refused.contain(&samples.data[i])) {
                samples.undecoded.push_back(i);
            }
        }
        warnOf(refused, reader);
    }
    return result;
}

/// Takes samples in any state. @param limit see sampleLimit().
template <class DdsType>
ReturnCode take(dds::DataReader& reader, LoanedSamples<DdsType>& samples, std::int32_t limit)
{
    return fill(samples, reader, [&] {
        return reader.take(samples.data, samples.infos, limit, dds::ANY_SAMPLE_STATE, dds::ANY_VIEW_STATE,
                           dds::ANY_INSTANCE_STATE);
    });
}

/// Takes at most one sample of an instance, in any state.
///
/// A reader that has never seen the instance answers BAD_PARAMETER; to the caller that is no data.
template <class DdsType>
ReturnCode takeInstance(dds::DataReader& reader, LoanedSamples<DdsType>& samples,
                        const InstanceHandle_t& instance)
{
    const auto result = fill(samples, reader, [&] {
        return reader.take_instance(samples.data, samples.infos, 1, instance, dds::ANY_SAMPLE_STATE,
                                    dds::ANY_VIEW_STATE, dds::ANY_INSTANCE_STATE);
    });
    return result == RETCODE_BAD_PARAMETER ? RETCODE_NO_DATA : result;
}

/// What a scope that cannot give its loan back logs.
inline constexpr const char* loanNotReturned =
    "Reader failed to return loaned data back to the middle-layer.";

/// The same for event reads with a limit, which word it with blanks.
inline constexpr const char* loanNotReturnedCounting =
    "Reader failed to return loaned data back to the middle - layer.";

/// What a refused return of a loan, logged in any case, leads to.
enum class OnRefusal {
    EndProcess, ///< a reader whose loan is stuck cannot go on
    GoOn
};

/// Gives loaned samples back when its scope is left.
template <class DdsType>
class LoanGuard
{
public:
    /// @param failureText logged, with the code behind it, when the reader refuses.
    LoanGuard(dds::DataReader& reader, LoanedSamples<DdsType>& samples, const log4cplus::Logger& logger,
              const char* failureText, OnRefusal onRefusal = OnRefusal::EndProcess)
        : reader_(reader)
        , samples_(samples)
        , logger_(logger)
        , failureText_(failureText)
        , onRefusal_(onRefusal)
    {
    }

    LoanGuard(const LoanGuard&) = delete;
    LoanGuard& operator=(const LoanGuard&) = delete;

    ~LoanGuard()
    {
        const auto result = code(reader_.return_loan(samples_.data, samples_.infos));
        if (result != RETCODE_OK) {
            LOG4CPLUS_ERROR(logger_, "errMsg:" << withCode(failureText_, result));
            if (onRefusal_ == OnRefusal::EndProcess) {
                std::terminate();
            }
        }
    }

private:
    dds::DataReader& reader_;
    LoanedSamples<DdsType>& samples_;
    const log4cplus::Logger& logger_;
    const char* failureText_;
    const OnRefusal onRefusal_;
};

/// Reads, without taking, one sample of each instance in the given states; a sample's instance states are
/// those of all samples of its instance.
///
/// @param makeGuard gives the guard that returns a loan of LoanedSamples<DdsType>.
/// @param visit is called with each loan of one sample.
/// @returns OK also when there is nothing to read.
template <class DdsType, class MakeGuard, class Visit>
ReturnCode readInstances(dds::DataReader& reader, dds::InstanceStateMask states, MakeGuard makeGuard,
                         Visit visit)
{
    InstanceHandle_t previous = dds::HANDLE_NIL;
    do {
        LoanedSamples<DdsType> samples;
        const auto result = fill(samples, reader, [&] {
            return reader.read_next_instance(samples.data, samples.infos, 1, previous, dds::ANY_SAMPLE_STATE,
                                             dds::ANY_VIEW_STATE, states);
        });
        if (result == RETCODE_NO_DATA) {
            return RETCODE_OK;
        }
        if (result != RETCODE_OK) {
            return result;
        }
        [[maybe_unused]] const auto guard = makeGuard(samples);
        visit(samples);
        previous = samples.infos[0].instance_handle;
    } while (previous.isDefined()); // a type without a key has one instance and no handle
    return RETCODE_OK;
}

} // namespace ovra::plex::ps::internal
