#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds and installs the binding against the platform in external-platform/, and the README's first program against
# both. The program's value goes through the module's exported factories.
set -euo pipefail

project=$1 fastdds=$2 # the package of Fast DDS that the project takes
shift 2
libraries=$(IFS=: && echo "$*") # directories of those that the project stands on
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CMAKE_PREFIX_PATH=$work/binding:$work/platform${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# quietly COMMAND [ARG…]: its output is for when it fails.
quietly() {
    "$@" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
}

# configure NAME SOURCE [ARG…], to be built in $work/NAME.build and installed in $work/NAME. Compiling is what costs here:
# it is done without optimisation.
configure() {
    local name=$1 source=$2
    shift 2
    quietly cmake -S "$source" -B "$work/$name.build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS=-O0 \
        -DCMAKE_INSTALL_PREFIX="$work/$name" -DCMAKE_INSTALL_LIBDIR=lib "$@"
}

build() {
    quietly cmake --build "$work/$1.build" --target "${@:2}"
}

configure platform "$project/tests/consumer/external-platform" -DCONTRACT="$project/include" -DFASTDDS="$fastdds"
build platform install

configure binding "$project" -DPLEX_PLATFORM=external -DPLEX_BUILD_TESTS=OFF -DPLEX_BUILD_TOOLS=OFF
build binding plex-dds-engine plex-dds-vexstubif
quietly cmake --install "$work/binding.build"

# A dry run gets as far as the programs where nothing is missing that the examples need.
plan=$(ninja -C "$work/binding.build" -n examples) || fail "$plan"
[[ $plan == *bin/first-program* ]] || fail "$plan"

cp -r "$project/docs/snippets/first-program" "$work/source"
domain=$((1 + $$ % 90)) # others run the program as it is
sed "s|dds+ps://0/|dds+ps://$domain/|" "$project/examples/first-program.cpp" >"$work/source/first-program.cpp"
configure program "$work/source"
build program first-program
output=$(LD_LIBRARY_PATH=$work/platform/lib:$work/binding/lib:$libraries "$work/program.build/first-program")
[ "$output" = 'altitude 45' ] || fail "unexpected output of first-program: $output"
