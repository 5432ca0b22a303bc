// SPDX-License-Identifier: Apache-2.0
// Publishes values and stays until its standard input ends. Each number is 16 hexadecimal digits, its bits.
// The first value has the source timestamp SECONDS, each further one a quarter of a second more.
//
//     sender DOMAIN TOPIC TYPE REPRESENTATION SECONDS NUMBER…    REPRESENTATION: xcdr1, xcdr2, or default
#include "Topics.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <span>

using namespace plex::test;

namespace
{

template <class Topic>
void send(const ovra::plex::Uri& uri, const std::string& representation, double timestamp,
          std::span<char* const> numbers)
{
    const auto plex = std::make_shared<ovra::plex::DdsPlex>(ovra::plex::Plex::Properties{});
    loadLoopback(*plex, uri);
    const auto publisher =
        create(Topic::createPublisher, plex, uri, representation == "default" ? "" : representation);
    const auto value = publisher->createDataEntity();
    for (; numbers.size() >= Topic::numbers; numbers = numbers.subspan(Topic::numbers)) {
        Bits<Topic::numbers> bits{};
        for (std::size_t i = 0; i < bits.size(); ++i) {
            bits[i] = std::strtoull(numbers[i], nullptr, 16);
        }
        Topic::set(*value, bits);
        publisher->publish(timestamp, *value, std::chrono::milliseconds(0));
        timestamp += 0.25;
    }
    while (std::getchar() != EOF) {
    }
}

void run(std::span<char* const> arguments)
{
    if (arguments.size() < 7) {
        throw std::runtime_error("arguments are missing");
    }
    const ovra::plex::Uri uri("dds+ps://" + std::string(arguments[1]) + "/" + arguments[2]);
    const bool positions = std::string(arguments[3]) == Positions::type;
    (positions ? send<Positions> : send<Temperatures>)(uri, arguments[4], std::strtod(arguments[5], nullptr),
                                                       arguments.subspan(6));
}

} // namespace

int main(int argc, char** argv)
{
    try {
        run({argv, static_cast<std::size_t>(argc)});
    } catch (const std::exception& error) {
        std::cerr << "sender: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
