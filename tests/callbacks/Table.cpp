// SPDX-License-Identifier: Apache-2.0
#include "Table.hpp"

#include "Asked.hpp"

#include <algorithm>
#include <ostream>

namespace plex::test::callbacks
{

namespace
{

constexpr Outcome works{Outcome::Kind::Works};
constexpr Outcome absent{Outcome::Kind::Absent};

constexpr Outcome refused(const char* text)
{
    return {Outcome::Kind::Refused, text};
}

constexpr Outcome pollRefused = refused("poll can not be called inside a callback that it serves");
constexpr Outcome makingRefused = refused(
    "Publishers and subscribers can not be made inside an asynchronous callback on a thread of DDS, but with "
    "property dds.callback.thread=own Uri:<uri>");

constexpr std::array<const char*, 4> columns = {
    "polled callback",
    "asynchronous, value of the same process",
    "asynchronous, value of another process",
    "asynchronous, `dds.callback.thread` = `own`",
};

constexpr Runs allRuns[] = {Runs::Polled,           Runs::Callback,         Runs::Notifier,
                            Runs::InstanceCallback, Runs::InstanceNotifier, Runs::RemoteCallback,
                            Runs::RemoteNotifier};

bool applies(const Asked& asked, const Context& context)
{
    switch (asked.needs) {
    case Needs::LocalPublisher:
        return !context.isRemote();
    case Needs::LocalAsync:
        return !context.isRemote() && context.runs != Runs::Polled;
    case Needs::InstancePublisher:
        return context.isOfInstance();
    case Needs::Nothing:
        break;
    }
    return true;
}

const Outcome& outcomeIn(const Row& row, Column column)
{
    return row.outcomes[static_cast<std::size_t>(column)];
}

void appendPairs(std::vector<Pair>& pairs, const Row& row, const Context& context)
{
    const Outcome& outcome = outcomeIn(row, columnOf(context));
    for (const char* word : row.asked) {
        if (outcome.kind != Outcome::Kind::Absent && applies(askedOf(word), context)) {
            pairs.push_back({context, word, outcome});
        }
    }
}

/// The texts of refusals in the order in which the table shows them.
std::vector<std::string> refusals()
{
    std::vector<std::string> texts;
    for (const Row& row : table()) {
        for (const Outcome& outcome : row.outcomes) {
            if (outcome.kind == Outcome::Kind::Refused &&
                std::ranges::find(texts, outcome.text) == texts.end()) {
                texts.emplace_back(outcome.text);
            }
        }
    }
    return texts;
}

std::string cell(const Outcome& outcome)
{
    switch (outcome.kind) {
    case Outcome::Kind::Refused: {
        const auto texts = refusals();
        return "**refused** (" + std::to_string(std::ranges::find(texts, outcome.text) - texts.begin() + 1) +
               ")";
    }
    case Outcome::Kind::Absent:
        return "–";
    case Outcome::Kind::Works:
        break;
    }
    return "works";
}

} // namespace

std::string Context::word() const
{
    static constexpr const char* runsWords[] = {
        "polled",          "callback",       "notifier", "instance_callback", "instance_notifier",
        "remote_callback", "remote_notifier"};
    return std::string(runsWords[static_cast<int>(runs)]) + (thread == Thread::Own ? "_own" : "_transport");
}

Column columnOf(const Context& context)
{
    if (context.runs == Runs::Polled) {
        return Column::Polled;
    }
    if (context.thread == Thread::Own) {
        return Column::OwnThread;
    }
    return context.isRemote() ? Column::OtherProcess : Column::SameProcess;
}

const std::vector<Row>& table()
{
    static const std::vector<Row> rows = {
        {"subscribe, in any of the three ways",
         {"subscribe_polled", "subscribe_callback", "subscribe_notifier"},
         {works, works, works, works}},
        {"close or drop the own subscription; subscribe anew with its filter",
         {"close_own_subscription", "drop_own_subscription", "replace_own_subscription"},
         {works, works, works, works}},
        {"close or drop another subscription of the same subscriber, of any kind",
         {"close_polled_subscription", "drop_polled_subscription", "close_callback_subscription",
          "drop_callback_subscription", "close_notifier_subscription", "drop_notifier_subscription"},
         {works, works, works, works}},
        {"close or drop a subscription of another subscriber",
         {"close_foreign_subscription", "drop_foreign_subscription"},
         {works, works, works, works}},
        {"`poll()` of the subscriber whose callback it is", {"poll_own"}, {pollRefused, works, works, works}},
        {"`poll()` of another subscriber", {"poll_other"}, {works, works, works, works}},
        {"read, values or events, from the own or another subscriber; ask for the most recent value",
         {"read_own", "read_other", "read_events_own", "read_events_other", "read_most_recent"},
         {works, works, works, works}},
        {"take or give back a loan of the own or another subscriber",
         {"loan_own", "loan_other", "return_last_loan"},
         {works, works, works, works}},
        {"publish to the same topic",
         {"publish_same_topic", "publish_same_topic_instance"},
         {works, works, works, works}},
        {"publish with the publisher of the value",
         {"publish_same_publisher"},
         {works, works, absent, works}},
        {"publish to another topic",
         {"publish_other_topic", "publish_other_topic_instance"},
         {works, works, works, works}},
        {"close or drop the publisher of the value, or the one that made it",
         {"close_own_publisher", "drop_own_publisher", "close_parent_publisher", "drop_parent_publisher"},
         {works, works, absent, works}},
        {"close or drop another publisher",
         {"close_other_publisher", "drop_other_publisher", "close_other_instance_publisher",
          "drop_other_instance_publisher"},
         {works, works, works, works}},
        {"close or drop the own subscriber",
         {"close_own_subscriber", "drop_own_subscriber"},
         {works, works, works, works}},
        {"close or drop another subscriber",
         {"close_other_subscriber", "drop_other_subscriber"},
         {works, works, works, works}},
        {"close or drop a most-recent-value subscriber",
         {"close_most_recent", "drop_most_recent"},
         {works, works, works, works}},
        {"drop the `Plex` instance, or all that there is",
         {"drop_plex", "drop_everything"},
         {works, works, works, works}},
        {"make a publisher or a subscriber",
         {"make_publisher", "make_subscriber", "make_most_recent", "make_instance_publisher",
          "make_with_new_plex"},
         {works, works, makingRefused, works}},
        {nullptr, {"look_at_thread", "look_at_order"}, {works, works, works, works}},
    };
    return rows;
}

void printTable(std::ostream& out)
{
    out << "| asked for inside a callback |";
    for (const char* column : columns) {
        out << ' ' << column << " |";
    }
    out << "\n|---|---|---|---|---|\n";
    for (const Row& row : table()) {
        if (row.says != nullptr) {
            out << "| " << row.says << " |";
            for (const Outcome& outcome : row.outcomes) {
                out << ' ' << cell(outcome) << " |";
            }
            out << '\n';
        }
    }
    out << "\nRefused means an `IllegalStateException`, after which all goes on:\n\n";
    int number = 0;
    for (const auto& text : refusals()) {
        out << ++number << ". `" << text << "`\n";
    }
}

std::string Pair::word() const
{
    return context.word() + "__" + asked;
}

std::ostream& operator<<(std::ostream& out, const Pair& pair)
{
    return out << pair.word();
}

std::vector<Pair> allPairs()
{
    std::vector<Pair> pairs;
    for (const Runs runs : allRuns) {
        for (const Thread thread : {Thread::Transport, Thread::Own}) {
            for (const Row& row : table()) {
                appendPairs(pairs, row, {runs, thread});
            }
        }
    }
    return pairs;
}

} // namespace plex::test::callbacks
