#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Tests of ./dev: dev-test.sh PROJECT CASE. They work on a copy of its scripts in a project of its own, with
# stand-ins for the tools that make and enter a private Debian; the stand-ins write down how they were called.
set -euo pipefail

original=$1
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf -- "$work"' EXIT
project="$work/a project"
cache=$work/cache/plex-dds
made=$work/made       # a line for each root begun
entered=$work/entered # the arguments of the last entry
half_way=$work/half-way
gate=$work/gate # while it is there, making a root stops half-way until somebody writes to it

stand_in() {
    { printf '#!/usr/bin/env bash\n' && cat; } >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}

set_up() {
    mkdir -p -- "$work/bin" "$project/packaging" "$project/cmake"
    cp -- "$original/dev" "$project"
    cp -- "$original"/packaging/*.sh "$project/packaging"
    cp -- "$original/cmake/PlexDependencies.cmake" "$project/cmake"
    echo one-package >"$project/packaging/packages.txt"
    stand_in mmdebstrap <<TEXT
for target in "\$@"; do :; done
echo made >>"$made"
mkdir -p "\$target/usr/bin"
touch "$half_way"
[ ! -p "$gate" ] || read -r <"$gate" || exit 1
mkdir "\$target/etc"
ln -s usr/bin "\$target/bin"
TEXT
    stand_in bwrap <<TEXT
case " \$* " in *' -- '*) ;; *) exit 0 ;; esac # only whether it works
printf '%s\n' "\$@" >"$entered"
until [ "\$1" = -- ]; do shift; done
shift
PLEX_ENV=host "\$@"
TEXT
    # An administrator on a machine that lacks nothing, and none of whose own tools is called.
    stand_in id <<<'echo 0'
    stand_in apt-get <<<'exit 0'
    export PATH=$work/bin:$PATH XDG_CACHE_HOME=$work/cache PLEX_ENV=root
    unset CMAKE_PREFIX_PATH
}

dev() {
    "$project/dev" "$@"
}

fail() {
    echo "$*" >&2
    exit 1
}

expect() {
    [ "$1" = "$2" ] || fail "expected \"$1\", found \"$2\""
}

expect_refusal() {
    local reason=$1 status=0
    shift
    dev "$@" >"$work/log" 2>&1 || status=$?
    [ $status -ne 0 ] || fail "not refused: $*"
    grep -qF -- "$reason" "$work/log" || fail "expected \"$reason\" in: $(cat "$work/log")"
}

wait_until() {
    local i
    for ((i = 0; i < 400; ++i)); do
        ! "$@" || return 0
        read -r -t 0.05 <> <(:) || true
    done
    fail "never came true: $*"
}

roots() {
    find "$cache" -maxdepth 1 -name 'root-*' | wc -l
}

left_overs() {
    find "$cache" -maxdepth 1 ! -name 'root-*' ! -name lock ! -path "$cache"
}

AbsentPrefixIsRefused() {
    CMAKE_PREFIX_PATH=/usr:/not/there expect_refusal 'names /not/there' run true
}

AnswerOfTheHostIsRemembered() {
    local tool
    for tool in ninja c++ git; do
        stand_in $tool <<<'exit 0'
    done
    stand_in cmake <<<"echo asked >>'$work/asked'"
    unset PLEX_ENV
    dev run true
    dev run true
    expect 2 "$(wc -l <"$work/asked")" # to configure and to build
    echo '# one need more' >>"$project/cmake/PlexDependencies.cmake"
    dev run true
    expect 4 "$(wc -l <"$work/asked")"
    [ ! -e "$made" ] || fail 'a private Debian was made although the host has everything'
}

CommandKeepsItsExitCode() {
    local status=0
    dev run bash -c 'exit 37' || status=$?
    expect 37 $status
    status=0
    PLEX_ENV=host dev run bash -c 'exit 38' || status=$?
    expect 38 $status
}

CommandTidiesUpWhenTerminated() {
    cat >"$work/command" <<'TEXT'
trap 'touch tidy; exit 43' TERM
touch ready
while :; do read -r -t 1 <> <(:) || true; done
TEXT
    (cd "$work" && exec "$project/dev" run bash command) &
    local call=$! status=0
    wait_until test -e "$work/ready"
    kill -TERM $call
    wait $call || status=$?
    expect 43 $status
    [ -e "$work/tidy" ] || fail 'it had no time to tidy up'
}

DemoBuildsWhatItShows() {
    mkdir -p -- "$project/examples" "$project/build/default/bin"
    cp -- "$original/examples/run-demo" "$project/examples"
    stand_in cmake <<<"echo \"\$*\" >>'$work/asked'"
    stand_in c++ <<<'echo 14'
    stand_in program <<<"echo \"\${0##*/} \${@: -1}\" >>'$work/ran'; [[ \$0 != *\$FAILING* ]]"
    local program
    export FAILING=none
    for program in publisher subscriber shutter-publisher shutter-subscriber; do
        ln -s "$work/bin/program" "$project/build/default/bin/$program"
    done
    export PLEX_ENV=host
    dev demo --count 3
    expect '--target examples' "$(grep -o -e '--target .*' "$work/asked")"
    expect 'publisher 3 subscriber 3 ' "$(sort "$work/ran" | tr '\n' ' ')"
    rm -- "$work/asked" "$work/ran"
    dev demo --module --count 4
    expect '--target example-module' "$(grep -o -e '--target .*' "$work/asked")"
    expect 'shutter-publisher 4 shutter-subscriber 4 ' "$(sort "$work/ran" | tr '\n' ' ')"
    FAILING=subscriber expect_refusal 'values are missing' demo --module
}

FailureLeavesNoRoot() {
    mkfifo "$gate"
    (: >"$gate") &
    ! dev run true || fail 'a root that could not be made was entered'
    wait
    expect 0 "$(roots)"
    expect '' "$(left_overs)"
}

FuzzFailsWithAnInputThatFails() {
    mkdir -p -- "$project/tests/fuzz/corpus/Good" "$project/tests/fuzz/corpus/Bad" "$project/build/fuzz/bin"
    cp -- "$original/tests/fuzz/run-fuzz" "$project/tests/fuzz"
    stand_in cmake <<<'exit 0'
    stand_in c++ <<<'echo 14'
    stand_in fuzz-Good <<'TEXT'
case $* in
*-max_total_time=3*) inputs=9 ;;
*-runs=*) inputs=20000 ;;
*) inputs=70000 ;;
esac
echo "#9 DONE   cov: 5 ft: 7 corp: 1/1b"
echo "stat::number_of_executed_units: $inputs"
TEXT
    stand_in fuzz-Bad <<<'echo "$*"; exit 77'
    export PLEX_ENV=host
    dev build fuzz
    mv -- "$work"/bin/fuzz-* "$project/build/fuzz/bin"
    local status=0
    dev fuzz 3 >"$work/log" || status=$?
    expect 1 $status
    grep -Eq '^Good +20009 executions +5 edges +7 features +ok$' "$work/log" || fail "$(cat "$work/log")"
    grep -Eq '^Bad .*FAILED, see .*/Bad\.log$' "$work/log" || fail "$(cat "$work/log")"
    grep -q -e -max_total_time=3 "$project/build/fuzz/failures/Bad.log"
    rm -r -- "$project/tests/fuzz/corpus/Bad"
    dev fuzz >"$work/log"
    grep -Eq '^Good +70000 executions ' "$work/log" || fail "$(cat "$work/log")"
}

HelpNeedsNoEnvironment() {
    dev --help | grep -q 'Usage: ./dev COMMAND'
    [ ! -e "$made" ]
}

KilledCallLeavesNothingBehind() {
    mkfifo "$gate"
    set -m # a process group of its own
    dev run true &
    local call=$!
    set +m
    wait_until test -e "$half_way"
    kill -KILL -- -$call
    wait $call 2>/dev/null || true
    expect 0 "$(roots)"
    rm -- "$gate"
    dev run true
    expect 1 "$(roots)"
    expect '' "$(left_overs)"
}

LinkLeadsToTheProject() {
    ln -s "a project/dev" "$work/link"
    (cd / && "$work/link" run true)
    expect "$project" "$(grep -A1 -x -e --chdir "$entered" | tail -1)"
    grep -qxF -- "$project/dev" "$entered"
}

OldRootsGoUnlessInUse() {
    local root
    dev run true
    root=$(find "$cache" -name 'root-*')
    for list in two three four; do
        echo "$list" >"$project/packaging/packages.txt"
        flock --shared "$root" "$project/dev" run true
    done
    expect 3 "$(roots)" # the first, in use; the third, used last before the fourth
    echo five >"$project/packaging/packages.txt"
    dev run true
    expect 2 "$(roots)"
    expect '' "$(left_overs)"
}

OnlyNamedVariablesGetThrough() {
    mkdir "$work/prefix"
    CMAKE_PREFIX_PATH="$work/prefix;" FASTDDS_STATISTICS=on SECRET=hidden LANG=de_DE.UTF-8 dev run true
    grep -qx FASTDDS_STATISTICS "$entered"
    ! grep -q -e SECRET -e de_DE "$entered" || fail 'too much got through'
    grep -A2 -x -e --ro-bind "$entered" | grep -qx "$work/prefix"
    expect "$work/prefix" "$(grep -A1 -x CMAKE_PREFIX_PATH "$entered" | tail -1)"
}

RootIsMadeOnce() {
    dev run true
    dev run true
    expect 1 "$(wc -l <"$made")"
    echo '   # a comment changes nothing' >>"$project/packaging/packages.txt"
    dev run true
    expect 1 "$(wc -l <"$made")"
}

StressTakesPresetAndSeconds() {
    mkdir -p -- "$project/tests/stress"
    cp -- "$original/tests/stress/run-stress" "$project/tests/stress"
    stand_in cmake <<<'exit 0'
    stand_in c++ <<<'echo 14'
    stand_in stress <<'TEXT'
echo "$SANITIZED $*"
exit 3
TEXT
    export PLEX_ENV=host
    local preset
    for preset in default tsan; do
        mkdir -p -- "$project/build/$preset/bin" "$project/build/$preset/tests/stress"
        ln -s "$work/bin/stress" "$project/build/$preset/bin"
        printf 'SANITIZED=by %s\n\n' $preset >"$project/build/$preset/tests/stress/environment"
    done
    expect 'by default --seconds 60' "$(dev stress || true)"
    expect 'by default --seconds 7 --seed 1' "$(dev stress 7 --seed 1 || true)"
    expect 'by tsan --seconds 60' "$(dev stress tsan || true)"
    expect 'by tsan --seconds 8 --only values' "$(dev stress tsan 8 --only values || true)"
    local status=0
    dev stress >"$work/log" || status=$?
    expect 3 $status
}

SystemsAreNotMixedInABuild() {
    stand_in cmake <<<'exit 0'
    stand_in c++ <<<'echo 14'
    export PLEX_ENV=host
    dev build
    touch "$project/build/default/object"
    dev build
    [ -e "$project/build/default/object" ] || fail 'started over without need'
    stand_in c++ <<<'echo 15'
    dev build
    [ ! -e "$project/build/default/object" ] || fail 'another compiler went on with the old build'
    CMAKE_PREFIX_PATH=$work dev build
    expect 2 "$(find "$project/build" -mindepth 1 -maxdepth 1 | wc -l)"
}

TwoCallersAtOnceMakeOneRoot() {
    mkfifo "$gate"
    dev run true &
    local first=$! second
    wait_until test -e "$half_way"
    dev run true 2>"$work/log" &
    second=$!
    wait_until grep -q 'waiting for another call' "$work/log"
    echo go on >"$gate"
    wait $first
    wait $second
    expect 1 "$(wc -l <"$made")"
}

UnknownWordsAreRefused() {
    expect_refusal 'unknown command "tset"' tset
    PLEX_ENV=moon expect_refusal 'not "moon"' run true
    expect_refusal 'run needs a command' run
    expect_refusal 'not "soon"' fuzz soon
    expect_refusal 'no benchmarks' bench
}

WorkTreeBringsItsRepository() {
    mkdir -p "$work/repository/worktrees/one"
    echo ../.. >"$work/repository/worktrees/one/commondir"
    echo "gitdir: $work/repository/worktrees/one" >"$project/.git"
    dev run true
    expect "$work/repository" "$(grep -A1 -x -e --bind "$entered" | tail -1)"
}

set_up
"$2"
