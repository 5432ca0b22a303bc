// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

namespace plex::test::callbacks
{

/// What runs a callback, and for whose value.
enum class Runs {
    Polled,           ///< poll() a polled callback
    Callback,         ///< a publisher of this process an asynchronous callback
    Notifier,         ///< … a notifier
    InstanceCallback, ///< an instance publisher of this process an asynchronous callback
    InstanceNotifier, ///< … a notifier
    RemoteCallback,   ///< a publisher of another process an asynchronous callback
    RemoteNotifier    ///< … a notifier
};

/// The values of property "dds.callback.thread".
enum class Thread { Transport, Own };

/// In what a callback runs.
struct Context {
    Runs runs;
    Thread thread;

    bool isRemote() const { return runs == Runs::RemoteCallback || runs == Runs::RemoteNotifier; }

    bool isOfInstance() const { return runs == Runs::InstanceCallback || runs == Runs::InstanceNotifier; }

    /// In one word, for example "notifier_remote_own".
    std::string word() const;
};

/// What must come of asking for something.
struct Outcome {
    enum class Kind { Works, Refused, Absent };

    Kind kind;
    const char* text = nullptr; ///< of the IllegalStateException that refuses; "<uri>" stands for the topic's
};

/// The columns of the table, each for several contexts.
enum class Column { Polled, SameProcess, OtherProcess, OwnThread };

Column columnOf(const Context& context);

/// Things that one may ask for inside a callback, with the same outcome in each column.
struct Row {
    const char* says;               ///< for the guide; null for what is no news to its readers
    std::vector<const char*> asked; ///< words of Asked.hpp
    std::array<Outcome, 4> outcomes;
};

/// All of it: whether something works inside a callback, or with which text it is refused.
const std::vector<Row>& table();

/// Writes the table as Markdown.
void printTable(std::ostream& out);

/// One entry of the table in one context.
struct Pair {
    Context context;
    const char* asked;
    Outcome outcome;

    /// In one word, for example "polled_own__subscribe_notifier".
    std::string word() const;

    friend std::ostream& operator<<(std::ostream& out, const Pair& pair);
};

/// Every pair there is: not all contexts have what some things are asked of.
std::vector<Pair> allPairs();

} // namespace plex::test::callbacks
