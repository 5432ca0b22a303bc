// SPDX-License-Identifier: Apache-2.0
#include "Stack.hpp"

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <zmq.h>

namespace plex::bench
{

namespace
{

using Context = std::unique_ptr<void, int (*)(void*)>;
using Socket = std::unique_ptr<void, int (*)(void*)>;

void require(bool condition, const char* what)
{
    if (!condition) {
        throw std::runtime_error(std::string("ZeroMQ: ") + what + ": " + zmq_strerror(zmq_errno()));
    }
}

Socket makeSocket(void* context, int type)
{
    Socket socket(zmq_socket(context, type), zmq_close);
    require(socket != nullptr, "no socket");
    const int linger = 0;
    zmq_setsockopt(socket.get(), ZMQ_LINGER, &linger, sizeof(linger));
    return socket;
}

class ZeroMqSender final : public Sender
{
public:
    ZeroMqSender(void* context, bool reliable, const std::string& address)
        : socket_(makeSocket(context, reliable ? ZMQ_PUSH : ZMQ_PUB))
    {
        require(zmq_connect(socket_.get(), address.c_str()) == 0, "no connection");
        const int patience = 1000; // milliseconds
        zmq_setsockopt(socket_.get(), ZMQ_SNDTIMEO, &patience, sizeof(patience));
    }

    bool send(const Horizontal& value) override
    {
        return zmq_send(socket_.get(), &value, sizeof(value), 0) == sizeof(value);
    }

private:
    const Socket socket_;
};

/// Receives on a thread of its own, as ZeroMQ has no callbacks.
class ZeroMqReceiver final : public Receiver
{
public:
    ZeroMqReceiver(void* context, bool reliable, const std::string& address, Handler handler)
        : socket_(makeSocket(context, reliable ? ZMQ_PULL : ZMQ_SUB))
        , handler_(std::move(handler))
    {
        if (!reliable) {
            require(zmq_setsockopt(socket_.get(), ZMQ_SUBSCRIBE, "", 0) == 0, "no subscription");
        }
        require(zmq_bind(socket_.get(), address.c_str()) == 0, "no binding");
        const int patience = 100; // milliseconds, after which it looks whether it is to end
        zmq_setsockopt(socket_.get(), ZMQ_RCVTIMEO, &patience, sizeof(patience));
        thread_ = std::jthread([this](const std::stop_token& stop) { receive(stop); });
    }

private:
    void receive(const std::stop_token& stop)
    {
        Horizontal value;
        while (!stop.stop_requested()) {
            if (zmq_recv(socket_.get(), &value, sizeof(value), 0) == sizeof(value)) {
                handler_(value);
            }
        }
    }

    const Socket socket_;
    const Handler handler_;
    std::jthread thread_; ///< ends before the others go
};

class ZeroMqStack final : public Stack
{
public:
    explicit ZeroMqStack(const StackSettings& settings)
        : reliable_(settings.isReliable)
        , address_("ipc://" + settings.socketPath + "-")
        , context_(zmq_ctx_new(), zmq_ctx_term)
    {
        require(context_ != nullptr, "no context");
    }

    std::unique_ptr<Sender> sender(const std::string& topic) override
    {
        return std::make_unique<ZeroMqSender>(context_.get(), reliable_, addressOf(topic));
    }

    std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) override
    {
        return std::make_unique<ZeroMqReceiver>(context_.get(), reliable_, addressOf(topic),
                                                std::move(handler));
    }

private:
    std::string addressOf(std::string topic) const
    {
        std::ranges::replace(topic, '/', '-');
        return address_ + topic;
    }

    const bool reliable_;
    const std::string address_;
    const Context context_;
};

} // namespace

std::unique_ptr<Stack> makeZeroMqStack(const StackSettings& settings)
{
    return std::make_unique<ZeroMqStack>(settings);
}

} // namespace plex::bench
