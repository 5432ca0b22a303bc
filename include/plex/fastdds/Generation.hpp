// SPDX-License-Identifier: Apache-2.0
#pragma once

// The one place that knows how the generations of Fast DDS differ. The rest is written to the names of
// generation 2.14 where the generations differ, and to Fast DDS's own names where they agree.

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

// The header above has said which generation it belongs to; another one's files may lie on the path too.
#if defined(FASTRTPS_VERSION_MAJOR)
#define PLEX_FASTDDS_GENERATION FASTRTPS_VERSION_MAJOR
#else
#define PLEX_FASTDDS_GENERATION FASTDDS_VERSION_MAJOR
#endif

#if PLEX_FASTDDS_GENERATION >= 3
#include <fastdds/dds/core/ReturnCode.hpp>
#include <fastdds/dds/core/Time_t.hpp>
#include <fastdds/rtps/attributes/ResourceManagement.hpp>
#include <fastdds/rtps/common/InstanceHandle.hpp>
#include <fastdds/rtps/common/SerializedPayload.hpp>
#include <fastdds/rtps/common/Time_t.hpp>
#include <fastdds/rtps/history/IPayloadPool.hpp>
#include <fastdds/utils/md5.hpp>
#else
#include <fastdds/rtps/common/CacheChange.h>
#include <fastdds/rtps/common/InstanceHandle.h>
#include <fastdds/rtps/common/SerializedPayload.h>
#include <fastdds/rtps/common/Time_t.h>
#include <fastdds/rtps/history/IPayloadPool.h>
#include <fastdds/rtps/resources/ResourceManagement.h>
#include <fastrtps/types/TypesBase.h>
#include <fastrtps/utils/md5.h>
#endif

// Whether what this Fast DDS sends through shared memory ends with bytes that were there before. Built with
// statistics, as by default, it ends each message with a submessage of them that is not for shared memory.
// 3.0 to 3.1.2 and 3.2.0 leave it out, but send its length along: the receiver takes what lies there for
// submessages. Pieces of older ones are among it, heartbeats with other numbers for instance.
#if PLEX_FASTDDS_GENERATION == 3 && defined(FASTDDS_STATISTICS) &&                                           \
    (FASTDDS_VERSION_MINOR == 0 || (FASTDDS_VERSION_MINOR == 1 && FASTDDS_VERSION_MICRO <= 2) ||             \
     (FASTDDS_VERSION_MINOR == 2 && FASTDDS_VERSION_MICRO == 0))
#define PLEX_FASTDDS_SENDS_LEFTOVERS
#endif

namespace ovra::plex::fastdds
{

/// Whether payloads of a type may be made at its largest size: not where that is more than a packet's.
constexpr bool mayPreallocate(bool isBounded, std::uint32_t largestSize) noexcept
{
    return isBounded && largestSize <= 65536;
}

/// A DDS return code (DDS 1.4, 2.2.1.1) as a plain number, the same in every generation.
using ReturnCode = std::int32_t;

inline constexpr ReturnCode RETCODE_OK = 0;
inline constexpr ReturnCode RETCODE_ERROR = 1;
inline constexpr ReturnCode RETCODE_BAD_PARAMETER = 3;
inline constexpr ReturnCode RETCODE_PRECONDITION_NOT_MET = 4;
inline constexpr ReturnCode RETCODE_TIMEOUT = 10;
inline constexpr ReturnCode RETCODE_NO_DATA = 11;

/// A value to be written, as the write operations of every generation accept it; they do not change it.
inline void* asSample(const void* sample) noexcept
{
    return const_cast<void*>(sample);
}

/// Computes the key hash of a serialized value by way of the value.
/// @returns false when the payload does not parse or the type cannot compute it.
template <class Type, class Payload, class Handle>
bool keyOfPayload(Type& type, Payload& payload, Handle& handle, bool forceMd5)
{
    const auto free = [&type](void* data) {
        type.deleteData(data);
    };
    const std::unique_ptr<void, decltype(free)> data(type.createData(), free);
    return type.deserialize(&payload, data.get()) && type.getKey(data.get(), &handle, forceMd5);
}

#if PLEX_FASTDDS_GENERATION >= 3

inline ReturnCode code(eprosima::fastdds::dds::ReturnCode_t value) noexcept
{
    return value;
}

using InstanceHandle_t = eprosima::fastdds::rtps::InstanceHandle_t;
using SerializedPayload_t = eprosima::fastdds::rtps::SerializedPayload_t;
using SampleTime = eprosima::fastdds::rtps::Time_t; ///< the type of SampleInfo's time stamps
using Time_t = eprosima::fastdds::dds::Time_t;      ///< the type of times and durations given to DDS
using Duration_t = eprosima::fastdds::dds::Duration_t;
using DataRepresentationId = eprosima::fastdds::dds::DataRepresentationId_t;
using MD5 = eprosima::fastdds::MD5;
using HistoryMemory = eprosima::fastdds::rtps::MemoryManagementPolicy;
using DdsReturnCode = eprosima::fastdds::dds::ReturnCode_t; ///< what DDS's own operations return
using DdsSample = const void*;                              ///< what its write operations take
using IPayloadPool = eprosima::fastdds::rtps::IPayloadPool;

inline bool isInfinite(const Duration_t& duration)
{
    return duration == eprosima::fastdds::dds::c_TimeInfinite;
}

/// Lets a writer offer just this representation.
inline void offer(eprosima::fastdds::dds::DataWriterQos& qos, DataRepresentationId representation,
                  bool /*mayPreallocate*/)
{
    qos.representation().m_value = {representation};
}

/// The data representations that a reader accepts.
inline auto& representationOf(eprosima::fastdds::dds::DataReaderQos& qos) noexcept
{
    return qos.representation();
}

/// A pool of payloads with the names of both generations.
class PayloadPool : public IPayloadPool
{
public:
    /// Sets data and max_size, at least to that size, for one owner. @returns false where no memory is to be
    /// had.
    virtual bool reserve(std::uint32_t size, SerializedPayload_t& payload) = 0;

    /// Makes another payload of the same memory, which has one owner more then.
    virtual void share(const SerializedPayload_t& payload, SerializedPayload_t& another) noexcept = 0;

    /// Clears the payload; with its last owner goes the memory.
    virtual void release(SerializedPayload_t& payload) noexcept = 0;

    bool get_payload(std::uint32_t size, SerializedPayload_t& payload) final
    {
        const bool isReserved = reserve(size, payload);
        payload.payload_owner = isReserved ? this : nullptr;
        return isReserved;
    }

    bool get_payload(const SerializedPayload_t& data, SerializedPayload_t& payload) final
    {
        if (data.payload_owner != this) {
            return get_payload(data.length, payload) && payload.copy(&data, true);
        }
        share(data, payload);
        payload.payload_owner = this;
        return true;
    }

    bool release_payload(SerializedPayload_t& payload) final
    {
        release(payload);
        payload.payload_owner = nullptr;
        return true;
    }
};

/// A topic data type with the names of both generations. Those of 2.14 are to be overridden; those of 3 come
/// down to them.
class TopicDataType : public eprosima::fastdds::dds::TopicDataType
{
public:
    /// The largest payload in bytes, encapsulation header included.
    std::uint32_t& m_typeSize = max_serialized_type_size;

    /// Whether the type has a key.
    bool& m_isGetKeyDefined = is_compute_key_provided;

    const char* getName() const { return get_name().c_str(); }

    void setName(const char* name) { set_name(name); }

    virtual bool serialize(void* data, SerializedPayload_t* payload) = 0;
    virtual bool serialize(void* data, SerializedPayload_t* payload, DataRepresentationId representation) = 0;
    virtual bool deserialize(SerializedPayload_t* payload, void* data) = 0;
    virtual std::function<std::uint32_t()> getSerializedSizeProvider(void* data) = 0;
    virtual std::function<std::uint32_t()> getSerializedSizeProvider(void* data,
                                                                     DataRepresentationId representation) = 0;
    virtual void* createData() = 0;
    virtual void deleteData(void* data) = 0;
    virtual bool getKey(void* data, InstanceHandle_t* handle, bool forceMd5 = false) = 0;
    virtual bool is_plain() const = 0;
    using eprosima::fastdds::dds::TopicDataType::is_plain;

    bool serialize(const void* data, SerializedPayload_t& payload,
                   DataRepresentationId representation) override
    {
        return serialize(asSample(data), &payload, representation);
    }

    bool deserialize(SerializedPayload_t& payload, void* data) override
    {
        return deserialize(&payload, data);
    }

    std::uint32_t calculate_serialized_size(const void* data, DataRepresentationId representation) override
    {
        return getSerializedSizeProvider(asSample(data), representation)();
    }

    void* create_data() override { return createData(); }

    void delete_data(void* data) override { deleteData(data); }

    bool compute_key(SerializedPayload_t& payload, InstanceHandle_t& handle, bool forceMd5 = false) override
    {
        return m_isGetKeyDefined && keyOfPayload(*this, payload, handle, forceMd5);
    }

    bool compute_key(const void* data, InstanceHandle_t& handle, bool forceMd5 = false) override
    {
        return getKey(asSample(data), &handle, forceMd5);
    }
};

#else

inline ReturnCode code(const eprosima::fastrtps::types::ReturnCode_t& value) noexcept
{
    return static_cast<ReturnCode>(value());
}

using InstanceHandle_t = eprosima::fastrtps::rtps::InstanceHandle_t;
using SerializedPayload_t = eprosima::fastrtps::rtps::SerializedPayload_t;
using SampleTime = eprosima::fastrtps::rtps::Time_t; ///< the type of SampleInfo's time stamps
using Time_t = eprosima::fastrtps::Time_t;           ///< the type of times and durations given to DDS
using Duration_t = eprosima::fastrtps::Duration_t;
using DataRepresentationId = eprosima::fastdds::dds::DataRepresentationId_t;
using MD5 = ::MD5;
using HistoryMemory = eprosima::fastrtps::rtps::MemoryManagementPolicy;
using DdsReturnCode = eprosima::fastrtps::types::ReturnCode_t; ///< what DDS's own operations return
using DdsSample = void*;                                       ///< what its write operations take
using IPayloadPool = eprosima::fastrtps::rtps::IPayloadPool;

inline bool isInfinite(const Duration_t& duration)
{
    return duration == eprosima::fastrtps::c_TimeInfinite;
}

/// Lets a writer offer just this representation.
///
/// Whatever the representation, this generation asks a type for the size of a value in XCDR version 1 and
/// makes room for that. Preallocated payloads have the type's largest size instead; they would bring data
/// sharing along, which never carries these types. Types of which that may not be answer with the size in the
/// larger version.
inline void offer(eprosima::fastdds::dds::DataWriterQos& qos, DataRepresentationId representation,
                  bool mayPreallocate)
{
    qos.representation().m_value = {representation};
    if (mayPreallocate && representation != eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION) {
        qos.endpoint().history_memory_policy = HistoryMemory::PREALLOCATED_MEMORY_MODE;
        qos.data_sharing().off();
    }
}

/// The data representations that a reader accepts.
inline auto& representationOf(eprosima::fastdds::dds::DataReaderQos& qos) noexcept
{
    return qos.type_consistency().representation;
}

/// A pool of payloads with the names of both generations.
class PayloadPool : public IPayloadPool
{
public:
    /// Sets data and max_size, at least to that size, for one owner. @returns false where no memory is to be
    /// had.
    virtual bool reserve(std::uint32_t size, SerializedPayload_t& payload) = 0;

    /// Makes another payload of the same memory, which has one owner more then.
    virtual void share(const SerializedPayload_t& payload, SerializedPayload_t& another) noexcept = 0;

    /// Clears the payload; with its last owner goes the memory.
    virtual void release(SerializedPayload_t& payload) noexcept = 0;

    bool get_payload(std::uint32_t size, eprosima::fastrtps::rtps::CacheChange_t& change) final
    {
        const bool isReserved = reserve(size, change.serializedPayload);
        change.payload_owner(isReserved ? this : nullptr);
        return isReserved;
    }

    bool get_payload(SerializedPayload_t& data, IPayloadPool*& owner,
                     eprosima::fastrtps::rtps::CacheChange_t& change) final
    {
        if (owner != this) {
            return get_payload(data.length, change) && change.serializedPayload.copy(&data, true);
        }
        share(data, change.serializedPayload);
        change.payload_owner(this);
        return true;
    }

    bool release_payload(eprosima::fastrtps::rtps::CacheChange_t& change) final
    {
        release(change.serializedPayload);
        change.payload_owner(nullptr);
        return true;
    }
};

/// A topic data type with the names of both generations. Those of 2.14 are to be overridden; those of 3 come
/// down to them.
class TopicDataType : public eprosima::fastdds::dds::TopicDataType
{
public:
    using eprosima::fastdds::dds::TopicDataType::deserialize;
    using eprosima::fastdds::dds::TopicDataType::is_plain;
    using eprosima::fastdds::dds::TopicDataType::serialize;

    virtual bool serialize(const void* data, SerializedPayload_t& payload,
                           DataRepresentationId representation)
    {
        return serialize(asSample(data), &payload, representation);
    }

    virtual bool deserialize(SerializedPayload_t& payload, void* data) { return deserialize(&payload, data); }

    virtual std::uint32_t calculate_serialized_size(const void* data, DataRepresentationId representation)
    {
        return getSerializedSizeProvider(asSample(data), representation)();
    }

    virtual void* create_data() { return createData(); }

    virtual void delete_data(void* data) { deleteData(data); }

    virtual bool compute_key(SerializedPayload_t& payload, InstanceHandle_t& handle, bool forceMd5 = false)
    {
        return m_isGetKeyDefined && keyOfPayload(*this, payload, handle, forceMd5);
    }

    virtual bool compute_key(const void* data, InstanceHandle_t& handle, bool forceMd5 = false)
    {
        return getKey(asSample(data), &handle, forceMd5);
    }
};

#endif

/// An element of an XML profile that this generation of Fast DDS calls otherwise than another one.
struct RenamedElement {
    const char* elsewhere;
    const char* here;
};

inline constexpr auto renamedProfileElements = std::to_array<RenamedElement>({
#if PLEX_FASTDDS_GENERATION >= 3
    {"expectsInlineQos", "expects_inline_qos"},
    {"heartbeatPeriod", "heartbeat_period"},
    {"heartbeatResponseDelay", "heartbeat_response_delay"},
    {"initialAcknackDelay", "initial_acknack_delay"},
    {"initialHeartbeatDelay", "initial_heartbeat_delay"},
    {"nackResponseDelay", "nack_response_delay"},
    {"nackSupressionDuration", "nack_supression_duration"},
#else
    {"expects_inline_qos", "expectsInlineQos"},
    {"heartbeat_period", "heartbeatPeriod"},
    {"heartbeat_response_delay", "heartbeatResponseDelay"},
    {"initial_acknack_delay", "initialAcknackDelay"},
    {"initial_heartbeat_delay", "initialHeartbeatDelay"},
    {"nack_response_delay", "nackResponseDelay"},
    {"nack_supression_duration", "nackSupressionDuration"},
#endif
});

} // namespace ovra::plex::fastdds
