// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/fastdds/Generation.hpp>
#include <plex/module/CdrFields.hpp>
#include <plex/module/CdrMembers.hpp>
#include <plex/module/UndecodableSamples.hpp>

#include <fastcdr/FastBuffer.h>
#include <fastcdr/exceptions/Exception.h>
#include <fastcdr/exceptions/NotEnoughMemoryException.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace ovra::plex::ps
{

/// What a module says about a wire type to the topic data type over it.
struct PubSubTypeTraits {
    const char* name;          ///< full name, compared as a whole between processes
    std::uint32_t maxPayload;  ///< largest payload in bytes, encapsulation header included
    bool keyed;                ///< whether the type has key members
    std::uint32_t maxKeyBytes; ///< largest serialized key in bytes
    /// Whether no payload is larger than that; else it is what room is made for at first.
    bool bounded = true;
    /// The same of keys; where it does not hold, hashes are MD5 sums whatever their size.
    bool keyBounded = true;
    /// The version of XCDR of what key hashes are made of.
    eprosima::fastcdr::CdrVersion keyVersion = eprosima::fastcdr::CdrVersion::XCDRv1;
};

namespace cdr
{

/// What a module declares for its wire type besides Fast CDR's own calculate_serialized_size(), serialize()
/// and deserialize(): decoding in a given encoding, and the key.
template <class DdsType>
concept HasFunctionsOf =
    requires(Cdr& stream, DdsType& value, const DdsType& constValue, EncodingAlgorithmFlag encoding) {
        deserialize(stream, value, encoding);
        serialize_key(stream, constValue);
    };

/// Calls the module's deserialize() for an encoding, which a member of that name would hide.
template <class DdsType>
void decode(Cdr& stream, DdsType& value, EncodingAlgorithmFlag encoding)
{
    deserialize(stream, value, encoding);
}

} // namespace cdr

/// Logs at ERROR, under "plexDdsBasePubSub", that a value does not fit a size that its module states.
PLEX_EXPORT void reportTooSmall(const char* typeName, const char* what, std::uint32_t bytes);

/// A Fast DDS topic data type over a wire type with Fast CDR functions (calculate_serialized_size,
/// serialize, deserialize with and without an encoding, serialize_key).
///
/// Threads: any number at once, as Fast DDS requires. Ownership: the participant shares it.
template <class DdsType>
class PubSubType : public fastdds::TopicDataType
{
    static_assert(cdr::HasFunctionsOf<DdsType>,
                  "The wire type must have deserialize(Cdr&, DdsType&, EncodingAlgorithmFlag) and "
                  "serialize_key(Cdr&, const DdsType&) in the namespace eprosima::fastcdr");

    using Cdr = eprosima::fastcdr::Cdr;
    using CdrVersion = eprosima::fastcdr::CdrVersion;
    using EncodingAlgorithmFlag = eprosima::fastcdr::EncodingAlgorithmFlag;
    using InstanceHandle_t = fastdds::InstanceHandle_t;
    using SerializedPayload_t = fastdds::SerializedPayload_t;
    using DataRepresentationId = fastdds::DataRepresentationId;

public:
    using fastdds::TopicDataType::deserialize;
    using fastdds::TopicDataType::is_plain;
    using fastdds::TopicDataType::serialize;

    explicit PubSubType(const PubSubTypeTraits& traits)
        : keyBytes_(std::max(minKeyBytes, traits.maxKeyBytes))
        , maxKeyBytes_(traits.maxKeyBytes)
        , isBounded_(traits.bounded)
        , isKeyBounded_(traits.keyBounded)
        , keyVersion_(traits.keyVersion)
        , keyBuffer_(static_cast<unsigned char*>(std::calloc(keyBytes_, 1)))
    {
        if (!keyBuffer_) {
            throw std::bad_alloc();
        }
        setName(traits.name);
        m_typeSize = traits.maxPayload;
        m_isGetKeyDefined = traits.keyed;
    }

    /// Writes encapsulation header and value in XCDR version 1; see below.
    bool serialize(void* data, SerializedPayload_t* payload) override
    {
        return serialize(data, payload, eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
    }

    /// Writes the encapsulation header (RTPS 2.5, 10.2) and the value, native byte order, in version 1 for
    /// XCDR and in version 2 for any other representation; plain, delimited or with headers as the type is
    /// final, appendable or mutable.
    /// @returns false when the payload's buffer is too small; its length is not touched then. A buffer of the
    ///          type's largest size that is too small is logged at ERROR.
    bool serialize(void* data, SerializedPayload_t* payload, DataRepresentationId representation) override
    {
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(payload->data), payload->max_size);
        Cdr stream(buffer, Cdr::DEFAULT_ENDIAN, versionOf(representation));
        payload->encapsulation = encapsulationOf(stream);
        stream.set_encoding_flag(cdr::encodingOf(cdr::extensibilityOf<DdsType>, stream.get_cdr_version()));
        try {
            stream.serialize_encapsulation();
            stream << *static_cast<const DdsType*>(data);
            payload->length = static_cast<std::uint32_t>(stream.get_serialized_data_length());
        } catch (const eprosima::fastcdr::exception::NotEnoughMemoryException&) {
            if (isBounded_ && payload->max_size >= m_typeSize) {
                reportTooSmall(getName(), "payload", m_typeSize);
            }
            return false;
        } catch (const eprosima::fastcdr::exception::Exception&) {
            return false;
        }
        return true;
    }

    /// Reads a payload as its own header says it is encoded: plain CDR, plain CDR2 or delimited CDR2, or one
    /// of the two with headers of members where the type is mutable, in either byte order.
    /// @returns false when it is anything else or truncated; the value may then be partly written.
    bool deserialize(SerializedPayload_t* payload, void* data) override
    {
        if (decodePayload(*payload, *static_cast<DdsType*>(data))) {
            return true;
        }
        UndecodableSamples::add(data, {payload->data, payload->length});
        return false;
    }

    /// A function that gives the payload size in XCDR version 1, of types that may not be preallocated in the
    /// version that takes more: Fast DDS 2.14 makes so much room, whatever the representation. See below.
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data) override
    {
        auto first = getSerializedSizeProvider(data, eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
        if (fastdds::mayPreallocate(isBounded_, m_typeSize)) {
            return first;
        }
        auto second = getSerializedSizeProvider(data, eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION);
        return [first = std::move(first), second = std::move(second)] {
            return std::max(first(), second());
        };
    }

    /// A function that gives the payload size in bytes, header included; 0 when it cannot be computed. The
    /// value must outlive the function.
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data,
                                                             DataRepresentationId representation) override
    {
        return [data, representation]() -> std::uint32_t {
            try {
                eprosima::fastcdr::CdrSizeCalculator calculator(versionOf(representation));
                std::size_t alignment = 0;
                const auto size =
                    calculator.calculate_serialized_size(*static_cast<const DdsType*>(data), alignment);
                return static_cast<std::uint32_t>(size) + encapsulationBytes;
            } catch (const eprosima::fastcdr::exception::Exception&) {
                return 0;
            }
        };
    }

    void* createData() override { return new DdsType(); }

    void deleteData(void* data) override { delete static_cast<DdsType*>(data); }

    /// Computes the key hash of a value (RTPS 2.5, 9.6.4.8): its key members as big-endian plain CDR of
    /// the version that the module states, or the
    /// MD5 of that where asked for or where it may be longer than 16 bytes.
    /// @returns false, leaving the handle alone, when the type has no key or the value's cannot be encoded. A
    /// key
    ///          longer than the module states is logged at ERROR.
    bool getKey(void* data, InstanceHandle_t* handle, bool forceMd5 = false) override
    {
        if (!m_isGetKeyDefined) {
            return false;
        }
        const std::lock_guard lock(keyMutex_);
        if (!isKeyBounded_) {
            return hashOfAnyKey(*static_cast<const DdsType*>(data), *handle);
        }
        std::fill_n(keyBuffer_.get(), keyBytes_, static_cast<unsigned char>(0));
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(keyBuffer_.get()), maxKeyBytes_);
        Cdr stream(buffer, Cdr::BIG_ENDIANNESS, keyVersion_);
        stream.set_encoding_flag(keyEncoding());
        try {
            serialize_key(stream, *static_cast<const DdsType*>(data));
        } catch (const eprosima::fastcdr::exception::NotEnoughMemoryException&) {
            reportTooSmall(getName(), "key", maxKeyBytes_);
            return false;
        } catch (const eprosima::fastcdr::exception::Exception&) {
            return false;
        }
        if (forceMd5 || maxKeyBytes_ > minKeyBytes) {
            hash(keyBuffer_.get(), stream.get_serialized_data_length(), *handle);
        } else {
            std::copy_n(keyBuffer_.get(), minKeyBytes, &handle->value[0]);
        }
        return true;
    }

    bool is_bounded() const override { return isBounded_; }

    bool is_plain() const override { return false; }

    bool is_plain(DataRepresentationId /*representation*/) const override { return false; }

    bool construct_sample(void* /*memory*/) const override { return false; }

private:
    EncodingAlgorithmFlag keyEncoding() const
    {
        return cdr::encodingOf(cdr::Extensibility::Final, keyVersion_);
    }

    /// Of a key whose size nobody knows before. @returns false when it can not be encoded.
    bool hashOfAnyKey(const DdsType& value, InstanceHandle_t& handle)
    {
        constexpr std::size_t largest = 1U << 30U;
        for (std::size_t size = keyBytes_; size <= largest; size *= 2) {
            std::vector<char> memory(size); // zeros: Fast CDR leaves padding as it is
            eprosima::fastcdr::FastBuffer buffer(memory.data(), size);
            Cdr stream(buffer, Cdr::BIG_ENDIANNESS, keyVersion_);
            stream.set_encoding_flag(keyEncoding());
            try {
                serialize_key(stream, value);
            } catch (const eprosima::fastcdr::exception::NotEnoughMemoryException&) {
                continue;
            } catch (const eprosima::fastcdr::exception::Exception&) {
                return false;
            }
            hash(reinterpret_cast<const unsigned char*>(memory.data()), stream.get_serialized_data_length(),
                 handle);
            return true;
        }
        return false;
    }

    void hash(const unsigned char* key, std::size_t size, InstanceHandle_t& handle)
    {
        md5_.init();
        md5_.update(key, static_cast<unsigned int>(size));
        md5_.finalize();
        std::copy_n(md5_.digest, minKeyBytes, &handle.value[0]);
    }

    /// Decodes a payload. @returns whether it could.
    static bool decodePayload(SerializedPayload_t& payload, DdsType& value)
    {
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(payload.data), payload.length);
        Cdr stream(buffer, Cdr::DEFAULT_ENDIAN, CdrVersion::XCDRv2);
        try {
            stream.read_encapsulation();
            payload.encapsulation = encapsulationOf(stream);
            const auto encoding = stream.get_encoding_flag();
            const bool hasHeaders =
                encoding == EncodingAlgorithmFlag::PL_CDR || encoding == EncodingAlgorithmFlag::PL_CDR2;
            if (hasHeaders != (cdr::extensibilityOf<DdsType> == cdr::Extensibility::Mutable)) {
                return false;
            }
            cdr::decode(stream, value, encoding);
        } catch (const eprosima::fastcdr::exception::Exception&) {
            return false;
        }
        return true;
    }

    static constexpr std::uint32_t encapsulationBytes = 4;
    static constexpr std::uint32_t minKeyBytes = 16; ///< the size of a key hash

    struct Free {
        void operator()(void* memory) const noexcept { std::free(memory); }
    };

    static CdrVersion versionOf(DataRepresentationId representation) noexcept
    {
        return representation == eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION ? CdrVersion::XCDRv1
                                                                                  : CdrVersion::XCDRv2;
    }

    static std::uint16_t encapsulationOf(const Cdr& stream)
    {
        return stream.endianness() == Cdr::BIG_ENDIANNESS ? CDR_BE : CDR_LE;
    }

    std::mutex keyMutex_; ///< guards md5_ and keyBuffer_
    fastdds::MD5 md5_;
    const std::uint32_t keyBytes_;
    const std::uint32_t maxKeyBytes_;
    const bool isBounded_;
    const bool isKeyBounded_;
    const CdrVersion keyVersion_;
    const std::unique_ptr<unsigned char, Free> keyBuffer_;
};

} // namespace ovra::plex::ps
