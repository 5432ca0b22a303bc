// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Headers.hpp"
#include "Names.hpp"
#include "Template.hpp"

namespace ovra::plex::idl
{

namespace
{

std::string declarations(const std::vector<TopicPlan>& topics)
{
    std::string text;
    for (const TopicPlan& topic : topics) {
        text += filledBlock(R"(
PLEX_EXPORT ovra::plex::ps::Publisher<@scope@::@Type@>*
generated_dds_Publisher_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                 const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                 const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::Subscriber<@scope@::@Type@>*
generated_dds_Subscriber_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                  const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                  const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT ovra::plex::ps::MrvSubscriber<@scope@::@Type@>*
generated_dds_MrvSubscriber_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                     const ovra::plex::Uri& uri, const ovra::plex::ps::qos::QoSList& qos,
                                     const ovra::plex::Plex::Properties& properties);

PLEX_EXPORT @scope@::@Type@* generated_dds_DataEntity_@symbol@();

PLEX_EXPORT const ovra::plex::ps::TypeDescription* generated_dds_Description_@symbol@();

)",
                            {{"scope", topic.scope}, {"Type", topic.name}, {"symbol", topic.symbol}});
    }
    return text;
}

} // namespace

std::string factoriesHeader(const std::vector<TopicPlan>& topics)
{
    Headers headers{"<plex/Plex.hpp>", "<plex/module/TypeDescription.hpp>", "<memory>"};
    for (const TopicPlan& topic : topics) {
        headers.add("<" + topic.header + ">");
    }
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
/// What libplex-dds-@library@ exports under plain symbol names. The transport finds these by their pattern,
/// generated_dds_<Kind>_<module>_<Type>.
///
/// 1. The result is new, never null, and owned by the caller, who deletes it through its virtual destructor.
/// 2. `plex` must be the DDS transport's own instance; null or another is refused with PlexException.
/// 3. `uri` must be a DDS publish/subscribe URI; `qos` and `properties` may be empty, and null entries of
///    `qos` are skipped. All of them are copied.
/// 4. Exceptions pass to the caller: PlexException for bad arguments and failures of DDS,
///    std::runtime_error when memory for a value cannot be had. Nothing is left behind then.
/// 5. They may be called from several threads at once.
///
/// A description is what tools need to handle values of a type that they do not know; it is the library's, and
/// never null.
extern "C" {

@declarations@} // extern "C"
)",
                       {{"includes", headers.text()},
                        {"library", symbolOf(*topics.front().type->module)},
                        {"declarations", declarations(topics)}});
}

std::string factoriesSource(const TopicPlan& topic)
{
    const Headers headers{"\"" + topic.name + "Adapter.hpp\"", "\"Factories.hpp\"",
                          "<plex/ps/Factories.hpp>"};
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
@includes@
namespace ps = ovra::plex::ps;

ps::Publisher<@scope@::@Type@>*
generated_dds_Publisher_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                 const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                 const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsPublisher<@scope@::@Type@, generated::ddsimpl::@scope@::@Type@>(plex, uri, qos, properties);
}

ps::Subscriber<@scope@::@Type@>*
generated_dds_Subscriber_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                  const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                  const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsSubscriber<@scope@::@Type@, generated::ddsimpl::@scope@::@Type@>(plex, uri, qos, properties);
}

ps::MrvSubscriber<@scope@::@Type@>*
generated_dds_MrvSubscriber_@symbol@(const std::shared_ptr<ovra::plex::Plex>& plex,
                                     const ovra::plex::Uri& uri, const ps::qos::QoSList& qos,
                                     const ovra::plex::Plex::Properties& properties)
{
    return ps::createDdsMrvSubscriber<@scope@::@Type@, generated::ddsimpl::@scope@::@Type@>(plex, uri, qos, properties);
}

@scope@::@Type@* generated_dds_DataEntity_@symbol@()
{
    return new generated::ddsimpl::@scope@::@Type@();
}
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"symbol", topic.symbol}});
}

} // namespace ovra::plex::idl
