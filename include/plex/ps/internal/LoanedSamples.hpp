// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/Entities.hpp>

#include <fastdds/dds/core/LoanableCollection.hpp>
#include <fastdds/dds/core/LoanableSequence.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Samples on loan from a reader.
namespace ovra::plex::ps::internal
{

/// Which samples a take or read gives (DDS 1.4, 2.2.2.5.1).
struct SampleStates {
    dds::SampleStateMask sample;
    dds::ViewStateMask view;
    dds::InstanceStateMask instance;
};

inline constexpr SampleStates anyState{dds::ANY_SAMPLE_STATE, dds::ANY_VIEW_STATE, dds::ANY_INSTANCE_STATE};

/// Those that have been read without being taken.
inline constexpr SampleStates alreadyRead{dds::READ_SAMPLE_STATE, dds::ANY_VIEW_STATE,
                                          dds::ANY_INSTANCE_STATE};

/// Those that operations wait for.
inline constexpr SampleStates unreadAlive{dds::NOT_READ_SAMPLE_STATE, dds::ANY_VIEW_STATE,
                                          dds::ALIVE_INSTANCE_STATE};

/// Loaned samples whatever their type, with their infos, index by index. Empty until a take or read fills
/// them; must be given back to that reader before they are destroyed.
class PLEX_EXPORT AnyLoanedSamples
{
public:
    AnyLoanedSamples(const AnyLoanedSamples&) = delete;
    AnyLoanedSamples& operator=(const AnyLoanedSamples&) = delete;

    std::int32_t size() const { return infos.length(); }

    /// Whether a sample comes with a value: it has valid data, and could be decoded.
    bool hasValue(std::int32_t index) const
    {
        return infos[index].valid_data && std::ranges::find(undecodable_, index) == undecodable_.end();
    }

    /// Whether there is anything to give back.
    bool areOnLoan() const { return !values_.has_ownership(); }

    /// Takes samples. @param limit see sampleLimit().
    fastdds::ReturnCode take(dds::DataReader& reader, std::int32_t limit,
                             const SampleStates& states = anyState);

    /// Takes at most one sample of an instance, in any state.
    ///
    /// A reader that has never seen the instance answers BAD_PARAMETER; to the caller that is no data.
    fastdds::ReturnCode takeInstance(dds::DataReader& reader, const fastdds::InstanceHandle_t& instance);

    /// Reads samples of the instance behind another, without taking them. @param limit see sampleLimit().
    fastdds::ReturnCode readNextInstance(dds::DataReader& reader, const fastdds::InstanceHandle_t& previous,
                                         std::int32_t limit, dds::InstanceStateMask states);

    fastdds::ReturnCode giveBack(dds::DataReader& reader);

    /// How many of the samples had never been read before.
    std::uint64_t countUnread() const;

    dds::SampleInfoSeq infos;

protected:
    /// @param values outlives this object.
    explicit AnyLoanedSamples(dds::LoanableCollection& values) : values_(values) {}

    ~AnyLoanedSamples() = default;

private:
    template <class Operation>
    fastdds::ReturnCode fillBy(dds::DataReader& reader, Operation operation);

    dds::LoanableCollection& values_;
    std::vector<std::int32_t> undecodable_; ///< those whose memory holds something else than what was sent
};

/// Loaned wire samples.
template <class DdsType>
class LoanedSamples : public AnyLoanedSamples
{
public:
    LoanedSamples() : AnyLoanedSamples(data) {}

    dds::LoanableSequence<DdsType> data;
};

/// Takes, step by step, what has arrived in a reader by the making of this object, and no more.
class PLEX_EXPORT ArrivedSamples
{
public:
    explicit ArrivedSamples(dds::DataReader& reader);

    /// Takes some of them. @returns NO_DATA where all are taken.
    fastdds::ReturnCode take(AnyLoanedSamples& samples);

private:
    dds::DataReader& reader_;
    fastdds::SampleTime begin_;
    std::uint64_t unread_; ///< how many of them have never been read and are to be taken yet
    bool all_ = false;
};

/// Takes the next unread sample into memory of the caller's. @returns whether there was one.
///
/// Samples that can not be decoded are passed over, and so are those that have been read.
PLEX_EXPORT bool takeNextSample(dds::DataReader& reader, void* sample, dds::SampleInfo& info);

/// A number of samples as the reader's operations want it.
/// @param count 0: no limit.
PLEX_EXPORT std::int32_t sampleLimit(std::size_t count) noexcept;

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
class PLEX_EXPORT LoanGuard
{
public:
    /// @param failureText logged, with the code behind it, when the reader refuses.
    LoanGuard(dds::DataReader& reader, AnyLoanedSamples& samples, const log4cplus::Logger& logger,
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
    ~LoanGuard();

private:
    void refused(fastdds::ReturnCode result) const;

    dds::DataReader& reader_;
    AnyLoanedSamples& samples_;
    const log4cplus::Logger& logger_;
    const char* failureText_;
    const OnRefusal onRefusal_;
};

/// Reads, without taking, samples of each instance in the given states, a loan for each; a sample's instance
/// states are those of all samples of its instance.
///
/// @param limit the samples of an instance; see sampleLimit().
/// @param makeGuard gives the guard that returns a loan of LoanedSamples<DdsType>.
/// @param visit is called with each loan.
/// @returns OK also when there is nothing to read.
template <class DdsType, class MakeGuard, class Visit>
fastdds::ReturnCode readInstances(dds::DataReader& reader, dds::InstanceStateMask states, std::int32_t limit,
                                  MakeGuard makeGuard, Visit visit)
{
    fastdds::InstanceHandle_t previous = dds::HANDLE_NIL;
    do {
        LoanedSamples<DdsType> samples;
        const auto result = samples.readNextInstance(reader, previous, limit, states);
        if (result == fastdds::RETCODE_NO_DATA) {
            return fastdds::RETCODE_OK;
        }
        if (result != fastdds::RETCODE_OK) {
            return result;
        }
        [[maybe_unused]] const auto guard = makeGuard(samples);
        visit(samples);
        previous = samples.infos[0].instance_handle;
    } while (previous.isDefined()); // a type without a key has one instance and no handle
    return fastdds::RETCODE_OK;
}

} // namespace ovra::plex::ps::internal
