# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The private Debian: where it lies, how it is made once and how old ones go. A part of environment.sh.

suite=trixie

# Sets `cache`, the directory of all that is kept between calls, and `root`, the private Debian of this list.
locate_cache() {
    local base=${XDG_CACHE_HOME:-}
    if [[ $base != /* ]]; then
        local home=${HOME:-}
        [ -n "$home" ] || home=$(getent passwd "$(id -u)" | cut -d: -f6) || true
        base=${home:-/nonexistent}/.cache
    fi
    cache=$base/plex-dds
    root=$cache/root-$(hash_of "$suite" "$(uname -m)" "$(packages)")
}

# --- Making it ---------------------------------------------------------------------------------------------

install_root_tools() {
    local missing=()
    have mmdebstrap || missing+=(mmdebstrap)
    have bwrap || missing+=(bubblewrap)
    is_administrator || have newuidmap || missing+=(uidmap)
    compgen -G '/usr/share/keyrings/debian-archive-keyring.*' >/dev/null || missing+=(debian-archive-keyring)
    [ ${#missing[@]} -eq 0 ] || install_on_host "${missing[@]}"
}

# Whether what is to be made can be entered at all.
require_sandbox() {
    local complaint
    complaint=$(bwrap --ro-bind / / --dev-bind /dev /dev --proc /proc true 2>&1 </dev/null) ||
        fail "the private Debian could not be entered here, as bwrap says:
    $complaint
An ordinary user needs a kernel that lets them make user namespaces (settings user.max_user_namespaces,
kernel.unprivileged_userns_clone, kernel.apparmor_restrict_unprivileged_userns). Inside a container,
packaging/Dockerfile is the better way."
}

# An ordinary user makes the files under a range of user ids of their own.
require_subordinate_ids() {
    is_administrator && return
    local user range
    user=$(id -un)
    range="^($user|$(id -u)):"
    if ! grep -Eqs "$range" /etc/subuid || ! grep -Eqs "$range" /etc/subgid; then
        fail "user $user has no range of subordinate user and group ids, which making a private Debian takes.
Run this as an administrator (with a range that is free), then try again:
    usermod --add-subuids 100000-165535 --add-subgids 100000-165535 $user"
    fi
}

# Runs mmdebstrap with the package list: bootstrap TARGET OPTION…
bootstrap() {
    local target=$1 list
    shift
    list=$(packages | paste -sd,)
    # shellcheck disable=SC2016 # expanded by the hook's shell
    mmdebstrap "$@" --quiet --variant=apt --include="$list" --dpkgopt=force-unsafe-io \
        --aptopt='APT::Install-Recommends "false"' --aptopt='Acquire::Languages "none"' \
        --essential-hook='printf "path-exclude=/usr/share/%s/*\n" doc man locale >"$1/etc/dpkg/dpkg.cfg.d/lean"' \
        "$suite" "$target" </dev/null
}

# Makes the root beside its place and moves it there, so that it is there whole or not at all.
make_root() {
    local making=$cache/making
    mkdir -- "$making"
    if is_administrator; then
        bootstrap "$making/root" --mode=root
    else
        # Through an archive, so that all files become the user's own.
        mkdir -- "$making/root"
        TMPDIR=$scratch bootstrap - --mode=unshare | tar -x -C "$making/root" --exclude='./dev/*'
    fi
    touch -- "$making/root/etc/resolv.conf" "$making/root/etc/hosts" # enter_root puts the machine's here
    mv -T -- "$making/root" "$root"
    rmdir -- "$making"
}

# Sets `scratch`, where mmdebstrap works for an ordinary user. Its other user ids must be able to reach it, as
# they often cannot the user's home.
make_scratch() {
    is_administrator && return
    scratch=/var/tmp/plex-dds-$(id -u)
    [ -d "$scratch" ] || mkdir -m 711 -- "$scratch"
    if [ -L "$scratch" ] || [ ! -O "$scratch" ]; then
        fail "$scratch is in the way: it belongs to somebody else"
    fi
}

# Removes what an interrupted call has left.
remove_left_overs() {
    rm -rf -- "$cache/making" "$cache"/old.*
    is_administrator && return
    local left
    for left in "$scratch"/*; do
        # First what belongs to the other user ids, under them; then the emptied directory, which they cannot remove.
        if ! rm -rf -- "$left" 2>/dev/null; then
            mmdebstrap --unshare-helper find "$left" -mindepth 1 -delete
            rm -rf -- "$left"
        fi
    done
}

# Removes the roots of other package lists, but for the one used last and those in use.
remove_old_roots() {
    local other
    find "$cache" -mindepth 1 -maxdepth 1 -name 'root-*' ! -path "$root" -printf '%T@ %p\n' |
        sort -rn | tail -n +2 | while read -r _ other; do
        flock --exclusive --nonblock "$other" mv -T -- "$other" "$cache/old.${other##*/}" || continue
        rm -rf -- "$cache/old.${other##*/}"
    done
}

# --- Using it ----------------------------------------------------------------------------------------------

# Takes the root into use, for as long as this process and those that it starts live.
use_root() {
    if [ ! -d "$root" ] || ! have bwrap; then
        return 1
    fi
    exec {in_use}<"$root"
    flock --shared "$in_use"
    [ "$root" -ef "/proc/$$/fd/$in_use" ] || return 1 # it was removed meanwhile
    touch -- "$root" # used last
}

prepare_root() {
    use_root && return
    mkdir -p -- "$cache" || fail "set XDG_CACHE_HOME to a directory that can keep 1.6 GB"
    (
        flock --nonblock 9 || { say 'waiting for another call that makes the private Debian' && flock 9; }
        install_root_tools
        [ ! -d "$root" ] || exit 0
        require_sandbox
        require_subordinate_ids
        make_scratch
        remove_left_overs
        trap remove_left_overs EXIT
        say "making a private Debian 13 in $cache (once; about a minute)"
        make_root
        remove_old_roots
    ) 9>>"$cache/lock"
    use_root || fail "$root is gone again; try once more"
}
