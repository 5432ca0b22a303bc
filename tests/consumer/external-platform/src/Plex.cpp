// SPDX-License-Identifier: Apache-2.0
#include <plex/Plex.hpp>

#include <dlfcn.h>

namespace ovra::plex
{

/// DDS is the only transport here.
std::shared_ptr<Plex> Plex::create(const Properties& properties)
{
    void* const library = dlopen("libplex-dds.so", RTLD_NOW);
    void* const function = library == nullptr ? nullptr : dlsym(library, "newDdsPlex");
    if (function == nullptr) {
        throw PlexException(dlerror());
    }
    return std::shared_ptr<Plex>(reinterpret_cast<Plex* (*)(const Properties&)>(function)(properties));
}

Plex::Plex(Properties properties) : properties_(std::move(properties)) {}

Plex::~Plex() = default;

std::string Plex::schemeOf(const Uri& uri)
{
    const std::string text = uri.string();
    return text.substr(0, text.find(':'));
}

Plex::Properties Plex::settings(const Properties& ofCall) const
{
    Properties all = ofCall;
    all.insert(properties_.begin(), properties_.end());
    return all;
}

} // namespace ovra::plex
