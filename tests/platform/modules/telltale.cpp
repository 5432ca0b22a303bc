// SPDX-License-Identifier: Apache-2.0
// A module library whose factories throw what they were called with.
#include "telltale.hpp"

#include <string>

namespace
{

using Plex = ovra::plex::Plex;
using ovra::plex::Uri;
using ovra::plex::ps::qos::QoSList;

[[noreturn]] void tell(const std::string& kind, const std::shared_ptr<Plex>& plex, const Uri& uri,
                       const QoSList& qos, const Plex::Properties& properties)
{
    std::string text = kind + " " + uri.string() + " qos:" + std::to_string(qos.size()) +
                       " plex:" + (plex ? "given" : "none");
    for (const auto& [key, value] : properties) {
        if (key.compare(0, 4, "dds.") != 0) {
            text += " " + key + "=" + value;
        }
    }
    throw ovra::plex::PlexException(text);
}

} // namespace

extern "C" {

PLEX_EXPORT void* generated_dds_Publisher_telltale_Value(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                                         const QoSList& qos,
                                                         const Plex::Properties& properties);
PLEX_EXPORT void* generated_dds_Subscriber_telltale_Value(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                                          const QoSList& qos,
                                                          const Plex::Properties& properties);
PLEX_EXPORT void* generated_dds_MrvSubscriber_telltale_Value(const std::shared_ptr<Plex>& plex,
                                                             const Uri& uri, const QoSList& qos,
                                                             const Plex::Properties& properties);
PLEX_EXPORT telltale::Value* generated_dds_DataEntity_telltale_Value();
}

void* generated_dds_Publisher_telltale_Value(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                             const QoSList& qos, const Plex::Properties& properties)
{
    tell("Publisher", plex, uri, qos, properties);
}

void* generated_dds_Subscriber_telltale_Value(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                              const QoSList& qos, const Plex::Properties& properties)
{
    tell("Subscriber", plex, uri, qos, properties);
}

void* generated_dds_MrvSubscriber_telltale_Value(const std::shared_ptr<Plex>& plex, const Uri& uri,
                                                 const QoSList& qos, const Plex::Properties& properties)
{
    tell("MrvSubscriber", plex, uri, qos, properties);
}

telltale::Value* generated_dds_DataEntity_telltale_Value()
{
    return new telltale::Value{42};
}
