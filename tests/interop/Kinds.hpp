// SPDX-License-Identifier: Apache-2.0
// Values of the types of Kinds.idl.
#pragma once

#include <array>
#include <kinds/Frozen.hpp>
#include <kinds/Growing.hpp>
#include <kinds/Loose.hpp>
#include <kinds/Plain.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace plex::test
{

/// Gives each member a value of its own.
template <class T>
void fill(T& value)
{
    value.setName("dome");
    value.setPart(7);
    value.setSamples(std::vector<double>{1.5, -2.5});
    value.setIntervals(std::vector<kinds::Interval>{{1, 2}, {3, 4}, {5, 6}});
    value.setInterval({-1, -2});
    value.setNote({"to do", -3});
    value.editCommand().width(2.25);
    value.editChoice().point({8, 9.5});
    value.setMaybe(0.5);
    value.setText("12345678");
    value.makePoint() = {9, 10.5};
    value.makeList() = {1, -2, 3};
    value.setLast(-11);
}

/// Leaves out what may be left out, and has the other cases of unions.
template <class T>
void fillSparsely(T& value)
{
    value.setName("a longer name");
    value.editCommand().reason("wind");
    value.editChoice().text("other");
    value.makePoint() = {1, 2};
    value.setLast(3);
}

template <>
inline void fill(kinds::Plain& value)
{
    value.setName("dome");
    value.setFlag(true);
    value.setLetter('x');
    value.setChannel(65535);
    value.setNumber(-1);
    value.setAngle(-0.5F);
    value.setDoor(kinds::Door::OPEN);
    value.setAlarms(kinds::Alarms::WIND | kinds::Alarms::POWER);
    value.setMatrix({{{1, 2, 3}, {4, 5, 6}}});
    value.setSamples(std::vector<double>{1.5, -2.5});
    value.setWords(std::vector<std::string>{"a", "", "12345678"});
    value.setPoint({9, 10.5});
    value.editChoice().select(2);
    value.editChoice().small(200);
}

template <>
inline void fillSparsely(kinds::Plain& value)
{
    value.setName("0123456789abcdef");
    value.setDoor(kinds::Door::AJAR);
    value.editChoice().point({1, 2});
}

inline std::ostream& operator<<(std::ostream& out, const kinds::Point& point)
{
    return out << "(" << int{point.tag} << " " << point.value << ")";
}

inline std::ostream& operator<<(std::ostream& out, const kinds::Interval& interval)
{
    return out << "[" << interval.low << " " << interval.high << "]";
}

/// Elements in braces.
template <class Elements>
std::string listOf(const Elements& elements)
{
    std::ostringstream out;
    out << "{";
    for (const auto& element : elements) {
        out << element << ",";
    }
    out << "}";
    return out.str();
}

inline std::string textOf(const kinds::Choice& choice)
{
    std::ostringstream out;
    out << choice.discriminator() << ":";
    if (choice.isSmall()) {
        out << int{choice.small()};
    } else if (choice.isPoint()) {
        out << choice.point();
    } else {
        out << choice.text();
    }
    return out.str();
}

inline std::string textOf(const kinds::Command& command)
{
    std::ostringstream out;
    out << toString(command.discriminator()) << ":";
    if (command.isWidth()) {
        out << command.width();
    } else if (command.isReason()) {
        out << command.reason();
    }
    return out.str();
}

/// All members.
template <class T>
std::string textOf(const T& value)
{
    std::ostringstream out;
    out << value.getName() << "," << int{value.getPart()} << "," << listOf(value.getSamples()) << ","
        << listOf(value.getIntervals()) << "," << value.getInterval() << "," << value.getNote().text << ","
        << value.getNote().number << "," << textOf(value.getCommand()) << "," << textOf(value.getChoice())
        << "," << (value.getMaybe() ? std::to_string(*value.getMaybe()) : "-") << ","
        << value.getText().value_or("-") << ",";
    value.getPoint() != nullptr ? out << *value.getPoint() : out << "-";
    out << "," << (value.getList() != nullptr ? listOf(*value.getList()) : "-") << "," << value.getLast();
    return out.str();
}

inline std::string textOf(const kinds::Plain& value)
{
    std::ostringstream out;
    out << value.getName() << "," << value.getFlag() << "," << int{value.getLetter()} << ","
        << value.getChannel() << "," << value.getNumber() << "," << value.getAngle() << ","
        << toString(value.getDoor()) << "," << int{static_cast<std::uint8_t>(value.getAlarms())} << ",";
    for (const auto& row : value.getMatrix()) {
        out << listOf(row);
    }
    out << "," << listOf(value.getSamples()) << "," << listOf(value.getWords()) << "," << value.getPoint()
        << "," << textOf(value.getChoice());
    return out.str();
}

} // namespace plex::test
