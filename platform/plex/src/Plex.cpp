// SPDX-License-Identifier: Apache-2.0
#include <plex/Plex.hpp>
#include <plex/Transport.hpp>
#include <plex/common/SharedLibrary.hpp>

#include <algorithm>
#include <mutex>

namespace ovra::plex
{

namespace
{

/// The part of a scheme before its '+', in lower case: URI schemes know no case (RFC 3986, 3.1).
std::string transportName(const std::string& scheme)
{
    std::string name = scheme.substr(0, scheme.find('+'));
    std::ranges::transform(name, name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return name;
}

} // namespace

/// The instance that an application holds: hands each call to the transport that the scheme names.
class TransportSelector final : public Plex
{
public:
    explicit TransportSelector(Properties properties) : Plex(std::move(properties)) {}

protected:
    Factory findFactory(const std::string& kind, const std::type_info& valueType, const std::string& scheme,
                        const Properties& properties) override
    {
        return transport(scheme)->findFactory(kind, valueType, scheme, properties);
    }

private:
    std::shared_ptr<Plex> transport(const std::string& scheme)
    {
        const std::string name = transportName(scheme);
        if (name.empty()) {
            throw PlexException("Uri names no transport: it has no scheme");
        }
        const std::lock_guard lock(mutex_);
        auto& known = transports_[name];
        if (!known) {
            known = open(name, scheme);
        }
        return known;
    }

    std::shared_ptr<Plex> open(const std::string& name, const std::string& scheme) const
    {
        try {
            const auto create = reinterpret_cast<CreateTransport>(
                loadFunction({"libplex-" + name + ".so", "plex_create_transport_" + name}, {}));
            return std::shared_ptr<Plex>(create(properties_));
        } catch (const PlexException& error) {
            throw PlexException("No transport for Uri scheme \"" + scheme + "\": " + error.what());
        }
    }

    std::mutex mutex_; ///< guards transports_; held while a transport library is loaded
    std::map<std::string, std::shared_ptr<Plex>> transports_;
};

std::shared_ptr<Plex> Plex::create(const Properties& properties)
{
    return std::make_shared<TransportSelector>(properties);
}

Plex::Plex(Properties properties) : properties_(std::move(properties)) {}

Plex::~Plex() = default;

std::string Plex::schemeOf(const Uri& uri)
{
    const auto scheme = uri.scheme();
    return {scheme.begin(), scheme.end()};
}

Plex::Properties Plex::settings(const Properties& ofCall) const
{
    Properties all = ofCall;
    all.insert(properties_.begin(), properties_.end());
    return all;
}

} // namespace ovra::plex
