// SPDX-License-Identifier: Apache-2.0
#include "Modules.hpp"

#include "Output.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <link.h>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>

namespace ovra::plex::tool
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view descriptionPrefix = "generated_dds_Description_";

/// The bytes of a file that claims to be a library: nothing of what it says is believed.
class ElfFile
{
public:
    explicit ElfFile(const fs::path& path)
    {
        std::error_code ignored;
        const auto size = fs::file_size(path, ignored);
        if (ignored || size > largest) {
            return;
        }
        bytes_.resize(size);
        std::ifstream file(path, std::ios::binary);
        file.read(bytes_.data(), static_cast<std::streamsize>(size));
        bytes_.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    }

    /// The names that it defines for others.
    std::vector<std::string_view> exportedNames() const
    {
        std::vector<std::string_view> names;
        const auto header = at<ElfW(Ehdr)>(0);
        if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
            header->e_ident[EI_CLASS] != (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32)) {
            return names;
        }
        for (std::size_t i = 0; i < header->e_shnum; ++i) {
            const auto section = at<ElfW(Shdr)>(header->e_shoff + (i * sizeof(ElfW(Shdr))));
            if (section && section->sh_type == SHT_DYNSYM) {
                const auto texts = at<ElfW(Shdr)>(header->e_shoff + (section->sh_link * sizeof(ElfW(Shdr))));
                addNames(*section, texts ? texts->sh_offset : bytes_.size(), names);
            }
        }
        return names;
    }

private:
    template <class T>
    std::optional<T> at(std::size_t offset) const
    {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(T)) {
            return std::nullopt;
        }
        T value{};
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return value;
    }

    std::string_view textAt(std::size_t offset) const
    {
        const std::string_view all(bytes_.data(), bytes_.size());
        return offset < all.size() ? all.substr(offset, all.find('\0', offset) - offset) : std::string_view();
    }

    void addNames(const ElfW(Shdr) & symbols, std::size_t texts, std::vector<std::string_view>& names) const
    {
        for (std::size_t at = 0; at + sizeof(ElfW(Sym)) <= symbols.sh_size; at += sizeof(ElfW(Sym))) {
            const auto symbol = this->at<ElfW(Sym)>(symbols.sh_offset + at);
            if (!symbol) {
                return; // it is truncated
            }
            if (symbol->st_shndx != SHN_UNDEF) {
                names.push_back(textAt(texts + symbol->st_name));
            }
        }
    }

    static constexpr std::uintmax_t largest = std::uintmax_t{1} << 30U;

    std::vector<char> bytes_;
};

std::vector<std::string> partsOf(const char* list)
{
    std::istringstream in(list == nullptr ? "" : list);
    std::vector<std::string> parts;
    for (std::string part; std::getline(in, part, ':');) {
        parts.push_back(part);
    }
    return parts;
}

/// A description that a library may have.
struct Candidate {
    fs::path library;
    std::string symbol;
    bool isLikely; ///< its name ends as the type's does
};

std::vector<Candidate> candidatesFor(const std::vector<fs::path>& directories, const std::string& typeName)
{
    const std::string ending = "_" + typeName.substr(typeName.rfind(':') + 1);
    std::vector<Candidate> candidates;
    for (const auto& directory : directories) {
        std::error_code ignored; // what can not be looked into holds nothing
        for (const auto& entry : fs::directory_iterator(directory, ignored)) {
            const std::string name = entry.path().filename();
            if (!name.starts_with("libplex-dds-") || !name.ends_with(".so")) {
                continue;
            }
            for (const auto& symbol : descriptionSymbols(entry.path())) {
                candidates.push_back({entry.path(), symbol, symbol.ends_with(ending)});
            }
        }
    }
    std::ranges::stable_partition(candidates, &Candidate::isLikely);
    return candidates;
}

const ps::TypeDescription* describe(const Candidate& candidate)
{
    void* const library = dlopen(candidate.library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const fault = dlerror(); // NOLINT(concurrency-mt-unsafe): of this thread, by POSIX
        remark("cannot look for types in " + candidate.library.string() + ": " + fault);
        return nullptr;
    }
    using Describe = const ps::TypeDescription* (*)();
    const auto function = reinterpret_cast<Describe>(dlsym(library, candidate.symbol.c_str()));
    return function == nullptr ? nullptr : function();
}

} // namespace

std::vector<fs::path> moduleDirectories(const std::vector<std::string>& first)
{
    auto names = first;
    const char* const ofLoader =
        std::getenv("LD_LIBRARY_PATH"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    std::ranges::move(partsOf(ofLoader), std::back_inserter(names));
    std::error_code ignored;
    const auto own = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const fs::path installed(PLEX_LIBRARY_DIRECTORY); // seen from the program
    for (const fs::path& directory :
         {own / installed, own / "../lib", fs::path("/usr/local/lib"), fs::path("/usr/lib")}) {
        names.push_back(directory);
    }
    std::vector<fs::path> directories;
    for (const auto& name : names) {
        const auto directory = fs::weakly_canonical(name.empty() ? "." : name, ignored);
        if (std::ranges::find(directories, directory) == directories.end()) {
            directories.push_back(directory);
        }
    }
    return directories;
}

std::vector<std::string> descriptionSymbols(const fs::path& library)
{
    std::vector<std::string> symbols;
    const ElfFile file(library);
    for (const auto name : file.exportedNames()) {
        if (name.starts_with(descriptionPrefix)) {
            symbols.emplace_back(name);
        }
    }
    return symbols;
}

const ps::TypeDescription* findDescription(const std::vector<fs::path>& directories,
                                           const std::string& typeName,
                                           const std::function<bool(const ps::TypeDescription&)>& isWanted)
{
    for (const auto& candidate : candidatesFor(directories, typeName)) {
        const auto* const description = describe(candidate);
        if (description != nullptr && isWanted(*description)) {
            return description;
        }
    }
    return nullptr;
}

} // namespace ovra::plex::tool
