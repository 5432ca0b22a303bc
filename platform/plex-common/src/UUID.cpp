// SPDX-License-Identifier: Apache-2.0
#include <plex/common/UUID.hpp>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

namespace ovra::plex::ps::detail
{

std::string newUUID()
{
    static thread_local boost::uuids::random_generator generate;
    return boost::uuids::to_string(generate());
}

} // namespace ovra::plex::ps::detail
