// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/common/SharedLibrary.hpp>

#include <dlfcn.h>
#include <filesystem>

namespace ovra::plex
{

namespace
{

std::string loaderError()
{
    // dlerror() keeps its text per thread.
    const char* const text = dlerror(); // NOLINT(concurrency-mt-unsafe)
    return text != nullptr ? text : "unknown error of the dynamic loader";
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
        throw PlexException("Cannot load library " + path.string() + " for symbol " + wanted.symbol + ": " +
                            loaderError());
    }
    if (void* const handle = tryOpen(wanted.library)) {
        return handle;
    }
    throw PlexException("Cannot load library " + wanted.library + " for symbol " + wanted.symbol + ": " +
                        loaderError());
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
