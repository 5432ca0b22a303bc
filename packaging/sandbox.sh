# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2154 # environment.sh sets project, private-debian.sh root
# Enters the private Debian with bwrap: what a command sees in it, and how signals reach it. A part of environment.sh.

# Adds to `sandbox`: the private Debian's files.
show_root() {
    local entry
    sandbox+=(--dir /usr)
    # /usr piece by piece, which leaves room for a project or a prefix in /usr/local and /usr/src.
    for entry in "$root"/usr/* "$root/etc"; do
        case $entry in
        */usr/local | */usr/src) ;;
        *) sandbox+=(--ro-bind "$entry" "${entry#"$root"}") ;;
        esac
    done
    sandbox+=(--ro-bind "$root/var/lib/dpkg" /var/lib/dpkg) # for ./dev package, which asks what is installed
    for entry in "$root"/*; do
        [ ! -L "$entry" ] || sandbox+=(--symlink "$(readlink -- "$entry")" "/${entry##*/}")
    done
}

# Adds to `sandbox`: what is shared with this machine, and what is only there for the time being. The whole of
# /dev is shared, for a terminal that has its name and for /dev/shm, where Fast DDS keeps shared memory.
show_machine() {
    sandbox+=(
        --dev-bind /dev /dev --proc /proc --ro-bind-try /sys /sys --bind /tmp /tmp
        --ro-bind-try /etc/resolv.conf /etc/resolv.conf --ro-bind-try /etc/hosts /etc/hosts
        --tmpfs /run --tmpfs /var/tmp --tmpfs /home --dir /home/developer)
}

# Adds to `sandbox`: the directories of CMAKE_PREFIX_PATH, but for those that are there already.
show_prefixes() {
    local prefixes prefix
    IFS=: read -r -a prefixes <<<"${CMAKE_PREFIX_PATH:-}"
    for prefix in ${prefixes[@]+"${prefixes[@]}"}; do
        case $prefix/ in
        "$project"/*) ;;
        /usr/local/* | /usr/src/*) sandbox+=(--ro-bind "$prefix" "$prefix") ;;
        // | /usr/* | /etc/*) say "the private Debian has a $prefix of its own; that of this machine is not used" ;;
        *) sandbox+=(--ro-bind "$prefix" "$prefix") ;;
        esac
    done
}

# Adds to `sandbox`: the project, and where it is a work tree of a Git repository elsewhere, that repository.
show_project() {
    sandbox+=(--bind "$project" "$project")
    [ -f "$project/.git" ] || return 0
    local repository
    repository=$(cd -- "$project" && sed -n 's/^gitdir: //p' .git)
    repository=$(cd -- "$project" && cd -- "$repository" && cd -- "$(cat commondir 2>/dev/null || echo .)" && pwd -P) ||
        return 0
    sandbox+=(--bind "$repository" "$repository")
}

# Adds to `sandbox`: the environment variables, only those that are meant to get through.
show_variables() {
    sandbox+=(--clearenv
        --setenv PATH /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
        --setenv HOME /home/developer
        --setenv LANG C.UTF-8
        --setenv PLEX_ENV host)
    local name
    for name in $(compgen -e); do
        case $name in
        LANG | LC_*)
            # Languages are not installed, and programs may refuse to start in one that is not there.
            [[ ! ${!name} =~ ^(C|POSIX)(\.|$) ]] || sandbox+=(--setenv "$name" "${!name}")
            ;;
        CI | TERM | CMAKE_PREFIX_PATH | [ALTU]*SAN_OPTIONS | CTEST_* | FASTDDS_* | FASTRTPS_*)
            sandbox+=(--setenv "$name" "${!name}")
            ;;
        esac
    done
}

# Runs a command inside the private Debian, and ends with its exit code: enter_root COMMAND…
enter_root() {
    local sandbox=(--die-with-parent) directory=$project
    case $(pwd -P)/ in
    "$project"/* | /tmp/*) directory=$(pwd -P) ;;
    esac
    show_root
    show_machine
    show_prefixes
    show_project
    show_variables
    ! is_administrator || sandbox+=(--cap-add ALL)
    sandbox+=(--remount-ro / --chdir "$directory")
    # bwrap itself lets signals pass it by, so that the command can tidy up: bwrap's end would be its end, too.
    supervise bwrap "${sandbox[@]}" -- env --default-signal=INT,QUIT,TERM,HUP "$@"
}

# Runs a command, hands signals to the child of it, and ends with its exit code.
supervise() {
    local status signalled
    (trap '' INT QUIT TERM HUP && exec "$@") <&0 &
    supervised=$!
    trap 'signalled=yes; hand_on INT' INT
    trap 'signalled=yes; hand_on TERM' TERM
    trap 'signalled=yes; hand_on HUP' HUP
    while :; do
        signalled=
        status=0
        wait "$supervised" || status=$?
        [ -n "$signalled" ] || exit "$status"
    done
}

hand_on() {
    local signal=$1 group terminal_group children
    # Ctrl-C has reached the child by itself, as it has every process in the foreground of the terminal.
    read -r _ _ _ _ group _ _ terminal_group _ <"/proc/$$/stat"
    [ "$signal" != INT ] || [ "$group" != "$terminal_group" ] || return 0
    children=$(cat "/proc/$supervised/task/$supervised/children" 2>/dev/null) || return 0
    # shellcheck disable=SC2086 # a list
    [ -z "$children" ] || kill -s "$signal" $children 2>/dev/null || true
}
