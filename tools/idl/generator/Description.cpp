// SPDX-License-Identifier: Apache-2.0
#include "CppTypes.hpp"
#include "Emitters.hpp"
#include "Hash.hpp"
#include "Headers.hpp"
#include "Template.hpp"

namespace ovra::plex::idl
{

namespace
{

/// A text of several lines as one literal, each of them on a line of its own.
std::string quotedLines(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t end = text.find('\n') + 1;
        result += "\n        " + quoted(text.substr(0, end));
        text.remove_prefix(end);
    }
    return result;
}

} // namespace

std::string descriptionSource(const TopicPlan& topic)
{
    const Headers headers{"\"Factories.hpp\""};
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
@includes@
const ovra::plex::ps::TypeDescription* generated_dds_Description_@symbol@()
{
    static constexpr const char* definition =@definition@;
    static constexpr ovra::plex::ps::TypeDescription description{
        1, @ddsName@, @module@, @name@, definition, @hash@U, @delimits@, @keyVersion@};
    return &description;
}
)",
                       {{"includes", headers.text()},
                        {"symbol", topic.symbol},
                        {"ddsName", quoted(topic.ddsName)},
                        {"module", quoted(topic.type->module->scopedName)},
                        {"name", quoted(topic.type->scopedName)},
                        {"definition", quotedLines(topic.definition)},
                        {"hash", std::to_string(hashOf(topic.definition))},
                        {"delimits", topic.rules.delimitsEnumerations ? "true" : "false"},
                        {"keyVersion", topic.rules.keyVersion == XcdrVersion::Xcdr1 ? "1" : "2"}});
}

} // namespace ovra::plex::idl
