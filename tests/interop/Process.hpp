// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "WaitFor.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace plex::test
{

/// A program in a process of its own, with pipes to its standard input and from its output. It does not
/// outlive the object.
class Process
{
public:
    /// @param environment settings on top of this process's own, each NAME=VALUE.
    explicit Process(std::vector<std::string> arguments, std::vector<std::string> environment = {})
    {
        for (char** own = environ; *own != nullptr; ++own) {
            environment.emplace_back(*own);
        }
        std::array<int, 2> ends{};
        std::array<int, 2> inputEnds{};
        check(pipe(ends.data()) == 0 ? 0 : errno, "pipe");
        output_ = ends[0];
        check(pipe2(inputEnds.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe");
        input_ = inputEnds[1];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, inputEnds[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        posix_spawn_file_actions_addclose(&actions, ends[1]);
        const int failure = posix_spawn(&id_, arguments.front().c_str(), &actions, nullptr,
                                        pointers(arguments).data(), pointers(environment).data());
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        close(inputEnds[0]);
        check(failure, arguments.front());
    }

    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    ~Process()
    {
        close(input_);
        close(output_);
        if (id_ > 0) {
            kill(id_, SIGKILL);
            waitpid(id_, nullptr, 0);
        }
    }

    pid_t id() const { return id_; }

    /// Writes to its standard input.
    void say(const std::string& text) const
    {
        check(write(input_, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : errno,
              "write");
    }

    /// The next line of its output that has not been returned yet; empty when there is none any more.
    /// @throws std::runtime_error when it does not come in time.
    std::string readLine()
    {
        readUntil([&](const std::string& text) { return text.find('\n', lineAt_) != std::string::npos; });
        const auto begin = lineAt_;
        lineAt_ = std::min(text_.find('\n', begin), text_.size() - 1) + 1;
        return text_.substr(begin, lineAt_ - begin - 1);
    }

    /// Reads on until what the program has written to its standard output fulfils a condition, or ends.
    /// @returns all that it has written so far.
    /// @throws std::runtime_error when that has not happened in time.
    template <class Condition>
    const std::string& readUntil(Condition condition)
    {
        const auto end = std::chrono::steady_clock::now() + patience + std::chrono::seconds(5);
        while (!condition(text_)) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            pollfd ready{output_, POLLIN, 0};
            if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) == 0) {
                throw std::runtime_error("the program takes too long; so far it said: " + text_);
            }
            std::array<char, 4096> buffer{};
            const auto count = ::read(output_, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            text_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text_;
    }

    /// Waits until the program has ended. @returns all that it has written to its standard output.
    /// @throws std::runtime_error when it does not end in time, or with another exit code than 0.
    std::string finish()
    {
        readUntil([](const std::string&) { return false; });
        int status = 0;
        waitpid(std::exchange(id_, 0), &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            throw std::runtime_error("the program failed with status " + std::to_string(status) +
                                     "; it said: " + text_);
        }
        return text_;
    }

private:
    static void check(int failure, const std::string& what)
    {
        if (failure != 0) {
            throw std::system_error(failure, std::generic_category(), what);
        }
    }

    /// As the C library wants texts: pointers, with a null behind them.
    static std::vector<char*> pointers(std::vector<std::string>& texts)
    {
        std::vector<char*> result;
        for (auto& text : texts) {
            result.push_back(text.data());
        }
        result.push_back(nullptr);
        return result;
    }

    pid_t id_ = 0;
    int input_ = -1;
    int output_ = -1;
    std::size_t lineAt_ = 0;
    std::string text_;
};

} // namespace plex::test
