// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/CdrMembers.hpp>
#include <plex/ps/internal/RefusedPayloads.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <fastcdr/FastBuffer.h>
#include <fastcdr/exceptions/Exception.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <new>

namespace ovra::plex::ps::internal
{

/// What a module says about a wire type to the topic data type over it.
struct PubSubTypeTraits {
    const char* name;          ///< full name, compared as a whole between processes
    std::uint32_t maxPayload;  ///< largest payload in bytes, encapsulation header included
    bool keyed;                ///< whether the type has key members
    std::uint32_t maxKeyBytes; ///< largest serialized key in bytes
};

/// Calls the module's deserialize() for an encoding, which a member of that name would hide.
template <class DdsType>
void decode(Cdr& cdr, DdsType& value, EncodingAlgorithmFlag encoding)
{
    deserialize(cdr, value, encoding);
}

/// A Fast DDS topic data type over a wire type with Fast CDR functions (calculate_serialized_size,
/// serialize, deserialize with and without an encoding, serialize_key).
///
/// Threads: any number at once, as Fast DDS requires. Ownership: the participant shares it.
template <class DdsType>
class PLEX_EXPORT PubSubType : public TopicDataType
{
public:
    using TopicDataType::deserialize;
    using TopicDataType::is_plain;
    using TopicDataType::serialize;

    explicit PubSubType(const PubSubTypeTraits& traits)
        : keyBytes_(std::max(minKeyBytes, traits.maxKeyBytes))
        , maxKeyBytes_(traits.maxKeyBytes)
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

    /// Writes the encapsulation header (RTPS 2.5, 10.2) and the value, native byte order, as plain CDR for
    /// XCDR and as delimited CDR2 for any other representation.
    /// @returns false when the payload's buffer is too small; its length is not touched then.
    bool serialize(void* data, SerializedPayload_t* payload, DataRepresentationId representation) override
    {
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(payload->data), payload->max_size);
        Cdr cdr(buffer, Cdr::DEFAULT_ENDIAN, versionOf(representation));
        payload->encapsulation = encapsulationOf(cdr);
        cdr.set_encoding_flag(appendableEncoding(cdr.get_cdr_version()));
        try {
            cdr.serialize_encapsulation();
            cdr << *static_cast<const DdsType*>(data);
            payload->length = static_cast<std::uint32_t>(cdr.get_serialized_data_length());
        } catch (const eprosima::fastcdr::exception::Exception&) {
            return false;
        }
        return true;
    }

    /// Reads a payload as its own header says it is encoded: plain CDR, plain CDR2 or delimited CDR2 in
    /// either byte order.
    /// @returns false when it is anything else or truncated; the value may then be partly written.
    bool deserialize(SerializedPayload_t* payload, void* data) override
    {
        if (decodes(*payload, *static_cast<DdsType*>(data))) {
            return true;
        }
        RefusedPayloads::add(data);
        return false;
    }

    /// A function that gives the payload size in XCDR version 1; see below.
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data) override
    {
        return getSerializedSizeProvider(data, eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
    }

    /// A function that gives the payload size in bytes, header included; 0 when it cannot be computed. The
    /// value must outlive the function.
    std::function<std::uint32_t()> getSerializedSizeProvider(void* data,
                                                             DataRepresentationId representation) override
    {
        return [data, representation]() -> std::uint32_t {
            try {
                CdrSizeCalculator calculator(versionOf(representation));
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

    /// Computes the key hash of a value (RTPS 2.5, 9.6.4.8): its key members as big-endian plain CDR, or the
    /// MD5 of that where asked for or where it may be longer than 16 bytes.
    /// @returns false, leaving the handle alone, when the type has no key or the value's cannot be encoded.
    bool getKey(void* data, InstanceHandle_t* handle, bool forceMd5 = false) override
    {
        if (!m_isGetKeyDefined) {
            return false;
        }
        const std::lock_guard lock(keyMutex_);
        std::fill_n(keyBuffer_.get(), keyBytes_, static_cast<unsigned char>(0));
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(keyBuffer_.get()), maxKeyBytes_);
        Cdr cdr(buffer, Cdr::BIG_ENDIANNESS, CdrVersion::XCDRv1);
        cdr.set_encoding_flag(EncodingAlgorithmFlag::PLAIN_CDR);
        try {
            serialize_key(cdr, *static_cast<const DdsType*>(data));
        } catch (const eprosima::fastcdr::exception::Exception&) {
            return false;
        }
        if (forceMd5 || maxKeyBytes_ > minKeyBytes) {
            md5_.init();
            md5_.update(keyBuffer_.get(), static_cast<unsigned int>(cdr.get_serialized_data_length()));
            md5_.finalize();
            std::copy_n(md5_.digest, minKeyBytes, &handle->value[0]);
        } else {
            std::copy_n(keyBuffer_.get(), minKeyBytes, &handle->value[0]);
        }
        return true;
    }

    bool is_bounded() const override { return true; }

    bool is_plain() const override { return false; }

    bool is_plain(DataRepresentationId /*representation*/) const override { return false; }

    bool construct_sample(void* /*memory*/) const override { return false; }

private:
    /// Decodes a payload. @returns whether it could.
    static bool decodes(SerializedPayload_t& payload, DdsType& value)
    {
        eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(payload.data), payload.length);
        Cdr cdr(buffer, Cdr::DEFAULT_ENDIAN, CdrVersion::XCDRv2);
        try {
            cdr.read_encapsulation();
            payload.encapsulation = encapsulationOf(cdr);
            const auto encoding = cdr.get_encoding_flag();
            if (encoding != EncodingAlgorithmFlag::PLAIN_CDR &&
                encoding != EncodingAlgorithmFlag::PLAIN_CDR2 &&
                encoding != EncodingAlgorithmFlag::DELIMIT_CDR2) {
                return false;
            }
            decode(cdr, value, encoding);
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

    static std::uint16_t encapsulationOf(const Cdr& cdr)
    {
        return cdr.endianness() == Cdr::BIG_ENDIANNESS ? CDR_BE : CDR_LE;
    }

    std::mutex keyMutex_; ///< guards md5_ and keyBuffer_
    MD5 md5_;
    const std::uint32_t keyBytes_;
    const std::uint32_t maxKeyBytes_;
    const std::unique_ptr<unsigned char, Free> keyBuffer_;
};

} // namespace ovra::plex::ps::internal
