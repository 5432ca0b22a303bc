// SPDX-License-Identifier: Apache-2.0
// An adapter that lacks one thing, named by a macro. With none it is complete and compiles.
#include <plex/module/TopicAdapter.hpp>

#include <memory>
#include <string>
#include <utility>

namespace sample
{

using ovra::plex::icd::dds::Borrow;

class Value
#if !defined(LACKS_VALUE_ROOT)
    : public ovra::plex::ps::DataEntity<Value>
#endif
{
};

struct WireValue {
    WireValue() = default;
#if defined(LACKS_WIRE_COPY)
    WireValue(const WireValue&) = delete;
    WireValue& operator=(const WireValue&) = delete;
#endif
};

class WirePubSubType
#if !defined(LACKS_TOPIC_DATA_TYPE_BASE)
    : public ovra::plex::fastdds::TopicDataType
#endif
{
public:
    using Payload = ovra::plex::fastdds::SerializedPayload_t;
    using Handle = ovra::plex::fastdds::InstanceHandle_t;
    using Representation = ovra::plex::fastdds::DataRepresentationId;
    using SizeProvider = std::function<std::uint32_t()>;

#if defined(LACKS_TOPIC_DATA_TYPE_CONSTRUCTOR)
    explicit WirePubSubType(std::string name);
#endif

    virtual bool serialize(void*, Payload*) { return false; }

    virtual bool serialize(void*, Payload*, Representation) { return false; }

    virtual bool deserialize(Payload*, void*) { return false; }

    virtual SizeProvider getSerializedSizeProvider(void*) { return {}; }

    virtual SizeProvider getSerializedSizeProvider(void*, Representation) { return {}; }

    virtual void* createData() { return nullptr; }

    virtual void deleteData(void*) {}

    virtual bool getKey(void*, Handle*, bool) { return false; }

    virtual bool is_plain() const { return false; }
};

class Adapter
#if !defined(LACKS_INTERFACE)
    : public Value
#endif
{
public:
#if !defined(LACKS_WIRE_TYPE)
    using DdsType = WireValue;
#endif
#if !defined(LACKS_TOPIC_DATA_TYPE)
    using PubSubType = WirePubSubType;
#endif
#if !defined(LACKS_DEFAULT_CONSTRUCTOR)
    Adapter();
#endif
#if !defined(LACKS_BORROWING_CONSTRUCTOR)
    Adapter(WireValue&, Borrow);
#endif

#if !defined(LACKS_WIRE)
    WireValue& wire();
#endif
#if !defined(LACKS_CONST_WIRE)
    const WireValue& wire() const;
#endif
#if !defined(LACKS_ASSIGN)
    void assign(const WireValue&);
#endif
#if !defined(LACKS_COPY)
    static void copy(const Value&, Value&);
#endif

    virtual std::unique_ptr<Value> clone() const { return nullptr; }

    virtual bool keyEquals(const Value&) const { return false; }

    virtual std::unique_ptr<Value> cloneKey() const { return nullptr; }

    virtual bool hasKey() const { return false; }
};

} // namespace sample

static_assert(ovra::plex::ps::checkTopicAdapter<sample::Value, sample::Adapter>());
