// SPDX-License-Identifier: Apache-2.0
#include "Factories.hpp"

const ovra::plex::ps::TypeDescription* generated_dds_Description_vexstubif_AltAz()
{
    static constexpr const char* definition = "module vexstubif {\n"
                                              "@appendable struct AltAz {\n"
                                              "    @id(0) double alt;\n"
                                              "    @id(1) double az;\n"
                                              "};\n"
                                              "};\n";
    static constexpr ovra::plex::ps::TypeDescription description{
        1,           "generated::dds_::vexstubif::AltAz",
        "vexstubif", "vexstubif::AltAz",
        definition,  6264285743845191275U,
        false,       1};
    return &description;
}
