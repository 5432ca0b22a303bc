// SPDX-License-Identifier: Apache-2.0
#include "BareEntities.hpp"
#include "Stack.hpp"

#include <plex/dds/DdsPlex.hpp>

namespace plex::bench
{

namespace
{

class BareSender final : public Sender
{
public:
    BareSender(ParticipantPointer participant, const std::string& topic, const Profiles& profiles)
        : writer_(std::move(participant), topic, profiles)
    {
    }

    bool send(const Horizontal& value) override
    {
        value_.alt(value.alt);
        value_.az(value.az);
        return writer_.write(value_);
    }

private:
    BareWriter writer_;
    WireAltAz value_;
};

class BareReceiver final : public Receiver
{
public:
    BareReceiver(ParticipantPointer participant, const std::string& topic, const Profiles& profiles,
                 Handler handler)
        : listener_(Unpack{std::move(handler)})
        , reader_(std::move(participant), topic, profiles, &listener_)
    {
    }

private:
    struct Unpack {
        Handler handler;

        void operator()(const WireAltAz& value) const { handler({value.alt(), value.az()}); }
    };

    BareListener<Unpack> listener_;
    BareReader reader_;
};

/// A participant that the binding's transport has made, which also knows the profiles.
ParticipantPointer makeParticipant(const StackSettings& settings)
{
    return ovra::plex::DdsPlex({}).getDomainParticipant(
        ovra::plex::Uri("dds+ps://" + std::to_string(settings.domain) + "/any"),
        settings.profiles.properties(settings.profileFile));
}

class BareStack final : public Stack
{
public:
    explicit BareStack(const StackSettings& settings)
        : profiles_(settings.profiles)
        , participant_(makeParticipant(settings))
    {
    }

    std::unique_ptr<Sender> sender(const std::string& topic) override
    {
        return std::make_unique<BareSender>(participant_, topic, profiles_);
    }

    std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) override
    {
        return std::make_unique<BareReceiver>(participant_, topic, profiles_, std::move(handler));
    }

private:
    const Profiles profiles_;
    const ParticipantPointer participant_;
};

} // namespace

std::unique_ptr<Stack> makeBareStack(const StackSettings& settings)
{
    return std::make_unique<BareStack>(settings);
}

} // namespace plex::bench
