// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/common/SharedLibrary.hpp>

#include <boost/core/demangle.hpp>

#include <dlfcn.h>
#include <filesystem>

namespace ovra::plex
{

namespace
{

/// What a symbol that a library was linked without is called in its source, as a sentence; empty where the
/// loader's words are of something else.
std::string explained(const std::string& words)
{
    const std::string undefined = "undefined symbol: ";
    const auto found = words.find(undefined);
    if (found == std::string::npos) {
        return {};
    }
    const auto begin = found + undefined.size();
    const auto symbol = words.substr(begin, words.find_first_of(", ", begin) - begin);
    return "; it was linked without " + boost::core::demangle(symbol.c_str());
}

std::string loaderError()
{
    // dlerror() keeps its text per thread.
    const char* const text = dlerror(); // NOLINT(concurrency-mt-unsafe)
    return text != nullptr ? text : "unknown error of the dynamic loader";
}

[[noreturn]] void failToLoad(const std::string& library, const LibrarySymbol& wanted)
{
    const std::string words = loaderError();
    throw PlexException("Cannot load library " + library + " for symbol " + wanted.symbol + ": " + words +
                        explained(words));
}

void* tryOpen(const std::string& path)
{
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

void* open(const LibrarySymbol& wanted, const std::vector<std::string>& directories)
{
    for (const auto& directory : directories) {
        const auto path = std::filesystem::path(directory) / wanted.library;
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored)) {
            continue;
        }
        if (void* const handle = tryOpen(path.string())) {
            return handle;
        }
        failToLoad(path.string(), wanted);
    }
    if (void* const handle = tryOpen(wanted.library)) {
        return handle;
    }
    failToLoad(wanted.library, wanted);
}

} // namespace

void (*loadFunction(const LibrarySymbol& wanted, const std::vector<std::string>& directories))()
{
    void* const handle = open(wanted, directories);
    void* const symbol = dlsym(handle, wanted.symbol.c_str());
    const std::string error = symbol == nullptr ? loaderError() : std::string();
    dlclose(handle); // only this call's share: RTLD_NODELETE keeps the library
    if (symbol == nullptr) {
        throw PlexException("Library " + wanted.library + " lacks symbol " + wanted.symbol + ": " + error);
    }
    return reinterpret_cast<void (*)()>(symbol);
}

} // namespace ovra::plex
