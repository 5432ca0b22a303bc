// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "WaitFor.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace plex::test
{

/// This program once more, in a process of its own, with other arguments and a pipe to its standard input. It
/// does not outlive the object: it is to end with its input, and killed only if it does not, as one that is
/// killed leaves files in shared memory.
///
/// Threads: one at a time. Its output is this process's.
class ChildProcess
{
public:
    /// @param groups whether it, with the children of its own, is a group of processes, which goes as one.
    explicit ChildProcess(std::vector<std::string> arguments, bool groups = false) : groups_(groups)
    {
        std::array<int, 2> ends{};
        check(pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe");
        input_ = ends[1];
        const int failure = spawn(arguments, ends[0]);
        close(ends[0]);
        if (failure != 0) {
            close(input_);
        }
        check(failure, program);
    }

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ~ChildProcess()
    {
        endInput();
        if (!exitStatus(patience / 2)) {
            kill(SIGKILL);
            waitpid(id_, nullptr, 0);
        }
    }

    pid_t id() const { return id_; }

    /// Writes to its standard input. @returns whether there was somebody to read it.
    bool say(std::string_view text) const
    {
        return write(input_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

    /// Ends its standard input.
    void endInput()
    {
        if (input_ >= 0) {
            close(input_);
            input_ = -1;
        }
    }

    void kill(int signal) const { ::kill(groups_ ? -id_ : id_, signal); }

    /// Waits until it has ended. @returns its status as of waitpid(); empty when it has not ended in time.
    std::optional<int> exitStatus(std::chrono::milliseconds deadline)
    {
        waitFor([&] { return hasEnded(); }, deadline);
        return status_;
    }

private:
    static constexpr const char* program = "/proc/self/exe";

    static void check(int failure, const char* what)
    {
        if (failure != 0) {
            throw std::system_error(failure, std::generic_category(), what);
        }
    }

    int spawn(std::vector<std::string>& arguments, int input)
    {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, static_cast<short>(groups_ ? POSIX_SPAWN_SETPGROUP : 0));
        std::string name = program;
        std::vector<char*> pointers{name.data()};
        for (auto& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        const int failure = posix_spawn(&id_, program, &actions, &attributes, pointers.data(), environ);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        return failure;
    }

    bool hasEnded()
    {
        if (int status = 0; !status_ && waitpid(id_, &status, WNOHANG) == id_) {
            status_ = status;
        }
        return status_.has_value();
    }

    const bool groups_;
    pid_t id_ = 0;
    int input_ = -1;
    std::optional<int> status_;
};

} // namespace plex::test
