// SPDX-License-Identifier: Apache-2.0
// What a module says of a topic type to those who handle its values without knowing the type: tools that show
// or record them.
//
// Ownership: the module's library holds it, and all that it points to, for as long as it is loaded. Nobody
// changes it, so that any number of threads may read it.
#pragma once

#include <cstdint>

namespace ovra::plex::ps
{

/// A topic type. All texts are UTF-8 and end with NUL; none is null.
struct TypeDescription {
    std::uint32_t version;  ///< of this struct: 1; a later one has more at its end
    const char* ddsName;    ///< of the type in DDS: "generated::dds_::dome::Shutter"
    const char* module;     ///< in which the type is defined: "dome"
    const char* name;       ///< in the definition: "dome::Shutter"
    const char* definition; ///< the type and all that it is made of, in OMG IDL 4.2; it includes nothing
    std::uint64_t definitionHash; ///< FNV-1a of the definition, without the NUL
    /// Whether in XCDR version 2 a delimiter stands before sequences and arrays of enums and bitmasks.
    bool delimitsEnumerations;
    std::uint8_t keyVersion; ///< 1 or 2: the version of XCDR of what key hashes are made of
};

} // namespace ovra::plex::ps
