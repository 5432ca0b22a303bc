#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the project, moves the tree, builds the examples and a binding of another module against it as projects
# of their own, and runs an example.
set -euo pipefail

project=$1 build=$2 fastdds=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" >/dev/null
mv "$work/installed" "$work/moved"
if grep -rIl -e "$work/installed" -e "$project" "$work/moved"; then
    echo 'the files above hold an absolute path' >&2
    exit 1
fi

cp -r "$project/examples" "$work/examples"
cmake -S "$work/examples" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" >"$work/log" ||
    { cat "$work/log" && exit 1; }
cmake --build "$work/build" --target first-program >"$work/log" || { cat "$work/log" && exit 1; }
# The tree names no directory, so one that is not the system's is said at run time.
output=$(LD_LIBRARY_PATH=$fastdds "$work/build/first-program")
[ "$output" = 'altitude 45' ] || { echo "unexpected output: $output" >&2; exit 1; }
test -r "$work/moved/share/plex/plex.xml"

mkdir "$work/module"
cp -r "$project/tests/support/keyed" "$work/module/keyed"
cat >"$work/module/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(module LANGUAGES CXX)
find_package(plex CONFIG REQUIRED COMPONENTS engine)
file(GLOB sources keyed/*.cpp)
add_library(plex-dds-keyed SHARED ${sources})
target_include_directories(plex-dds-keyed PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(plex-dds-keyed PRIVATE plex::engine)
target_link_options(plex-dds-keyed PRIVATE -Wl,--no-undefined)
CMAKE
prefixes=$work/moved${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH}
CMAKE_PREFIX_PATH=$prefixes cmake -S "$work/module" -B "$work/module/build" -G Ninja >"$work/log" ||
    { cat "$work/log" && exit 1; }
cmake --build "$work/module/build" >"$work/log" || { cat "$work/log" && exit 1; }
nm --dynamic --defined-only "$work/module/build/libplex-dds-keyed.so" |
    grep -q ' T generated_dds_Publisher_keyed_Sensor$' || { echo 'the module exports no factory' >&2; exit 1; }
