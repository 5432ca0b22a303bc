#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the project, moves the tree, builds the examples against it as a project of their own, and runs one.
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
