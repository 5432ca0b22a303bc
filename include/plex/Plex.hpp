// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/DataEntity.hpp>
#include <plex/DataEntityFactory.hpp>
#include <plex/DataEvent.hpp>
#include <plex/DataEventFilter.hpp>
#include <plex/Export.hpp>
#include <plex/InstancePublisher.hpp>
#include <plex/LoanedDataEntity.hpp>
#include <plex/MrvSubscriber.hpp>
#include <plex/PlexException.hpp>
#include <plex/Publisher.hpp>
#include <plex/QoS.hpp>
#include <plex/Subscriber.hpp>
#include <plex/Subscription.hpp>
#include <plex/Uri.hpp>

#include <map>
#include <memory>
#include <string>
#include <typeinfo>

namespace ovra::plex
{

/// The middleware instance: makes publishers, subscribers and values for the transport that a topic's URI
/// names.
///
/// An application needs one. Threads: all operations may be called from several threads at once.
/// Ownership: shared; publishers and subscribers keep alive what they need of it, so it may be dropped
/// before them.
///
/// The part of a URI's scheme before its '+' names the transport ("dds" in "dds+ps://0/dome/position"); the
/// namespace of the value type names the interface module (`vexstubif::AltAz`). Their libraries are loaded
/// on first use and stay loaded.
class PLEX_EXPORT Plex : public std::enable_shared_from_this<Plex>
{
public:
    /// Settings, looked up by key; docs/properties.md lists the keys.
    using Properties = std::map<std::string, std::string>;

    /// A new middleware instance.
    /// @param properties settings for everything made through it.
    static std::shared_ptr<Plex> create(const Properties& properties = {});

    Plex(const Plex&) = delete;
    Plex& operator=(const Plex&) = delete;
    virtual ~Plex();

    /// A publisher for values of type T; the caller owns it.
    ///
    /// @param properties settings for this publisher; they win over those given to create().
    /// @throws PlexException when the URI breaks a rule of its transport, a library or symbol is missing
    ///         (what() carries the loader's words), a property or QoS profile is bad, or the transport
    ///         fails. Nothing is left behind then.
    template <class T>
    std::unique_ptr<ps::Publisher<T>> createPublisher(const Uri& uri, const ps::qos::QoSList& qos = {},
                                                      const Properties& properties = {})
    {
        return createEntity<ps::Publisher<T>, T>("Publisher", uri, qos, properties);
    }

    /// A subscriber for values of type T; as createPublisher().
    template <class T>
    std::unique_ptr<ps::Subscriber<T>> createSubscriber(const Uri& uri, const ps::qos::QoSList& qos = {},
                                                        const Properties& properties = {})
    {
        return createEntity<ps::Subscriber<T>, T>("Subscriber", uri, qos, properties);
    }

    /// A most-recent-value subscriber for values of type T; as createPublisher().
    template <class T>
    std::unique_ptr<ps::MrvSubscriber<T>>
    createMrvSubscriber(const Uri& uri, const ps::qos::QoSList& qos = {}, const Properties& properties = {})
    {
        return createEntity<ps::MrvSubscriber<T>, T>("MrvSubscriber", uri, qos, properties);
    }

    /// A value of type T, all fields at their defaults, for the transport that a scheme names. The caller
    /// owns it.
    /// @throws PlexException when a library or symbol is missing.
    /// @throws std::runtime_error when memory for the value cannot be had.
    template <class T>
    std::unique_ptr<T> createDataEntity(const std::string& scheme = "dds+ps")
    {
        const Factory factory = findFactory("DataEntity", typeid(T), scheme, properties_);
        return std::unique_ptr<T>(reinterpret_cast<T* (*)()>(factory.function)());
    }

protected:
    /// A factory function that a module library exports, and the instance that it is to be called with.
    struct Factory {
        void (*function)();              ///< to be cast to its real signature
        std::shared_ptr<Plex> transport; ///< the transport's instance
    };

    /// @param properties settings for everything made through it.
    explicit Plex(Properties properties = {});

    /// The factory of a kind ("Publisher", …) for a value type.
    /// @param properties all settings that hold for the call.
    /// @throws PlexException when there is none.
    virtual Factory findFactory(const std::string& kind, const std::type_info& valueType,
                                const std::string& scheme, const Properties& properties) = 0;

private:
    friend class TransportSelector; // hands its calls on to findFactory() of another instance

    static std::string schemeOf(const Uri& uri);

    /// The properties of a call, and those of the instance that it does not give.
    Properties settings(const Properties& ofCall) const;

    template <class Entity, class T>
    std::unique_ptr<Entity> createEntity(const char* kind, const Uri& uri, const ps::qos::QoSList& qos,
                                         const Properties& properties)
    {
        using Function =
            Entity* (*)(const std::shared_ptr<Plex>&, const Uri&, const ps::qos::QoSList&, const Properties&);
        const Properties all = settings(properties);
        const Factory factory = findFactory(kind, typeid(T), schemeOf(uri), all);
        return std::unique_ptr<Entity>(
            reinterpret_cast<Function>(factory.function)(factory.transport, uri, qos, all));
    }

    const Properties properties_;
};

} // namespace ovra::plex
