// SPDX-License-Identifier: Apache-2.0
#include "RawReader.hpp"

#include "BoundedPool.hpp"
#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Output.hpp"
#include "Words.hpp"

#include <fastdds/dds/core/LoanableSequence.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>

#include <algorithm>
#include <iomanip>
#include <numeric>
#include <set>
#include <sstream>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

constexpr std::int32_t mostWaiting = 10'000;        ///< samples of an instance
constexpr std::size_t largestWaiting = 256'000'000; ///< bytes, of the samples of all readers
constexpr std::int32_t mostInstances = 10'000;
constexpr std::int32_t mostTaken = 4096; ///< at once, and then in the order in which they came
constexpr std::int32_t allocated = 100;  ///< samples at first

/// A reader that every writer matches that fits its type.
dds::DataReaderQos readerQos(const std::vector<fastdds::AnnouncedEndpoint>& writers)
{
    dds::DataReaderQos qos;
    qos.reliability().kind = dds::BEST_EFFORT_RELIABILITY_QOS;
    qos.durability().kind = dds::VOLATILE_DURABILITY_QOS;
    qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
    qos.resource_limits().max_samples = 0; // what follows limits them
    qos.resource_limits().max_samples_per_instance = mostWaiting;
    qos.resource_limits().max_instances = mostInstances;
    qos.resource_limits().allocated_samples = allocated;
    qos.reader_resource_limits().max_samples_per_read = mostTaken;
    qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE;
    qos.data_sharing().off();
    fastdds::representationOf(qos).m_value = {dds::XCDR_DATA_REPRESENTATION, dds::XCDR2_DATA_REPRESENTATION};
    if (!writers.empty()) {
        qos.ownership().kind = writers.front().ownership;
    }
    return qos;
}

/// All partitions; that without a name is no part of a pattern.
dds::SubscriberQos subscriberQos()
{
    dds::SubscriberQos qos;
    qos.partition().push_back("");
    qos.partition().push_back("*");
    return qos;
}

/// Bounds the memory of a program that does not get rid of what it takes, as it writes into a blocked pipe.
const std::shared_ptr<BoundedPool>& poolOfAllReaders()
{
    static const auto pool = std::make_shared<BoundedPool>(largestWaiting);
    return pool;
}

template <class Entity>
Entity* checked(Entity* entity, const char* what, const std::string& topic)
{
    if (entity == nullptr) {
        throw Failure(ExitCode::Failed, std::string("DDS makes no ") + what + " for topic \"" + topic + "\"");
    }
    return entity;
}

KeyHash keyOf(const fastdds::InstanceHandle_t& handle)
{
    KeyHash key{};
    for (std::size_t i = 0; i < key.size(); ++i) {
        key[i] = handle.value[static_cast<std::uint16_t>(i)];
    }
    return key;
}

std::int64_t nanosecondsOf(const fastdds::SampleTime& time)
{
    return time.seconds() < 0 ? 0 : time.to_ns();
}

Received receivedOf(const RawSample& sample, const dds::SampleInfo& info)
{
    return {sample,
            info.valid_data,
            info.instance_state == dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE,
            keyOf(info.instance_handle),
            info.sample_identity.writer_guid(),
            info.sample_identity.sequence_number().to64long(),
            nanosecondsOf(info.source_timestamp),
            nanosecondsOf(info.reception_timestamp)};
}

/// Gives back what was taken.
class Loan
{
public:
    explicit Loan(dds::DataReader& reader) : reader_(reader) {}

    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;

    ~Loan()
    {
        if (samples.length() > 0) {
            reader_.return_loan(samples, infos);
        }
    }

    /// @returns whether there was something to take.
    bool take() { return fastdds::code(reader_.take(samples, infos)) == fastdds::RETCODE_OK; }

    /// Places of samples in the order of their arrival: DDS sorts them by instance.
    std::vector<dds::LoanableCollection::size_type> inOrder() const
    {
        std::vector<dds::LoanableCollection::size_type> places(static_cast<std::size_t>(infos.length()));
        std::iota(places.begin(), places.end(), 0);
        std::ranges::stable_sort(places, {}, [&](auto place) {
            const auto& info = infos[place];
            return std::pair(info.reception_timestamp.to_ns(),
                             info.sample_identity.sequence_number().to64long());
        });
        return places;
    }

    dds::LoanableSequence<RawSample> samples;
    dds::SampleInfoSeq infos;

private:
    dds::DataReader& reader_;
};

/// Says that there are endpoints of a topic whose values are not looked at.
void remarkOthers(const std::string& topic, const std::string& type,
                  const std::vector<fastdds::AnnouncedEndpoint>& endpoints)
{
    std::set<std::string> others;
    for (const auto& endpoint : endpoints) {
        if (endpoint.type != type) {
            others.insert(endpoint.type);
        }
    }
    for (const auto& other : others) {
        std::ostringstream text;
        text << "topic " << std::quoted(topic) << " has type " << std::quoted(other)
             << " as well, which is left out; this is about " << std::quoted(type);
        remark(text.str());
    }
}

} // namespace

RawReader::RawReader(Domain& domain, const std::string& topic, bool keepsBytes)
    : participant_(domain.participant())
    , topic_(topic)
{
    const Scene scene = domain.scene();
    auto writers = scene.writersOf(topic);
    const auto readers = scene.readersOf(topic);
    if (writers.empty() && readers.empty()) {
        throw Failure(ExitCode::NotFound, "topic \"" + topic + "\" has gone");
    }
    const auto& model = writers.empty() ? readers.front() : writers.front();
    type_ = model.type;
    keyed_ = hasKey(model.guid);
    std::erase_if(writers, [&](const auto& writer) { return writer.type != type_; });
    create(writers, keepsBytes);
}

RawReader::~RawReader()
{
    subscriber_->delete_datareader(reader_);
    participant_.delete_subscriber(subscriber_);
    participant_.delete_topic(ddsTopic_);
}

void RawReader::keepBytes(bool keepsBytes)
{
    const auto type = participant_.find_type(type_); // it may have been registered for another reader
    static_cast<RawType*>(type.get())->keepBytes(keepsBytes);
}

void RawReader::create(const std::vector<fastdds::AnnouncedEndpoint>& writers, bool keepsBytes)
{
    dds::TypeSupport(new RawType(type_, keyed_, keepsBytes)).register_type(&participant_);
    ddsTopic_ = checked(participant_.create_topic(topic_, type_, dds::TOPIC_QOS_DEFAULT), "topic", topic_);
    subscriber_ = checked(participant_.create_subscriber(subscriberQos()), "subscriber", topic_);
    reader_ = checked(subscriber_->create_datareader(ddsTopic_, readerQos(writers), nullptr,
                                                     dds::StatusMask::all(), poolOfAllReaders()),
                      "reader", topic_);
    reader_->get_statuscondition().set_enabled_statuses(dds::StatusMask::data_available());
}

void RawReader::take(const std::function<void(const Received&)>& handle)
{
    while (!isInterrupted()) { // maybe there is always more
        Loan loan(*reader_);
        if (!loan.take()) {
            return;
        }
        for (const auto i : loan.inOrder()) {
            handle(receivedOf(loan.samples[i], loan.infos[i]));
        }
    }
}

RawReaders::RawReaders(Domain& domain, const std::vector<std::string>& topics, bool keepsBytes)
{
    for (const auto& topic : topics) {
        domain.settleUnless([&](const Scene& scene) { return !scene.writersOf(topic).empty(); });
        waitForTopic(domain, topic); // it may have readers only
        if (isInterrupted()) {
            return;
        }
        add(domain, topic, keepsBytes);
    }
}

RawReader& RawReaders::add(Domain& domain, const std::string& topic, bool keepsBytes)
{
    readers_.push_back(std::make_unique<RawReader>(domain, topic, keepsBytes));
    remarkOthers(topic, readers_.back()->type(), domain.scene().writersOf(topic));
    waitSet_.attach_condition(readers_.back()->condition());
    return *readers_.back();
}

void RawReaders::wait()
{
    dds::ConditionSeq active;
    waitSet_.wait(active, fastdds::Duration_t(
                              0, static_cast<std::uint32_t>(std::chrono::nanoseconds(longestWait).count())));
}

} // namespace ovra::plex::tool
