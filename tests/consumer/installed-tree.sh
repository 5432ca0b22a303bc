#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the project, moves the tree, and builds against it, as projects of their own: the README's first program, a
# committed binding of another module with a program that uses it, and (configured only) the examples.
set -euo pipefail

. "$(dirname -- "${BASH_SOURCE[0]}")/installed.sh" # sets `project`, `libraries`, `work`

# expect OUTPUT PROGRAM [ARG…]. The tree names no directory, so those that are not the system's are said at run time.
expect() {
    local expected=$1 output
    shift
    output=$(LD_LIBRARY_PATH=$libraries:$work/module/build "$@")
    [ "$output" = "$expected" ] || fail "unexpected output of ${1##*/}: $output"
}

if grep -rIlE -e "$work/installed" -e "$project" -e '[";]/[^";]+\.(so|a)[";]' "$work/moved"; then
    fail 'the files above hold an absolute path'
fi
test -r "$work/moved/share/plex/plex.xml"

cp -r "$project/docs/snippets/first-program" "$project/docs/snippets/module" "$project/examples" "$work"
cp "$project/examples/first-program.cpp" "$work/first-program"
cp -r "$project/tests/support/keyed" "$project/examples/instances.cpp" "$work/module"

configure first-program
build first-program
expect 'altitude 45' "$work/first-program/build/first-program"

configure module
build module
expect 'channel 2 had 0.5
channel 2 had 1.5
channel 1 has 0.75
channel 2 has 1.5
channel 3 has 2.25' "$work/module/build/instances" $((1 + $$ % 90))

configure examples
