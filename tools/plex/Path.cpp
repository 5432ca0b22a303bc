// SPDX-License-Identifier: Apache-2.0
#include "Path.hpp"

#include "Failure.hpp"
#include "Words.hpp"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace ovra::plex::tool
{

namespace
{

const idl::Type* memberType(const idl::StructType& type, const std::string& name)
{
    const auto members = allMembers(type);
    const auto found = std::ranges::find(members, name, [](const auto* member) { return member->name; });
    if (found != members.end()) {
        return (*found)->type;
    }
    std::vector<std::string> names;
    std::ranges::transform(members, std::back_inserter(names),
                           [](const auto* member) { return member->name; });
    throw Failure(ExitCode::Usage,
                  type.scopedName + " has no member \"" + name + "\"" + suggestion(name, names));
}

bool isNameCharacter(char c)
{
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

Path Path::parse(std::string_view text)
{
    Path path;
    path.text_ = text;
    const auto fail = [&] {
        return Failure(ExitCode::Usage, "\"" + path.text_ + "\" names no member: write it as name.name[0]");
    };
    bool isName = true; // what comes next, unless it is a bracket
    while (!text.empty()) {
        if (text.front() == '[' && !isName) {
            const auto end = text.find(']');
            std::size_t index = 0;
            const char* const last = text.data() + std::min(end, text.size());
            const auto read = std::from_chars(text.data() + 1, last, index);
            if (end == std::string_view::npos || read.ec != std::errc() || read.ptr != last) {
                throw fail();
            }
            path.steps_.emplace_back(index);
            text.remove_prefix(end + 1);
        } else if (text.front() == '.' && !isName) {
            text.remove_prefix(1);
            isName = true;
        } else {
            const auto* const end = std::ranges::find_if_not(text, isNameCharacter);
            if (!isName || end == text.begin()) {
                throw fail();
            }
            path.steps_.emplace_back(std::string(text.begin(), end));
            text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
            isName = false;
        }
    }
    if (isName) {
        throw fail();
    }
    return path;
}

const idl::Type* Path::typeIn(const idl::StructType& type) const
{
    const idl::Type* at = &type;
    std::size_t dimension = 0; // of the array that the path has led into
    for (const auto& step : steps_) {
        const idl::Type& here = resolved(*at);
        const auto* const name = std::get_if<std::string>(&step);
        const auto* const structure = idl::as<idl::StructType>(here);
        const auto* const sequence = idl::as<idl::SequenceType>(here);
        const auto* const array = idl::as<idl::ArrayType>(here);
        if (here.kind == idl::TypeKind::Union) {
            return nullptr;
        }
        if (name != nullptr && structure != nullptr) {
            at = memberType(*structure, *name);
        } else if (name == nullptr && sequence != nullptr) {
            at = sequence->element;
        } else if (name == nullptr && array != nullptr) {
            dimension = (dimension + 1) % array->dimensions.size();
            at = dimension == 0 ? array->element : at;
        } else {
            throw Failure(ExitCode::Usage, "\"" + text_ + "\" leads into " + toString(here) +
                                               ", which has no " +
                                               (name == nullptr ? "elements" : "members"));
        }
    }
    return at;
}

const Json* Path::find(const Json& value) const
{
    const Json* at = &value;
    for (const auto& step : steps_) {
        if (const auto* const name = std::get_if<std::string>(&step)) {
            const auto found = at->is_object() ? at->find(*name) : at->end();
            if (!at->is_object() || found == at->end()) {
                return nullptr;
            }
            at = &*found;
        } else {
            const auto index = std::get<std::size_t>(step);
            if (!at->is_array() || index >= at->size()) {
                return nullptr;
            }
            at = &(*at)[index];
        }
    }
    return at->is_null() ? nullptr : at;
}

} // namespace ovra::plex::tool
