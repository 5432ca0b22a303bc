// SPDX-License-Identifier: Apache-2.0
// What the binding costs inside one process, over bare Fast DDS. Writes JSON, one object a measurement.
#include "Paired.hpp"
#include "World.hpp"

#include <CLI/CLI.hpp>
#include <log4cplus/configurator.h>
#include <log4cplus/logger.h>

#include <iostream>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <utility>

namespace plex::bench
{

namespace
{

using namespace std::chrono_literals;
using Samples = BareReader::Samples;

constexpr int historyLimit = 40000; // samples that a writer keeps by default

/// Carries out an operation so many times. @returns nanoseconds that all took together.
template <class Operation>
double timed(int count, const Operation& operation)
{
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        operation();
    }
    return nanoseconds(start, Clock::now());
}

void require(bool condition, const char* what)
{
    if (!condition) {
        throw std::runtime_error(std::string("Benchmark out of order: ") + what);
    }
}

// --- Publishing --------------------------------------------------------------------------------------------

/// How publishing is measured.
struct Publishing {
    bool historyFull = false;
    bool withReader = false;
    bool withTimestamp = false;
};

/// A slice of publishing. What a reader gets is taken again before it makes writing dearer.
template <class Publish>
Slice publishing(const Publishing& how, const std::shared_ptr<BareReader>& reader, const Publish& publish)
{
    constexpr int chunk = 20;
    const int chunks = how.historyFull ? 5 : 10;
    const int before = how.historyFull ? historyLimit + 1000 : 0;
    for (int i = 0; i < before; i += chunk) {
        timed(chunk, publish);
        if (reader) {
            reader->drain();
        }
    }
    return [=] {
        double total = 0.0;
        for (int i = 0; i < chunks; ++i) {
            total += timed(chunk, publish);
            if (reader) {
                reader->drain();
            }
        }
        return total / (chunks * chunk);
    };
}

MakeSide publishingBinding(World& world, const Publishing& how)
{
    return [&world, how] {
        const auto topic = world.newTopic();
        const auto publisher = world.publisher(topic);
        const auto reader = how.withReader ? world.bareReader(topic) : nullptr;
        const auto value = publisher->createDataEntity();
        if (how.withTimestamp) {
            return publishing(how, reader, [=] { publisher->publish(1.5e9, *value, 0ms); });
        }
        return publishing(how, reader, [=] { publisher->publish(*value, 0ms); });
    };
}

MakeSide publishingBare(World& world, const Publishing& how)
{
    return [&world, how] {
        const auto topic = world.newTopic();
        const auto writer = world.bareWriter(topic);
        const auto reader = how.withReader ? world.bareReader(topic) : nullptr;
        const auto value = std::make_shared<WireAltAz>();
        if (how.withTimestamp) {
            return publishing(how, reader,
                              [=] { require(writer->write(*value, {1500000000, 0}), "a write failed"); });
        }
        return publishing(how, reader, [=] { require(writer->write(*value), "a write failed"); });
    };
}

// --- Reading -----------------------------------------------------------------------------------------------

/// A slice of reading: `reads` calls that get `count` samples each, `times` times.
/// @param read one such call; returns the number of samples that it got.
template <class Read>
Slice reading(const std::shared_ptr<BareWriter>& writer, int count, int reads, int times, const Read& read)
{
    const WireAltAz value;
    return [=] {
        double total = 0.0;
        std::size_t got = 0;
        for (int i = 0; i < times; ++i) {
            for (int written = 0; written < count * reads; ++written) {
                writer->write(value);
            }
            total += timed(reads, [&] { got += read(); });
        }
        require(std::cmp_equal(got, count * reads * times), "samples are missing");
        return total / (reads * times);
    };
}

std::size_t takeCopies(BareReader& reader, std::size_t count)
{
    std::vector<WireAltAz> values;
    while (values.size() < count) {
        Samples samples;
        dds::SampleInfoSeq infos;
        if (!reader.take(samples, infos, static_cast<std::int32_t>(count - values.size()))) {
            break;
        }
        for (std::int32_t i = 0; i < samples.length(); ++i) {
            if (infos[i].valid_data) {
                values.push_back(samples[i]);
            }
        }
        reader.giveBack(samples, infos);
    }
    return values.size();
}

std::size_t takeLoan(BareReader& reader)
{
    Samples samples;
    dds::SampleInfoSeq infos;
    if (!reader.take(samples, infos, 1)) {
        return 0;
    }
    const bool zero = samples[0].alt() == 0.0;
    reader.giveBack(samples, infos);
    return zero ? 1 : 0;
}

struct Reading {
    int count;
    int reads;
    int times;
};

MakeSide readingBinding(World& world, const Reading& how)
{
    return [&world, how] {
        const auto topic = world.newTopic();
        const auto subscriber = world.subscriber(topic);
        const auto count = static_cast<std::size_t>(how.count);
        return reading(world.bareWriter(topic), how.count, how.reads, how.times,
                       [=] { return subscriber->read(count).size(); });
    };
}

MakeSide readingBare(World& world, const Reading& how)
{
    return [&world, how] {
        const auto topic = world.newTopic();
        const auto reader = world.bareReader(topic);
        const auto count = static_cast<std::size_t>(how.count);
        return reading(world.bareWriter(topic), how.count, how.reads, how.times,
                       [=] { return takeCopies(*reader, count); });
    };
}

MakeSide loaningBinding(World& world)
{
    return [&world] {
        const auto topic = world.newTopic();
        const auto subscriber = world.subscriber(topic);
        return reading(world.bareWriter(topic), 1, 20, 5, [=]() -> std::size_t {
            const auto loan = subscriber->loanedRead();
            if (!loan) {
                return 0;
            }
            const bool zero = loan->getData().getAlt() == 0.0;
            loan->close();
            return zero ? 1 : 0;
        });
    };
}

MakeSide loaningBare(World& world)
{
    return [&world] {
        const auto topic = world.newTopic();
        const auto reader = world.bareReader(topic);
        return reading(world.bareWriter(topic), 1, 20, 5, [=] { return takeLoan(*reader); });
    };
}

// --- Callbacks ---------------------------------------------------------------------------------------------

/// A slice of writes, each timed from its beginning until `reached` is set.
Slice reaching(const std::shared_ptr<BareWriter>& writer, const std::shared_ptr<Clock::time_point>& reached,
               const std::shared_ptr<void>& held)
{
    const WireAltAz value;
    return [=] {
        constexpr int writes = 51;
        std::vector<double> times;
        for (int i = 0; i < writes; ++i) {
            *reached = {};
            const auto start = Clock::now();
            writer->write(value);
            require(*reached != Clock::time_point() && held != nullptr, "no callback");
            times.push_back(nanoseconds(start, *reached));
        }
        return middleMean(std::move(times));
    };
}

MakeSide callbackBinding(World& world)
{
    return [&world] {
        const auto topic = world.newTopic();
        const auto subscriber = world.subscriber(topic);
        const auto reached = std::make_shared<Clock::time_point>();
        const std::shared_ptr<ovra::plex::ps::Subscription> subscription = subscriber->subscribeAsync(
            ovra::plex::ps::DataEventFilter<Position>(),
            [reached](auto&, const ovra::plex::ps::DataEvent<Position>&) { *reached = Clock::now(); });
        return reaching(world.bareWriter(topic), reached, subscription);
    };
}

/// A reader with a listener that outlives it.
template <class Listener>
std::shared_ptr<void> listening(World& world, const std::string& topic, std::shared_ptr<Listener> listener,
                                const Profiles& profiles = {})
{
    const auto reader = world.bareReader(topic, profiles, listener.get());
    return std::make_shared<std::pair<std::shared_ptr<Listener>, std::shared_ptr<BareReader>>>(
        std::move(listener), reader); // the second goes first
}

MakeSide callbackBare(World& world)
{
    return [&world] {
        const auto topic = world.newTopic();
        const auto reached = std::make_shared<Clock::time_point>();
        const auto note = [reached](const WireAltAz&) {
            *reached = Clock::now();
        };
        const auto reader = listening(world, topic, std::make_shared<BareListener<decltype(note)>>(note));
        return reaching(world.bareWriter(topic), reached, reader);
    };
}

/// Notes when it is called, then takes what there is.
class ArrivalListener final : public dds::DataReaderListener
{
public:
    explicit ArrivalListener(std::shared_ptr<Clock::time_point> arrival) : arrival_(std::move(arrival)) {}

    void on_data_available(dds::DataReader* reader) override
    {
        *arrival_ = Clock::now();
        WireAltAz value;
        dds::SampleInfo info;
        while (fastdds::code(reader->take_next_sample(&value, &info)) == fastdds::RETCODE_OK) {
        }
    }

private:
    const std::shared_ptr<Clock::time_point> arrival_;
};

MakeSide arrival(World& world)
{
    return [&world] {
        const auto topic = world.newTopic();
        const auto reached = std::make_shared<Clock::time_point>();
        const auto reader = listening(world, topic, std::make_shared<ArrivalListener>(reached));
        return reaching(world.bareWriter(topic), reached, reader);
    };
}

// --- Dispatch ----------------------------------------------------------------------------------------------

/// Publishing to a subscriber with so many subscriptions, each for another instance than the one published.
MakeSide dispatching(World& world, int subscriptions)
{
    return [&world, subscriptions] {
        using Subscriptions = std::vector<std::unique_ptr<ovra::plex::ps::Subscription>>;
        const auto topic = world.newTopic();
        const auto subscriber = world.channelSubscriber(topic);
        const auto publisher = world.channelPublisher(topic);
        const auto held = std::make_shared<Subscriptions>();
        for (int i = 1; i <= subscriptions; ++i) {
            held->push_back(
                subscriber->subscribeAsync(ovra::plex::ps::DataEventFilter<keyed::Channel>(
                                               ovra::plex::ps::InstanceState::Alive, {}, World::channel(i)),
                                           [](auto&, const ovra::plex::ps::DataEvent<keyed::Channel>&) {
                                               throw std::logic_error("A filter let another instance pass");
                                           }));
        }
        const auto value = World::channel(0);
        const auto publish = [=] {
            publisher->publish(*value, 0ms);
        };
        timed(1000, publish); // fills the instance's history
        return [held, publish] {
            constexpr int count = 100;
            return timed(count, publish) / count;
        };
    };
}

// --- Throughput --------------------------------------------------------------------------------------------

using Counter = std::shared_ptr<std::atomic<std::size_t>>;

/// Waits until a counter has come as far as it must.
void await(const Counter& counter, std::size_t count)
{
    const auto end = Clock::now() + 10s;
    while (*counter < count) {
        require(Clock::now() < end, "samples are missing");
        std::this_thread::yield();
    }
}

/// Publishing to a callback in the same process, sustained: with full histories, and until all has arrived,
/// which under some profiles is later than publish() returns.
template <class Publish>
Slice sustained(const Counter& received, const std::shared_ptr<void>& held, const Publish& publish)
{
    timed(historyLimit + 1000, publish);
    await(received, historyLimit + 1000);
    return [received, held, publish] {
        constexpr int count = 200;
        const std::size_t before = *received;
        const auto start = Clock::now();
        timed(count, publish);
        await(received, before + count);
        return nanoseconds(start, Clock::now()) / count;
    };
}

MakeSide sustainedBinding(World& world, const Profiles& profiles)
{
    return [&world, profiles] {
        const auto topic = world.newTopic();
        const auto received = std::make_shared<std::atomic<std::size_t>>(0);
        const auto subscriber = world.subscriber(topic, profiles);
        const std::shared_ptr<ovra::plex::ps::Subscription> subscription = subscriber->subscribeAsync(
            ovra::plex::ps::DataEventFilter<Position>(),
            [received](auto&, const ovra::plex::ps::DataEvent<Position>&) { ++*received; });
        const auto publisher = world.publisher(topic, profiles);
        const auto value = publisher->createDataEntity();
        return sustained(received, subscription, [=] { publisher->publish(*value, 0ms); });
    };
}

MakeSide sustainedBare(World& world, const Profiles& profiles)
{
    return [&world, profiles] {
        const auto topic = world.newTopic();
        const auto received = std::make_shared<std::atomic<std::size_t>>(0);
        const auto count = [received](const WireAltAz&) {
            ++*received;
        };
        const auto reader =
            listening(world, topic, std::make_shared<BareListener<decltype(count)>>(count), profiles);
        const auto writer = world.bareWriter(topic, profiles);
        const WireAltAz value;
        return sustained(received, reader, [=] { require(writer->write(value), "a write failed"); });
    };
}

// --- Memory ------------------------------------------------------------------------------------------------

/// Bytes of memory in use after an entity was made, over those before.
template <class Make>
double bytesOf(std::vector<std::shared_ptr<void>>& held, const Make& make)
{
    const auto before = mallinfo2();
    held.push_back(make());
    const auto after = mallinfo2();
    return static_cast<double>(after.uordblks + after.hblkhd) -
           static_cast<double>(before.uordblks + before.hblkhd);
}

/// Median bytes of a new entity on each side.
template <class Binding, class Bare>
std::pair<double, double> compareMemory(const Binding& makeBinding, const Bare& makeBare)
{
    constexpr std::size_t entities = 60;
    std::vector<std::shared_ptr<void>> held;
    held.reserve(2 * entities);
    std::vector<double> binding(entities);
    std::vector<double> bare(entities);
    for (std::size_t i = 0; i < entities; ++i) {
        binding[i] = bytesOf(held, makeBinding);
        bare[i] = bytesOf(held, makeBare);
    }
    return {median(binding), median(bare)};
}

// --- The suite ---------------------------------------------------------------------------------------------

/// What to measure and how long.
struct Settings {
    std::string only = ".*";
    std::string profiles;
    int rounds = 8;
    bool selfCheck = false; ///< measure bare against bare
};

class Suite
{
public:
    Suite(Settings settings, World& world)
        : settings_(std::move(settings))
        , wanted_(settings_.only)
        , world_(world)
    {
    }

    nlohmann::json run()
    {
        publish();
        read();
        callbacks();
        throughput();
        memory();
        return results_;
    }

private:
    bool isWanted(const std::string& name) const { return std::regex_search(name, wanted_); }

    void compare(double target, Comparison comparison, double floorPerSecond = 0.0)
    {
        if (!isWanted(comparison.name)) {
            return;
        }
        if (settings_.selfCheck) {
            comparison.binding = comparison.bare;
        }
        const auto [binding, bare, ratio] = PairedRun(comparison, settings_.rounds).outcome();
        nlohmann::json result{
            {"name", comparison.name}, {"binding_ns", binding}, {"bare_ns", bare}, {"ratio", ratio}};
        if (floorPerSecond > 0.0) {
            result["target"] = floorPerSecond;
            result["bound"] = "binding per second >=";
        } else if (target > 0.0) {
            result["target"] = target;
            result["bound"] = "ratio <=";
        }
        results_.push_back(result);
    }

    void publish()
    {
        for (const bool full : {false, true}) {
            const std::string state = full ? ", history full" : ", history filling";
            const int pairs = full ? 60 : 150;
            const auto add = [&](const std::string& name, const Publishing& how) {
                compare(1.02, {name + state, publishingBinding(world_, how), publishingBare(world_, how),
                               nullptr, pairs});
            };
            add("publish, no reader", {full, false, false});
            add("publish, one reader in process", {full, true, false});
            add("publish with source timestamp", {full, false, true});
        }
    }

    void read()
    {
        const auto add = [&](double target, const Reading& how) {
            compare(target, {"read of " + std::to_string(how.count), readingBinding(world_, how),
                             readingBare(world_, how), nullptr, how.count > 32 ? 20 : 60});
        };
        add(1.5, {1, 20, 5});
        add(1.25, {32, 1, 10});
        add(1.25, {1000, 1, 1});
        compare(1.15, {"loanedRead and close", loaningBinding(world_), loaningBare(world_)});
    }

    void callbacks()
    {
        compare(1.05, {"asynchronous callback, from arrival", callbackBinding(world_), callbackBare(world_),
                       arrival(world_)});
        for (const int subscriptions : {2, 4, 8, 16, 32, 64}) {
            dispatch(subscriptions);
        }
    }

    /// What each further subscription adds, between one and so many.
    void dispatch(int subscriptions)
    {
        const std::string name = "dispatch past " + std::to_string(subscriptions) + " subscriptions, each";
        if (!isWanted(name)) {
            return;
        }
        const Comparison comparison{name, dispatching(world_, settings_.selfCheck ? 1 : subscriptions),
                                    dispatching(world_, 1)};
        const auto [many, one, ratio] = PairedRun(comparison, settings_.rounds).outcome();
        results_.push_back({{"name", name},
                            {"binding_ns", (many - one) / (subscriptions - 1)},
                            {"bare_ns", nullptr},
                            {"ratio", nullptr},
                            {"target", 150.0},
                            {"bound", "binding ns <="}});
    }

    void throughput()
    {
        const auto add = [&](const std::string& how, const Profiles& profiles, double floorPerSecond) {
            compare(0.0,
                    {"in process to a callback, " + how, sustainedBinding(world_, profiles),
                     sustainedBare(world_, profiles)},
                    floorPerSecond);
        };
        add("best-effort, default QoS", {}, 0.0);
        add("best-effort, high-rate profile", {"high-rate", "high-rate.best-effort-reader"}, 250e3);
        add("reliable, high-rate profile", {"high-rate", {}}, 250e3);
    }

    void memory()
    {
        const auto bareWriter = [&] {
            return world_.bareWriter(world_.newTopic());
        };
        const auto bareReader = [&] {
            return world_.bareReader(world_.newTopic());
        };
        const auto publisher = [&]() -> std::shared_ptr<void> {
            return settings_.selfCheck ? std::shared_ptr<void>(bareWriter())
                                       : world_.publisher(world_.newTopic());
        };
        const auto subscriber = [&]() -> std::shared_ptr<void> {
            return settings_.selfCheck ? std::shared_ptr<void>(bareReader())
                                       : world_.subscriber(world_.newTopic());
        };
        addMemory("memory of one publisher", publisher, bareWriter);
        addMemory("memory of one subscriber", subscriber, bareReader);
    }

    template <class Binding, class Bare>
    void addMemory(const std::string& name, const Binding& makeBinding, const Bare& makeBare)
    {
        if (!isWanted(name)) {
            return;
        }
        const auto [binding, bare] = compareMemory(makeBinding, makeBare);
        results_.push_back({{"name", name},
                            {"binding_ns", nullptr},
                            {"bare_ns", nullptr},
                            {"binding_bytes", binding},
                            {"bare_bytes", bare},
                            {"ratio", binding / bare},
                            {"target", 4096},
                            {"bound", "extra bytes <="}});
    }

    const Settings settings_;
    const std::regex wanted_;
    World& world_;
    nlohmann::json results_ = nlohmann::json::array();
};

} // namespace

} // namespace plex::bench

int main(int argc, char** argv)
{
    try {
        CLI::App app{"Measures the binding against bare Fast DDS inside one process"};
        plex::bench::Settings settings;
        app.add_option("--only", settings.only, "regular expression for the names of what is measured");
        app.add_option("--rounds", settings.rounds, "how often entities are made anew")
            ->check(CLI::PositiveNumber)
            ->capture_default_str();
        app.add_option("--profiles", settings.profiles, "XML file of QoS profiles")->required();
        app.add_flag("--self-check", settings.selfCheck,
                     "bare against bare, to see what the figures are worth");
        CLI11_PARSE(app, argc, argv);

        log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
        log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
        plex::bench::World world(settings.profiles);
        std::cout << plex::bench::Suite(settings, world).run().dump(2) << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "in-process: " << error.what() << '\n';
        return 1;
    }
}
