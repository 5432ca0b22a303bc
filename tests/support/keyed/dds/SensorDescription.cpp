// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"

const ovra::plex::ps::TypeDescription* generated_dds_Description_keyed_Sensor()
{
    static constexpr const char* definition = "module keyed {\n"
                                              "@appendable struct Sensor {\n"
                                              "    @key @id(0) string<64> name;\n"
                                              "    @id(1) double value;\n"
                                              "};\n"
                                              "};\n";
    static constexpr ovra::plex::ps::TypeDescription description{1,          "generated::dds_::keyed::Sensor",
                                                                 "keyed",    "keyed::Sensor",
                                                                 definition, 1656751465307930504U,
                                                                 false,      1};
    return &description;
}
