// SPDX-License-Identifier: Apache-2.0
// The operations of DDS that the libraries call, defined by the test program; see FaultInjection.hpp. Each
// goes on to the real one unless a disturbance says otherwise. Signatures only: what they do is in call().
#include "FaultInjection.hpp"
#include "MadeEntities.hpp"

#include <fastdds/dds/core/condition/WaitSet.hpp>
#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <functional>
#include <memory>
#include <pthread.h>
#include <type_traits>
#include <utility>

namespace
{

using ovra::plex::fastdds::DdsReturnCode;
using ovra::plex::fastdds::DdsSample;
using ovra::plex::fastdds::Duration_t;
using ovra::plex::fastdds::InstanceHandle_t;
using ovra::plex::fastdds::IPayloadPool;
using ovra::plex::fastdds::ReturnCode;
using ovra::plex::fastdds::Time_t;
using plex::test::Disturbance;
using plex::test::disturbanceOf;

/// How the Itanium C++ ABI lays out a pointer to a member function that is not virtual.
struct MemberPointer {
    void* address;
    std::ptrdiff_t adjustment;
};

/// The real operation behind one that this program defines: the next of its symbol's name.
template <class Function>
Function realOf(Function own)
{
    auto pointer = std::bit_cast<MemberPointer>(own);
    Dl_info symbol{};
    const bool found = dladdr(pointer.address, &symbol) != 0 && symbol.dli_saddr == pointer.address;
    pointer.address = found ? dlsym(RTLD_NEXT, symbol.dli_sname) : nullptr;
    if (pointer.address == nullptr) {
        std::fputs("an interposed operation is not exported, or there is no real one behind it\n", stderr);
        std::abort();
    }
    return std::bit_cast<Function>(pointer);
}

/// One of several member functions of a name.
template <class Signature, class Class>
auto overload(Signature Class::* member)
{
    return member;
}

template <class Result>
Result failed(ReturnCode code)
{
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else if constexpr (std::is_same_v<Result, InstanceHandle_t>) {
        return eprosima::fastdds::dds::HANDLE_NIL;
    } else {
        return DdsReturnCode(static_cast<std::uint32_t>(code));
    }
}

void change(Disturbance& disturbance, eprosima::fastdds::dds::SampleInfoSeq& infos)
{
    for (std::int32_t i = 0; i < infos.length(); ++i) {
        disturbance.change(infos[i]);
    }
}

void change(Disturbance& disturbance, eprosima::fastdds::dds::SampleInfo* info)
{
    disturbance.change(*info);
}

template <class Other>
void change(Disturbance& /*disturbance*/, const Other& /*argument*/)
{
}

/// Calls the real operation, or does what a disturbance wants instead.
template <class Function, class Object, class... Arguments>
auto call(const char* operation, Function own, Object* object, Arguments&... arguments)
{
    using Result = std::invoke_result_t<Function, Object*, Arguments&...>;
    Disturbance* const disturbance = disturbanceOf(operation);
    const bool fails = disturbance != nullptr && disturbance->fails();
    if (fails && !disturbance->isCarriedOut()) {
        return failed<Result>(disturbance->code());
    }
    const Result result = std::invoke(realOf(own), object, arguments...);
    if (disturbance != nullptr) {
        (change(*disturbance, arguments), ...);
    }
    if constexpr (std::is_pointer_v<Result>) {
        plex::test::rememberMade(operation, result);
    }
    return fails ? failed<Result>(disturbance->code()) : result;
}

/// Found as the program starts, since looking for a symbol makes the loader forget its last error.
const auto realDlerror = reinterpret_cast<char* (*)()>(dlsym(RTLD_NEXT, "dlerror"));

} // namespace

/// The loader's words for its last error; no operation of DDS, but one that the libraries depend on likewise.
extern "C" char* dlerror() noexcept
{
    Disturbance* const disturbance = disturbanceOf("dlerror");
    return disturbance != nullptr && disturbance->fails() ? nullptr : realDlerror();
}

/// What std::mutex locks with. Looked for on first use, which comes before the program's own start.
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    using Lock = int (*)(pthread_mutex_t*);
    static constinit std::atomic<Lock> known = nullptr;
    Lock real = known;
    if (real == nullptr) {
        real = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
        known = real;
    }
    return plex::test::Unlockable::contains(mutex) ? EINVAL : real(mutex);
}

namespace eprosima::fastdds::dds
{

DomainParticipant* DomainParticipantFactory::create_participant(DomainId_t domain,
                                                                const DomainParticipantQos& qos,
                                                                DomainParticipantListener* listener,
                                                                const StatusMask& mask)
{
    using Signature = DomainParticipant*(DomainId_t, const DomainParticipantQos&, DomainParticipantListener*,
                                         const StatusMask&);
    return call("DomainParticipantFactory::create_participant",
                overload<Signature>(&DomainParticipantFactory::create_participant), this, domain, qos,
                listener, mask);
}

DdsReturnCode DomainParticipantFactory::delete_participant(DomainParticipant* participant)
{
    return call("DomainParticipantFactory::delete_participant", &DomainParticipantFactory::delete_participant,
                this, participant);
}

DdsReturnCode DomainParticipantFactory::load_XML_profiles_string(const char* data, std::size_t length)
{
    return call("DomainParticipantFactory::load_XML_profiles_string",
                &DomainParticipantFactory::load_XML_profiles_string, this, data, length);
}

DdsReturnCode DomainParticipant::register_type(TypeSupport type, const std::string& name)
{
    return call("DomainParticipant::register_type",
                overload<DdsReturnCode(TypeSupport, const std::string&)>(&DomainParticipant::register_type),
                this, type, name);
}

Topic* DomainParticipant::create_topic(const std::string& name, const std::string& type, const TopicQos& qos,
                                       TopicListener* listener, const StatusMask& mask)
{
    return call("DomainParticipant::create_topic", &DomainParticipant::create_topic, this, name, type, qos,
                listener, mask);
}

Topic* DomainParticipant::create_topic_with_profile(const std::string& name, const std::string& type,
                                                    const std::string& profile, TopicListener* listener,
                                                    const StatusMask& mask)
{
    return call("DomainParticipant::create_topic_with_profile", &DomainParticipant::create_topic_with_profile,
                this, name, type, profile, listener, mask);
}

DdsReturnCode DomainParticipant::delete_topic(const Topic* topic)
{
    return call("DomainParticipant::delete_topic", &DomainParticipant::delete_topic, this, topic);
}

Publisher* DomainParticipant::create_publisher(const PublisherQos& qos, PublisherListener* listener,
                                               const StatusMask& mask)
{
    using Signature = Publisher*(const PublisherQos&, PublisherListener*, const StatusMask&);
    return call("DomainParticipant::create_publisher",
                overload<Signature>(&DomainParticipant::create_publisher), this, qos, listener, mask);
}

Publisher* DomainParticipant::create_publisher_with_profile(const std::string& profile,
                                                            PublisherListener* listener,
                                                            const StatusMask& mask)
{
    return call("DomainParticipant::create_publisher_with_profile",
                &DomainParticipant::create_publisher_with_profile, this, profile, listener, mask);
}

DdsReturnCode DomainParticipant::delete_publisher(const Publisher* publisher)
{
    return call("DomainParticipant::delete_publisher", &DomainParticipant::delete_publisher, this, publisher);
}

Subscriber* DomainParticipant::create_subscriber(const SubscriberQos& qos, SubscriberListener* listener,
                                                 const StatusMask& mask)
{
    using Signature = Subscriber*(const SubscriberQos&, SubscriberListener*, const StatusMask&);
    return call("DomainParticipant::create_subscriber",
                overload<Signature>(&DomainParticipant::create_subscriber), this, qos, listener, mask);
}

Subscriber* DomainParticipant::create_subscriber_with_profile(const std::string& profile,
                                                              SubscriberListener* listener,
                                                              const StatusMask& mask)
{
    return call("DomainParticipant::create_subscriber_with_profile",
                &DomainParticipant::create_subscriber_with_profile, this, profile, listener, mask);
}

DdsReturnCode DomainParticipant::delete_subscriber(const Subscriber* subscriber)
{
    return call("DomainParticipant::delete_subscriber", &DomainParticipant::delete_subscriber, this,
                subscriber);
}

DataWriter* Publisher::create_datawriter(Topic* topic, const DataWriterQos& qos, DataWriterListener* listener,
                                         const StatusMask& mask, std::shared_ptr<IPayloadPool> pool)
{
    using Signature = DataWriter*(Topic*, const DataWriterQos&, DataWriterListener*, const StatusMask&,
                                  std::shared_ptr<IPayloadPool>);
    return call("Publisher::create_datawriter", overload<Signature>(&Publisher::create_datawriter), this,
                topic, qos, listener, mask, pool);
}

DataWriter* Publisher::create_datawriter_with_profile(Topic* topic, const std::string& profile,
                                                      DataWriterListener* listener, const StatusMask& mask,
                                                      std::shared_ptr<IPayloadPool> pool)
{
    return call("Publisher::create_datawriter_with_profile", &Publisher::create_datawriter_with_profile, this,
                topic, profile, listener, mask, pool);
}

DdsReturnCode Publisher::delete_datawriter(const DataWriter* writer)
{
    return call("Publisher::delete_datawriter", &Publisher::delete_datawriter, this, writer);
}

DdsReturnCode Publisher::wait_for_acknowledgments(const Duration_t& timeout)
{
    return call("Publisher::wait_for_acknowledgments", &Publisher::wait_for_acknowledgments, this, timeout);
}

DdsReturnCode DataWriter::write(DdsSample sample, const InstanceHandle_t& instance)
{
    return call("DataWriter::write",
                overload<DdsReturnCode(DdsSample, const InstanceHandle_t&)>(&DataWriter::write), this, sample,
                instance);
}

DdsReturnCode DataWriter::write_w_timestamp(DdsSample sample, const InstanceHandle_t& instance,
                                            const Time_t& time)
{
    using Signature = DdsReturnCode(DdsSample, const InstanceHandle_t&, const Time_t&);
    return call("DataWriter::write_w_timestamp", overload<Signature>(&DataWriter::write_w_timestamp), this,
                sample, instance, time);
}

InstanceHandle_t DataWriter::register_instance(DdsSample sample)
{
    return call("DataWriter::register_instance", &DataWriter::register_instance, this, sample);
}

DdsReturnCode DataWriter::get_key_value(void* sample, const InstanceHandle_t& instance)
{
    return call("DataWriter::get_key_value", &DataWriter::get_key_value, this, sample, instance);
}

DdsReturnCode DataWriter::wait_for_acknowledgments(const Duration_t& timeout)
{
    return call("DataWriter::wait_for_acknowledgments",
                overload<DdsReturnCode(const Duration_t&)>(&DataWriter::wait_for_acknowledgments), this,
                timeout);
}

DataReader* Subscriber::create_datareader(TopicDescription* topic, const DataReaderQos& qos,
                                          DataReaderListener* listener, const StatusMask& mask,
                                          std::shared_ptr<IPayloadPool> pool)
{
    using Signature = DataReader*(TopicDescription*, const DataReaderQos&, DataReaderListener*,
                                  const StatusMask&, std::shared_ptr<IPayloadPool>);
    return call("Subscriber::create_datareader", overload<Signature>(&Subscriber::create_datareader), this,
                topic, qos, listener, mask, pool);
}

DataReader* Subscriber::create_datareader_with_profile(TopicDescription* topic, const std::string& profile,
                                                       DataReaderListener* listener, const StatusMask& mask,
                                                       std::shared_ptr<IPayloadPool> pool)
{
    return call("Subscriber::create_datareader_with_profile", &Subscriber::create_datareader_with_profile,
                this, topic, profile, listener, mask, pool);
}

DdsReturnCode Subscriber::delete_datareader(const DataReader* reader)
{
    return call("Subscriber::delete_datareader", &Subscriber::delete_datareader, this, reader);
}

DdsReturnCode DataReader::set_listener(DataReaderListener* listener)
{
    return call("DataReader::set_listener",
                overload<DdsReturnCode(DataReaderListener*)>(&DataReader::set_listener), this, listener);
}

DdsReturnCode DataReader::set_listener(DataReaderListener* listener, const StatusMask& mask)
{
    return call("DataReader::set_listener with a mask",
                overload<DdsReturnCode(DataReaderListener*, const StatusMask&)>(&DataReader::set_listener),
                this, listener, mask);
}

DdsReturnCode DataReader::take(LoanableCollection& data, SampleInfoSeq& infos, std::int32_t limit,
                               SampleStateMask samples, ViewStateMask views, InstanceStateMask instances)
{
    return call("DataReader::take", &DataReader::take, this, data, infos, limit, samples, views, instances);
}

DdsReturnCode DataReader::take_next_sample(void* data, SampleInfo* info)
{
    return call("DataReader::take_next_sample", &DataReader::take_next_sample, this, data, info);
}

DdsReturnCode DataReader::take_instance(LoanableCollection& data, SampleInfoSeq& infos, std::int32_t limit,
                                        const InstanceHandle_t& instance, SampleStateMask samples,
                                        ViewStateMask views, InstanceStateMask instances)
{
    return call("DataReader::take_instance", &DataReader::take_instance, this, data, infos, limit, instance,
                samples, views, instances);
}

DdsReturnCode DataReader::read_next_instance(LoanableCollection& data, SampleInfoSeq& infos,
                                             std::int32_t limit, const InstanceHandle_t& previous,
                                             SampleStateMask samples, ViewStateMask views,
                                             InstanceStateMask instances)
{
    return call("DataReader::read_next_instance", &DataReader::read_next_instance, this, data, infos, limit,
                previous, samples, views, instances);
}

DdsReturnCode DataReader::return_loan(LoanableCollection& data, SampleInfoSeq& infos)
{
    return call("DataReader::return_loan", &DataReader::return_loan, this, data, infos);
}

ReadCondition* DataReader::create_readcondition(SampleStateMask samples, ViewStateMask views,
                                                InstanceStateMask instances)
{
    return call("DataReader::create_readcondition", &DataReader::create_readcondition, this, samples, views,
                instances);
}

DdsReturnCode DataReader::delete_readcondition(ReadCondition* condition)
{
    return call("DataReader::delete_readcondition", &DataReader::delete_readcondition, this, condition);
}

DdsReturnCode WaitSet::wait(ConditionSeq& active, const Duration_t timeout) const
{
    return call("WaitSet::wait", &WaitSet::wait, this, active, timeout);
}

DdsReturnCode WaitSet::attach_condition(const Condition& condition)
{
    return call("WaitSet::attach_condition", &WaitSet::attach_condition, this, condition);
}

} // namespace eprosima::fastdds::dds
