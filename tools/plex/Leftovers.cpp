// SPDX-License-Identifier: Apache-2.0
#include "Leftovers.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ovra::plex::tool
{

namespace
{

/// An open file.
class Descriptor
{
public:
    explicit Descriptor(const std::string& path)
        : number_(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))
    {
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }

    int number() const { return number_; }

private:
    int number_;
};

/// The name of the file that a file of Fast DDS guards, or its own. @returns empty: it is no file of Fast
/// DDS.
std::string groupOf(std::string name)
{
    constexpr std::array<std::string_view, 3> prefixes{"fastdds_", "fastrtps_", "fast_datasharing_"};
    constexpr std::string_view semaphore = "sem.";
    if (name.starts_with(semaphore)) {
        name.erase(0, semaphore.size());
    }
    if (std::ranges::none_of(prefixes, [&](auto prefix) { return name.starts_with(prefix); })) {
        return {};
    }
    for (const std::string_view suffix : {"_el", "_sl", "_mutex"}) {
        if (name.ends_with(suffix)) {
            name.erase(name.size() - suffix.size());
        }
    }
    return name;
}

/// By the locks and the leases of the kernel, which knows all processes. Fast DDS locks files by flock(), and
/// maps others for writing. A lease for reading is granted where nobody does so.
Holder holderOf(const std::string& path)
{
    const Descriptor file(path);
    if (file.number() < 0) {
        return errno == ENOENT ? Holder::Nobody : Holder::Unknown;
    }
    if (flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? Holder::Living : Holder::Unknown;
    }
    flock(file.number(), LOCK_UN);
    fcntl(file.number(), F_SETSIG, SIGURG); // what comes to break the lease, and is ignored
    if (fcntl(file.number(), F_SETLEASE, F_RDLCK) != 0) {
        return errno == EAGAIN ? Holder::Living : Holder::Unknown;
    }
    fcntl(file.number(), F_SETLEASE, F_UNLCK);
    return Holder::Nobody;
}

/// Who holds files that belong together: it takes one.
Holder together(Holder one, Holder other)
{
    if (one == Holder::Living || other == Holder::Living) {
        return Holder::Living;
    }
    return one == Holder::Unknown || other == Holder::Unknown ? Holder::Unknown : Holder::Nobody;
}

std::vector<std::string> namesIn(const std::string& directory)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.c_str()), &closedir);
    if (stream != nullptr) {
        while (const auto* const entry =
                   readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): its own stream
            names.emplace_back(&entry->d_name[0]);
        }
    }
    std::ranges::sort(names);
    return names;
}

bool isLeftover(const SharedFiles& files)
{
    return files.holder == Holder::Nobody;
}

} // namespace

std::vector<SharedFiles> sharedFilesIn(const std::string& directory)
{
    constexpr std::uint64_t block = 512; // POSIX: unit of st_blocks
    std::map<std::string, SharedFiles> groups;
    for (const auto& name : namesIn(directory)) {
        const std::string group = groupOf(name);
        const std::string path = std::string(directory).append("/").append(name);
        struct stat status{};
        if (group.empty() || lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        auto& files = groups[group];
        files.name = group;
        files.files.insert(name == group ? files.files.begin() : files.files.end(), name);
        files.bytes += static_cast<std::uint64_t>(status.st_blocks) * block;
        files.holder = together(files.holder, holderOf(path));
    }
    std::vector<SharedFiles> result;
    std::ranges::transform(groups, std::back_inserter(result), [](auto& entry) { return entry.second; });
    return result;
}

std::vector<SharedFiles> leftoversOf(const std::vector<SharedFiles>& first,
                                     const std::vector<SharedFiles>& second)
{
    std::vector<SharedFiles> result;
    std::ranges::copy_if(second, std::back_inserter(result), [&](const SharedFiles& files) {
        const auto before = std::ranges::find(first, files.name, &SharedFiles::name);
        return isLeftover(files) && before != first.end() && isLeftover(*before);
    });
    return result;
}

std::vector<SharedFiles> remove(const std::vector<SharedFiles>& leftovers, const std::string& directory)
{
    std::vector<SharedFiles> result;
    std::ranges::copy_if(leftovers, std::back_inserter(result), [&](const SharedFiles& leftover) {
        return !std::ranges::all_of(leftover.files, [&](const std::string& name) {
            return unlink((directory + "/" + name).c_str()) == 0 || errno == ENOENT;
        });
    });
    return result;
}

} // namespace ovra::plex::tool
