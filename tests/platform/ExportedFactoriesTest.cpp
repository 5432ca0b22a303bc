// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"

#include <generated/vexstubif/Factories.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace plex::test
{

namespace
{

using ovra::plex::Plex;
using ovra::plex::Uri;

/// A middleware instance that is not the DDS transport's.
class ForeignPlex final : public Plex
{
protected:
    Factory findFactory(const std::string& /*kind*/, const std::type_info& /*valueType*/,
                        const std::string& /*scheme*/, const Properties& /*properties*/) override
    {
        return {};
    }
};

/// Every exported factory that takes a middleware instance.
const std::vector<std::function<void(const std::shared_ptr<Plex>&)>>& factories()
{
    static const auto calling = [](auto* factory) {
        return [factory](const std::shared_ptr<Plex>& plex) {
            delete factory(plex, Uri("dds+ps://0/topic"), {}, {});
        };
    };
    static const std::vector<std::function<void(const std::shared_ptr<Plex>&)>> all{
        calling(generated_dds_Publisher_vexstubif_AltAz),
        calling(generated_dds_Publisher_vexstubif_DomeTemperature),
        calling(generated_dds_Subscriber_vexstubif_AltAz),
        calling(generated_dds_Subscriber_vexstubif_DomeTemperature),
        calling(generated_dds_MrvSubscriber_vexstubif_AltAz),
        calling(generated_dds_MrvSubscriber_vexstubif_DomeTemperature)};
    return all;
}

} // namespace

TEST(ExportedFactory, RefusesToWorkWithoutAMiddlewareInstance)
{
    for (const auto& factory : factories()) {
        EXPECT_EQ(refusalOf([&] { factory(nullptr); }),
                  "No middleware instance given to a factory of the DDS transport");
    }
}

TEST(ExportedFactory, RefusesAnInstanceThatIsNotItsTransports)
{
    const std::shared_ptr<Plex> ofTheApplication = Plex::create();
    const std::shared_ptr<Plex> foreign = std::make_shared<ForeignPlex>();
    for (const auto& factory : factories()) {
        for (const auto& plex : {ofTheApplication, foreign}) {
            EXPECT_EQ(refusalOf([&] { factory(plex); }),
                      "The middleware instance given to a factory of the DDS transport is not its own");
        }
    }
}

TEST(ExportedDescription, NamesTheTypeInDdsAndInItsDefinition)
{
    const ovra::plex::ps::TypeDescription& description = *generated_dds_Description_vexstubif_AltAz();
    EXPECT_EQ(description.version, 1U);
    EXPECT_STREQ(description.ddsName, "generated::dds_::vexstubif::AltAz");
    EXPECT_STREQ(description.module, "vexstubif");
    EXPECT_STREQ(description.name, "vexstubif::AltAz");
    EXPECT_NE(std::string_view(description.definition).find("struct AltAz {\n    @id(0) double alt;\n"),
              std::string_view::npos);
    EXPECT_NE(description.definitionHash,
              generated_dds_Description_vexstubif_DomeTemperature()->definitionHash);
}

} // namespace plex::test
