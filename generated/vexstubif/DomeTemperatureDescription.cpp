// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"

const ovra::plex::ps::TypeDescription* generated_dds_Description_vexstubif_DomeTemperature()
{
    static constexpr const char* definition = "module vexstubif {\n"
                                              "@appendable struct DomeTemperature {\n"
                                              "    @id(0) double temp;\n"
                                              "};\n"
                                              "};\n";
    static constexpr ovra::plex::ps::TypeDescription description{
        1,           "generated::dds_::vexstubif::DomeTemperature",
        "vexstubif", "vexstubif::DomeTemperature",
        definition,  612495135999984261U,
        false,       1};
    return &description;
}
