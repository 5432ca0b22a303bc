// SPDX-License-Identifier: Apache-2.0
#include "Stack.hpp"

#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

namespace plex::bench
{

namespace
{

using ovra::plex::Uri;
using vexstubif::AltAz;

class BindingSender final : public Sender
{
public:
    explicit BindingSender(std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> publisher)
        : publisher_(std::move(publisher))
        , value_(publisher_->createDataEntity())
    {
    }

    bool send(const Horizontal& value) override
    {
        value_->setAlt(value.alt);
        value_->setAz(value.az);
        try {
            publisher_->publish(*value_, std::chrono::milliseconds(0));
        } catch (const ovra::plex::PlexException&) {
            return false;
        }
        return true;
    }

private:
    const std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> publisher_;
    const std::shared_ptr<AltAz> value_;
};

class BindingReceiver final : public Receiver
{
public:
    BindingReceiver(std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber, const Handler& handler)
        : subscriber_(std::move(subscriber))
        , subscription_(
              subscriber_->subscribeAsync(ovra::plex::ps::DataEventFilter<AltAz>(),
                                          [handler](auto&, const ovra::plex::ps::DataEvent<AltAz>& event) {
                                              const AltAz& position = *event.getData();
                                              handler({position.getAlt(), position.getAz()});
                                          }))
    {
    }

private:
    const std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber_;
    const std::unique_ptr<ovra::plex::ps::Subscription> subscription_;
};

class BindingStack final : public Stack
{
public:
    BindingStack(const StackSettings& settings, const std::string& callbackThread)
        : domain_(settings.domain)
        , callbacks_{{"dds.callback.thread", callbackThread}}
        , plex_(ovra::plex::Plex::create(settings.profiles.properties(settings.profileFile)))
    {
    }

    std::unique_ptr<Sender> sender(const std::string& topic) override
    {
        return std::make_unique<BindingSender>(plex_->createPublisher<AltAz>(uri(topic)));
    }

    std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) override
    {
        return std::make_unique<BindingReceiver>(plex_->createSubscriber<AltAz>(uri(topic), {}, callbacks_),
                                                 handler);
    }

private:
    Uri uri(const std::string& topic) const
    {
        return Uri("dds+ps://" + std::to_string(domain_) + "/" + topic);
    }

    const unsigned domain_;
    const ovra::plex::Plex::Properties callbacks_;
    const std::shared_ptr<ovra::plex::Plex> plex_;
};

} // namespace

std::unique_ptr<Stack> makeBindingStack(const StackSettings& settings)
{
    return std::make_unique<BindingStack>(settings, "transport");
}

std::unique_ptr<Stack> makeBindingStackWithOwnThread(const StackSettings& settings)
{
    return std::make_unique<BindingStack>(settings, "own");
}

} // namespace plex::bench
