#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The live display shows both topics of a publisher in another process and ends cleanly on Ctrl-C.
set -euo pipefail

project=$1 build=$2
work=$(mktemp -d)
# The demo, which has the same topics, has the domains below.
common=(--domain $((91 + $$ % 5)) --profiles "$project/profiles/plex.xml")
"$build/bin/publisher" "${common[@]}" --count 300 --rate 100 &
publisher=$!
"$build/bin/display" "${common[@]}" >"$work/screen" &
display=$!
trap 'kill $publisher $display 2>/dev/null || true; rm -rf "$work"' EXIT

shows() {
    grep -q "dome/position .*callback .*alt .*/s .*ms$" "$work/screen" &&
        grep -q "dome/temperature .*notifier .*/s .*ms$" "$work/screen" &&
        grep -q "dome/position .*latest .*alt" "$work/screen"
}
for ((i = 0; i < 300; ++i)); do
    shows && break
    read -r -t 0.1 <> <(:) || true
done
shows || { tail -3 "$work/screen" && exit 1; }
kill -INT $display
wait $display
tail -1 "$work/screen" | grep -qx bye
wait $publisher # to its own end, as a killed one would leave files in shared memory
