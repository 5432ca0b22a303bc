# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What a user does with the packages in /srv/packages, in a Debian that has never seen them. Called by try-packages.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
domain=$((91 + $$ % 5))
work=$(mktemp -d)

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

say() {
    printf -- '-- %s\n' "$*"
}

contains() {
    grep -q -e "$2" "$work/$1" || fail "expected \"$2\" in: $(cat "$work/$1")"
}

# All files, but for what the package manager keeps for itself.
files() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /srv -o -path /tmp -o -path /root \
        -o -path /var/cache -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/log \) -prune -o -print | sort
}

# build DIRECTORY: as the README says it.
build() {
    { cmake -G Ninja -S "$1" -B "$1/build" && cmake --build "$1/build"; } >"$work/log" 2>&1 || fail "$(cat "$work/log")"
}

say 'install'
files >"$work/before"
apt-get -qq install --yes --no-install-recommends /srv/packages/*.deb >"$work/log" 2>&1 || fail "$(cat "$work/log")"
examples=/usr/share/doc/plex-doc/examples

say "the README's first program"
cp -r "$examples/snippets/first-program" "$work/first-program"
cp "$examples/first-program.cpp" "$work/first-program"
build "$work/first-program"
[ "$("$work/first-program/build/first-program")" = 'altitude 45' ] || fail 'the first program says something else'

say 'a module of types of its own'
cp -r "$examples/module" "$work/module"
build "$work/module"
export LD_LIBRARY_PATH=$work/module/build
"$work/module/build/shutter-subscriber" $domain 5 >"$work/received" &
subscriber=$!
"$work/module/build/shutter-publisher" $domain 5
wait $subscriber
contains received '^lower: OPENING, 4 % open'

say 'the programs'
plex pub dome/shutters dome::Shutter '{"name": "upper"}' -d $domain --wait 0 --json >"$work/published"
contains published '"values":1'
plex list -d $domain --json >"$work/listed"
contains listed '"participants"'
plex doctor -d $domain >"$work/doctor" || [ $? = 4 ] # the host may have what it tells of
contains doctor "Domain $domain"
bash -c '. /usr/share/bash-completion/completions/plex && complete -p plex' >"$work/completion"
contains completion 'plex$'
plex-idl --help >"$work/help"
contains help '--depfile'
unset LD_LIBRARY_PATH

say 'remove'
apt-get -qq purge --yes --auto-remove libplex0.1 libplex-dev plex-tools plex-doc >"$work/log" 2>&1 || fail "$(cat "$work/log")"
files >"$work/after"
diff "$work/before" "$work/after" || fail 'the files above have been left behind, or are gone'
