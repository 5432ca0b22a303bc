#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The README's first program is the text of examples/first-program.cpp, and short.
set -euo pipefail

project=$1
# shellcheck disable=SC2016 # a Markdown fence, nothing to expand
shown=$(sed -n '/^```cpp$/,/^```$/p' "$project/README.md" | sed -e '1d' -e '$d')
real=$(sed -e '/SPDX/d' "$project/examples/first-program.cpp")
if ! diff <(printf '%s\n' "$shown") <(printf '%s\n' "$real"); then
    echo 'README.md and examples/first-program.cpp differ' >&2
    exit 1
fi
lines=$(printf '%s\n' "$shown" | wc -l)
[ "$lines" -lt 20 ] || { echo "the first program has $lines lines" >&2; exit 1; }
