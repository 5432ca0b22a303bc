#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Modules that others make of definitions, against the installed and moved tree: the example module, and one that uses its
# types when that is installed and moved as well; what is built again, and what is refused.
set -euo pipefail

. "$(dirname -- "${BASH_SOURCE[0]}")/installed.sh" # sets `project`, `libraries`, `work`, `prefixes`
domain=$((91 + $$ % 5)) # the demo has those below

contains() {
    grep -qE -e "$2" "$work/$1" || fail "expected \"$2\" in $1: $(cat "$work/$1")"
}

lacks() {
    ! grep -qE -e "$2" "$work/$1" || fail "\"$2\" was not expected in $1: $(cat "$work/$1")"
}

# install_and_move PROJECT: to where the ones after it find it.
install_and_move() {
    cmake --install "$work/$1/build" --prefix "$work/$1-installed" >"$work/log"
    mv "$work/$1-installed" "$work/$1-moved"
    if grep -rIl -e "$work" "$work/$1-moved"; then
        fail 'the files above hold an absolute path'
    fi
    prefixes=$prefixes:$work/$1-moved
}

# What a library exports besides templates of others, as "KIND NAME".
exports() {
    nm -DC --defined-only "$1" | cut -d ' ' -f 2- | grep '^T' | sed 's/ T / /; s/virtual thunk to //'
}

check_exports() {
    local folder=$1 others
    others=$(exports "$folder/libplex-dds-dome.so" | grep -vE \
        -e '^T generated_dds_(Publisher|Subscriber|MrvSubscriber|DataEntity|Description)_dome_Shutter$' \
        -e '^T generated::(dds_|ddsimpl)::dome::Shutter(PubSubType)?::' \
        -e '^T .*eprosima::fastcdr::\w+(<generated::dds_::dome::Shutter>)?\(.*generated::dds_::dome::Shutter( const)?&' || true)
    [ -z "$others" ] || fail "the binding exports: $others"
    [ "$(exports "$folder/libplex-dds-dome.so" | grep -cE 'generated_dds_(Publisher|Subscriber|MrvSubscriber|DataEntity)_')" = 4 ]
    others=$(exports "$folder/libplex-icd-dome.so" | grep -v '^T dome::Shutter::' || true)
    [ -z "$others" ] || fail "the value types export: $others"
}

exchange() {
    local programs=$1 subscriber
    "$programs/shutter-subscriber" $domain 5 >"$work/received" &
    subscriber=$!
    "$programs/shutter-publisher" $domain 5
    wait $subscriber || fail "$(cat "$work/received")"
    contains received '^lower: OPENING, 4 % open, motors at 2 A 1 A, motor 2 is hot$'
}

# --- The example ------------------------------------------------------------------------------------------------

cp -r "$project/examples/module" "$work/example"
configure example
build example
check_exports "$work/example/build"
LD_LIBRARY_PATH=$libraries:$work/example/build exchange "$work/example/build"

# The command knows the types of modules that it finds.
LD_LIBRARY_PATH=$libraries:$work/example/build "$work/moved/bin/plex" pub dome/shutters dome::Shutter \
    '{"name": "upper", "currents": [0.5]}' -d $domain --wait 0 --json >"$work/published"
contains published '"type":"generated::dds_::dome::Shutter","values":1'
if LD_LIBRARY_PATH=$libraries "$work/moved/bin/plex" pub dome/shutters dome::Shutter '{}' 2>"$work/refused"; then
    fail 'a type that no module has is published'
fi
contains refused 'type "dome::Shutter" is unknown'

build example
contains log 'no work to do'
touch "$work/example/dome.idl"
build example
contains log 'Generating the module dome'
lacks log 'Building'
build example
contains log 'no work to do'
install_and_move example

# --- A module that uses its types -----------------------------------------------------------------------------------

# arrives_with DIRECTORY: a value of the binding that lies there.
arrives_with() {
    [ "$(LD_LIBRARY_PATH=$libraries:$work/moved/lib:$work/example-moved/lib:$1 "$work/second/build/room" $domain)" \
        = 'anna sees 12.5 % and 2 motors, the first of 2 is CLOSING' ] || fail 'the value did not arrive'
}

cp -r "$project/tests/consumer/second-module" "$work/second"
configure second
build second
arrives_with "$work/second/build"
test -e "$work/second/build/made/dds/shard2.cpp" # SHARDS, OUTPUT_DIRECTORY
test ! -e "$work/second/build/made/dds/shard3.cpp"
contains second/build/made/dds/room/ViewPubSubType.cpp '"control::room::View_"' # TYPE_NAME
contains second/build/made/include/control/room/View.hpp 'At most 4 elements'     # DEFINE
contains second/build/made/dds/room/ViewCdr.cpp "Extensibility::Mutable" # EXTENSIBILITY

# An included definition that changes has everything built again that depends on it, in one go.
sed -i 's/LONGEST_NAME = 16/LONGEST_NAME = 24/' "$work/second/idl/control/limits.idl"
build second --target plex-icd-control_room room
contains log 'Generating the module control_room'
contains log 'Building .*plex-icd-control_room'
contains log 'Building .*room.cpp'
build second -- -n
contains log 'Building .*plex-dds-control_room'
lacks log 'room.cpp'
cmake --build "$work/second/build" >"$work/log"
install_and_move second
arrives_with "$work/second-moved/lib"

# What is installed serves a third one, which names the one it uses only.
mkdir "$work/third"
cat >"$work/third/CMakeLists.txt" <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(third LANGUAGES CXX)
find_package(plex-control_room 2.0 CONFIG REQUIRED)
find_package(plex CONFIG REQUIRED COMPONENTS engine)
plex_add_module(third IDL third.idl MODULES control_room DEFINE SHUTTERS=4)
TEXT
cat >"$work/third/third.idl" <<'TEXT'
#include <control/room.idl>
module third { struct Views { sequence<control::room::View> views; dome::Motion motion; }; };
TEXT
configure third
build third --target plex-icd-third
test ! -e "$work/third/build/third/dds/shard1.cpp"

# Without SHARDS, four structures are compiled together.
for i in $(seq 9); do echo "struct S$i { long value; };"; done |
    { echo 'module third {'; cat; echo '};'; } >"$work/third/third.idl"
build third --target rebuild_cache
build third --target plex-icd-third
test -e "$work/third/build/third/dds/shard2.cpp"
test ! -e "$work/third/build/third/dds/shard3.cpp"

# A topic that is called otherwise leaves no header behind.
sed -i 's/S9/Ninth/' "$work/third/third.idl"
build third --target plex-icd-third
test -e "$work/third/build/third/include/third/Ninth.hpp"
test ! -e "$work/third/build/third/include/third/S9.hpp"
test -e "$work/third/build/third/include/third/S8.hpp"

# --- Where paths have spaces ------------------------------------------------------------------------------------------

mkdir "$work/with space"
cp -r "$work/moved" "$work/with space/plex"
cp -r "$project/tests/consumer/module-errors" "$work/with space/project"
printf '%s\n' 'plex_add_module(one IDL one.idl TOPICS none)' 'plex_install_module(one)' >"$work/with space/project/calls.cmake"
prefixes="$work/with space/plex" configure 'with space/project'
build 'with space/project'
cmake --install "$work/with space/project/build" --prefix "$work/with space/installed" >"$work/log"
test -e "$work/with space/installed/lib/libplex-dds-one.so"

# --- What is refused ------------------------------------------------------------------------------------------------

cp -r "$project/tests/consumer/module-errors" "$work/errors"
install -D "$work/errors/good.idl" "$work/errors/other/good.idl"
calls=$work/errors/calls.cmake
: >"$calls"
configure errors

# says SENTENCE: in the log, wherever CMake wraps it.
says() {
    tr -s ' \n' ' ' <"$work/log" | grep -qF -e "$(tr '\n' ' ' <<<"$1" | sed 's/ $//')" ||
        fail "expected \"$1\": $(cat "$work/log")"
}

# refused SENTENCE CALL…: as the project is configured.
refused() {
    local expected=$1 status=0
    shift
    printf '%s\n' "$@" >"$calls"
    cmake "$work/errors/build" >"$work/log" 2>&1 || status=$?
    [ $status -ne 0 ] || fail "not refused: $*"
    says "$expected"
}

# fails SENTENCE CALL: as the module is generated.
fails() {
    local status=0
    echo "$2" >"$calls"
    configure errors
    cmake --build "$work/errors/build" >"$work/log" 2>&1 || status=$?
    [ $status -ne 0 ] || fail "built: $2"
    says "$1"
}

refused 'plex_add_module(good): there is no definition; name its files behind IDL' 'plex_add_module(good)'
refused 'there is nothing behind IDL' 'plex_add_module(good IDL)'
refused '"good.idl" is no argument of it; definitions are named behind IDL' 'plex_add_module(good good.idl)'
refused '"UNKNOWN" is no argument of it' 'plex_add_module(good UNKNOWN IDL good.idl)'
refused "there is no file $work/errors/missing.idl, which IDL names" 'plex_add_module(good IDL missing.idl)'
refused "there is no file $work/errors/TOPIC, which IDL names; \"TOPIC\" is no argument of plex_add_module() either" \
    'plex_add_module(good IDL good.idl TOPIC all)'
refused "$work/errors/other is a folder; IDL names files" 'plex_add_module(good IDL other)'
refused 'there is no module "nowhere", which MODULES names; before this call, make it with plex_add_module(nowhere …) or
find it with find_package(plex-nowhere)' 'plex_add_module(good IDL good.idl MODULES nowhere)'
refused 'there is no module "plex-good", which MODULES names; "plex-good" is a package, its module is called "good"' \
    'plex_add_module(good IDL good.idl MODULES plex-good)'
refused 'there is a module of that name already; all its files belong into one call' \
    'plex_add_module(good IDL good.idl)' 'plex_add_module(good IDL two.idl)'
refused 'letters, digits and underscores; that of a::b is a_b' 'plex_add_module(a::b IDL good.idl)'
refused 'EXTENSIBILITY is final, appendable or mutable, not "open"' 'plex_add_module(good IDL good.idl EXTENSIBILITY open)'
refused 'TOPICS is auto, annotated, all or none, not "some"' 'plex_add_module(good IDL good.idl TOPICS some)'
refused 'SHARDS is a number from 1 to 1000, not "0"' 'plex_add_module(good IDL good.idl SHARDS 0)'
refused 'plex_install_module(good): there is no module "good" of this project; plex_add_module(good …) comes first' \
    'plex_install_module(good)'
refused '"DESTINATION;lib" is no argument of it' 'plex_install_module(good DESTINATION lib)'
refused 'two definitions would be installed as good.idl' \
    'plex_add_module(good IDL good.idl other/good.idl)' 'plex_install_module(good)'
refused 'PLEX_IDL is "/not/there", and no such program is there' 'set(PLEX_IDL /not/there)' 'plex_add_module(good IDL good.idl)'
fails 'bad.idl:3:22: error: ";" is missing' 'plex_add_module(bad IDL bad.idl)'
fails 'there is no topic' 'plex_add_module(good IDL good.idl TOPICS annotated)'
fails 'plex_add_module(well): the topics are of the module good, whose library has another name; call
plex_add_module(good …) for them' 'plex_add_module(well IDL good.idl)'
fails "inner.idl:2:42: error: \"one::T\" is declared in $work/errors/one.idl, which is not among the definitions" \
    'plex_add_module(one_inner IDL inner.idl)'
fails 'plex_add_module(one_inner): there is a header <one/Values.hpp> of another module, too' \
    'plex_add_module(one IDL one.idl TOPICS none)
plex_add_module(one_inner IDL apart.idl MODULES one)'

# --- For another machine ----------------------------------------------------------------------------------------------

# The package's own generator would not run there.
mv "$work/moved/bin/plex-idl" "$work/plex-idl-of-this-machine"
printf '#!/bin/sh\nexit 1\n' >"$work/moved/bin/plex-idl"
chmod +x "$work/moved/bin/plex-idl"
rm -r "$work/errors/build"
echo >"$calls"
configure errors -D CMAKE_SYSTEM_NAME=Linux
refused 'there is no generator for this machine; say where a program plex-idl is that runs here, with PLEX_IDL' \
    'plex_add_module(good IDL good.idl)'
configure errors -D "PLEX_IDL=$work/plex-idl-of-this-machine"
build errors --target plex-generate-good
test -e "$work/errors/build/good/include/good/T.hpp"
