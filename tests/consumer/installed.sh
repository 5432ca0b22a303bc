# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034 # what is set here is for those who read this
# For tests that use the project as others do: installs it, and moves the tree to $work/moved. They are called with the
# project, its build directory, and the directories of the libraries that it stands on.

project=$1 build=$2
shift 2
libraries=$(IFS=: && echo "$*")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefixes=$work/moved

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# configure PROJECT [ARG…]: makes its build directory.
configure() {
    local name=$1
    shift
    CMAKE_PREFIX_PATH=$prefixes${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH} \
        cmake -S "$work/$name" -B "$work/$name/build" -G Ninja "$@" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
}

# build PROJECT [ARG…]: what Ninja says is in $work/log.
build() {
    local name=$1
    shift
    cmake --build "$work/$name/build" "$@" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
}

cmake --install "$build" --prefix "$work/installed" >/dev/null
mv "$work/installed" "$work/moved"
