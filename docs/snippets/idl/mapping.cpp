// SPDX-License-Identifier: Apache-2.0
// The C++ side of what docs/idl.md shows: mapping.idl as applications use it.
#include <plex/Plex.hpp>

#include <iostream>
#include <mapping/Shutter.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

void require(bool condition, const char* what)
{
    if (!condition) {
        throw std::runtime_error(what);
    }
}

void usePrimitives(mapping::Shutter& value)
{
    // [primitives]
    value.setBig(1'000'000'000'000);
    value.setMotion(mapping::Motion::OPENING);
    value.setAlarms(value.getAlarms() | mapping::Alarms::POWER);
    const double exact = value.getExact(); // 0.0: nothing was set
    // [/primitives]
    // [enum]
    std::cout << toString(value.getMotion()) << '\n';                        // OPENING
    const bool isKnown = mapping::isKnown(value.getMotion());                // true
    const bool isPowerless = has(value.getAlarms(), mapping::Alarms::POWER); // true
    // [/enum]
    // [constant]
    const std::uint32_t motors = mapping::MOTORS;
    const std::string site{mapping::SITE};
    // [/constant]
    require(exact == 0.0 && isKnown && isPowerless && motors == 2 && site == "south", "primitives");
}

void useCollections(mapping::Shutter& value)
{
    // [collections]
    value.setName("upper");
    value.setCurrents(std::vector<float>{1.5F, 2.5F});         // copied; an array may be given as well
    for (mapping::Position& position : value.resizeTrack(3)) { // written where it lies
        position.x = 1.0;
    }
    value.editMatrix()[1][2] = 0.5;

    const std::string_view name = value.getName(); // valid until the value changes or goes
    float sum = 0.0F;
    for (const float current : value.getCurrents()) { // nothing is copied
        sum += current;
    }
    // [/collections]
    require(name == "upper" && sum == 4.0F && value.getTrack()[2].x == 1.0 && value.getMatrix()[1][2] == 0.5,
            "collections");
    // [bounds]
    try {
        value.setName("a name of more than sixteen characters");
    } catch (const std::exception& error) {
        std::cout << error.what() << '\n';
    }
    // [/bounds]
    require(value.getName() == "upper", "bounds");
}

void useWhole(mapping::Shutter& value)
{
    // [whole]
    value.setPosition({1.0, 2.0});
    value.editPosition().y = 3.0;
    value.editCommand().width(0.75); // selects the case OPENING

    const mapping::Command& command = value.getCommand();
    if (command.isWidth()) {
        std::cout << "open it by " << command.width() << '\n';
    }
    // [/whole]
    require(command.discriminator() == mapping::Motion::OPENING && value.getPosition().y == 3.0, "whole");
}

void useOptionals(mapping::Shutter& value)
{
    // [optional]
    value.setLimit(90.0);
    value.setLimit(std::nullopt); // absent again
    value.setFault("motor 2 is hot");
    value.makeTarget().x = 1.0; // there from now on
    value.makeHistory().push_back(7);
    value.resetHistory();

    const std::string_view fault = value.getFault().value_or("none");
    const mapping::Position* const target = value.getTarget(); // null where it is absent
    // [/optional]
    require(!value.getLimit() && fault == "motor 2 is hot" && target != nullptr && target->x == 1.0 &&
                value.getHistory() == nullptr,
            "optional");
}

void useKey(mapping::Shutter& value)
{
    // [key]
    value.setPlace({1, 2, "in the north"});
    value.setName("upper");
    const std::unique_ptr<mapping::Shutter> key = value.cloneKey(); // the same key, and nothing else
    const bool isSame = key->keyEquals(value);                      // true
    // [/key]
    require(isSame && key->getPlace().remark.empty() && !key->getFault(), "key");
}

} // namespace

int main()
{
    try {
        const auto plex = ovra::plex::Plex::create();
        const auto value = plex->createDataEntity<mapping::Shutter>();
        require(value->getWindSpeed() == 0.5F, "quantity");
        usePrimitives(*value);
        useCollections(*value);
        useWhole(*value);
        useOptionals(*value);
        useKey(*value);
    } catch (const std::exception& error) {
        std::cerr << error.what() << ": not as docs/idl.md says\n";
        return 1;
    }
}
