# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The environment that the project is built in: enter_environment chooses it, prepares it and enters it,
# describe_environment says how. For ./dev, which gets `project`, the project's directory, from here.

project=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
. "${BASH_SOURCE[0]%/*}/private-debian.sh"
. "${BASH_SOURCE[0]%/*}/sandbox.sh"

describe_environment() {
    cat <<'TEXT'
The environment is the first of these that fits:
  host    this machine, when CMake finds all packages here
  debian  this machine, when it is Debian 13 or later: missing packages of packaging/packages.txt are installed
  root    a private Debian 13 with these packages, made once (1.6 GB, about a minute) with mmdebstrap and entered
          with bwrap; those two are installed where missing, and nothing else on this machine changes
Once a private Debian is there for the present package list, it is used without looking further.

Inside the private Debian the project is writable, the system is not. Network, processes, devices, shared memory
and /tmp are this machine's own, so that programs of several calls meet. HOME is empty and forgotten afterwards.
The package lists of two branches may be in use at a time; older private Debians are removed.

Variables:
  PLEX_ENV            host, debian or root: use this one, without looking whether it fits
  CMAKE_PREFIX_PATH   directories to look in first, for example your own build of Fast DDS, separated by : or ;
                      built apart, in build/PRESET-HASH, and visible in the private Debian
  XDG_CACHE_HOME      where the private Debian lies (in plex-dds/), default ~/.cache
  CI, TERM, LANG, LC_*, ASAN_OPTIONS, LSAN_OPTIONS, TSAN_OPTIONS, UBSAN_OPTIONS, CTEST_*, FASTDDS_*, FASTRTPS_*
                      are the only others that reach into the private Debian
TEXT
}

say() {
    printf './dev: %s\n' "$*" >&2
}

fail() {
    say "$@"
    exit 1
}

have() {
    command -v "$1" >/dev/null
}

is_administrator() {
    [ "$(id -u)" = 0 ]
}

hash_of() {
    printf '%s\n' "$@" | sha256sum | cut -c1-16
}

packages() {
    sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$project/packaging/packages.txt"
}

# Brings CMAKE_PREFIX_PATH into the form that CMake reads in the environment: absolute, separated by colons.
normalise_prefix_path() {
    local given prefix joined=
    IFS=':;' read -r -a given <<<"${CMAKE_PREFIX_PATH:-}"
    for prefix in ${given[@]+"${given[@]}"}; do
        [ -n "$prefix" ] || continue
        [ -d "$prefix" ] || fail "CMAKE_PREFIX_PATH names $prefix, which is no directory"
        joined+=${joined:+:}$(cd -- "$prefix" && pwd)
    done
    unset CMAKE_PREFIX_PATH
    [ -z "$joined" ] || export CMAKE_PREFIX_PATH=$joined
}

# --- Which environment -------------------------------------------------------------------------------------

# Asks CMake whether a C++20 compiler and all packages are here.
ask_cmake() {
    local probe=$1
    cp -- "$project/cmake/PlexDependencies.cmake" "$probe"
    printf '%s\n' '#include <concepts>' 'int main() { return std::integral<int> ? 0 : 1; }' >"$probe/probe.cpp"
    cat >"$probe/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(probe LANGUAGES CXX)
include(PlexDependencies.cmake)
find_package(GTest CONFIG REQUIRED)
find_package(CLI11 CONFIG REQUIRED)
find_package(CycloneDDS CONFIG REQUIRED)
find_package(ftxui CONFIG REQUIRED)
find_package(lz4 CONFIG REQUIRED)
find_package(nlohmann_json CONFIG REQUIRED)
find_package(zstd CONFIG REQUIRED)
add_executable(probe probe.cpp)
target_compile_features(probe PRIVATE cxx_std_20)
CMAKE
    cmake -G Ninja -S "$probe" -B "$probe/build" && cmake --build "$probe/build"
}

# The same, with a "yes" remembered for as long as nothing that it rests on changes.
host_has_everything() {
    have cmake && have ninja && have c++ && have git || return 1
    local installed answer probe status=0
    installed=$(stat -c %Y /var/lib/dpkg/status 2>/dev/null) || true
    answer=$cache/host-$(hash_of "$installed" "$PATH" "${CXX:-}" "${CMAKE_PREFIX_PATH:-}" \
        "$(cat -- "$project/cmake/PlexDependencies.cmake")" "$(declare -f ask_cmake)")
    [ ! -e "$answer" ] || return 0
    probe=$(mktemp -d)
    ask_cmake "$probe" >/dev/null 2>&1 </dev/null || status=1
    rm -rf -- "$probe"
    [ $status -ne 0 ] || { mkdir -p -- "$cache" && touch -- "$answer"; } 2>/dev/null || true
    return $status
}

is_debian_13_or_later() {
    [ -r /etc/os-release ] || return 1
    (
        # shellcheck source=/dev/null
        . /etc/os-release
        [ "${ID:-}" = debian ] || exit 1
        [ -n "${VERSION_ID:-}" ] || exit 0 # what is to become the next release has no number yet
        [ "${VERSION_ID%%.*}" -ge 13 ]
    )
}

# Sets `environment`, and for all but a host that was asked for, `cache` and `root`.
choose_environment() {
    environment=${PLEX_ENV:-}
    case $environment in
    host) return ;;
    debian | root | '') locate_cache ;;
    *) fail "PLEX_ENV must be host, debian or root, not \"$environment\"" ;;
    esac
    if [ -n "$environment" ]; then
        return
    elif [ -d "$root" ]; then
        environment=root
    elif host_has_everything; then
        environment=host
    elif is_debian_13_or_later; then
        environment=debian
    else
        environment=root
    fi
}

# --- This machine ------------------------------------------------------------------------------------------

# Installs packages on this machine, or says what to run.
install_on_host() {
    local as_administrator=()
    have apt-get || fail "missing on this machine, which has no apt-get; install by other means: $*"
    if ! is_administrator; then
        sudo -n true 2>/dev/null || fail "missing on this machine: $*
Run this as an administrator, then try again:
    apt-get update && apt-get install --no-install-recommends $*"
        as_administrator=(sudo -n)
    fi
    say "installing on this machine: $*"
    "${as_administrator[@]}" apt-get -qq update >&2 </dev/null
    "${as_administrator[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -y -o DPkg::Lock::Timeout=300 install --no-install-recommends "$@" >&2 </dev/null
}

prepare_debian() {
    have dpkg-query || fail 'this machine has no Debian packages; try PLEX_ENV=root'
    local package missing=()
    for package in $(packages); do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] || install_on_host "${missing[@]}"
}

# --- All of it ---------------------------------------------------------------------------------------------

# Prepares the environment. Where that is this machine, returns; where it is the private Debian, carries out the
# command given there, and ends with its exit code.
enter_environment() {
    [ -e /proc/self/fd/0 ] || exec </dev/null
    normalise_prefix_path
    choose_environment
    case $environment in
    debian) prepare_debian ;;
    root)
        prepare_root
        enter_root "$@"
        ;;
    esac
}
