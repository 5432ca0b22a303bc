// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"

const ovra::plex::ps::TypeDescription* generated_dds_Description_keyed_Channel()
{
    static constexpr const char* definition = "module keyed {\n"
                                              "@appendable struct Channel {\n"
                                              "    @key @id(0) int32 number;\n"
                                              "    @id(1) double level;\n"
                                              "};\n"
                                              "};\n";
    static constexpr ovra::plex::ps::TypeDescription description{
        1,          "generated::dds_::keyed::Channel",
        "keyed",    "keyed::Channel",
        definition, 8202305103160227705U,
        false,      1};
    return &description;
}
