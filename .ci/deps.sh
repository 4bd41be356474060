#!/bin/sh
# deps.sh - the Debian packages each build configuration needs, installed or checked in one place.
#
#   .ci/deps.sh install GROUP...   install what the named groups lack (as root, or through sudo)
#   .ci/deps.sh check GROUP...     exit 1, naming the missing packages, if any group lacks one
#   .ci/deps.sh list GROUP...      print the packages of the groups
#
# Groups: run (library and vkhost), native, m32, asan, asan32, tsan (each a test
# configuration), test (every test configuration), and any group a new
# configuration adds to the table below. Only Debian and its derivatives are
# handled: elsewhere (no dpkg) nothing is installed and checks pass.
set -eu

packages() {
    case $1 in
    run) echo make cmake g++ libpng-dev ;;
    # The oracles write and read TIFFs with PIL, tifffile and tiffcp; clang
    # builds the fuzz smoke run (its sanitizer and libFuzzer runtimes are only
    # recommended by clang, so named here).
    native) echo make cmake g++ libpng-dev libgtest-dev python3-pil python3-numpy python3-tifffile libtiff-tools \
        clang libclang-rt-dev ;;
    m32) echo make cmake g++ g++-multilib libgtest-dev python3-pil python3-numpy python3-tifffile libtiff-tools ;;
    asan) echo make cmake g++ libpng-dev libgtest-dev python3-pil python3-numpy python3-tifffile libtiff-tools ;;
    asan32) echo make cmake g++ g++-multilib libgtest-dev python3-pil python3-numpy python3-tifffile libtiff-tools ;;
    tsan) echo make cmake g++ libgtest-dev ;;
    fuzz) echo make cmake clang libclang-rt-dev llvm python3 ;;
    bench) echo make cmake g++ g++-multilib libtiff-dev libtiff-tools python3-numpy python3-tifffile ;;
    test) for g in native m32 asan asan32 tsan; do packages $g; done ;;
    # A configuration added later puts its group here (and into `test`).
    *) echo "deps.sh: unknown group $1" >&2; return 1 ;;
    esac
}

wanted() {
    for g in "$@"; do packages "$g" || exit 2; done | tr ' ' '\n' | sed '/^$/d' | sort -u | tr '\n' ' '
}

missing() {
    command -v dpkg-query >/dev/null 2>&1 || return 0
    for p in $(wanted "$@"); do
        [ "$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null)" = "install ok installed" ] || printf '%s ' "$p"
    done
}

apt_install() {
    as_root=$1; shift
    # With the i386 architecture added (make win32, make bench), some mirrors
    # fail to serve its security index: carry on with the lists that came.
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 update -qq ||
        echo "deps.sh: apt-get update failed in part; installing from the package lists it has" >&2
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq \
        --no-install-recommends "$@"
}

[ $# -ge 2 ] || { sed -n '2,12p' "$0" >&2; exit 2; }
action=$1; shift
for g in "$@"; do packages "$g" >/dev/null || exit 2; done
case $action in
list)
    wanted "$@"; echo ;;
check)
    lacking=$(missing "$@")
    if [ -n "$lacking" ]; then
        echo "missing for $*: ${lacking% } (make test or make run installs them; or as root: apt-get install --no-install-recommends ${lacking% })" >&2
        exit 1
    fi ;;
install)
    lacking=$(missing "$@")
    [ -n "$lacking" ] || exit 0
    if [ "$(id -u)" = 0 ]; then
        as_root=""
    elif command -v sudo >/dev/null 2>&1 && { sudo -n true 2>/dev/null || [ -t 0 ]; }; then
        as_root=sudo
    else
        echo "deps.sh: missing for $*, and neither root nor sudo here to install them; as root: apt-get install --no-install-recommends ${lacking% }" >&2
        exit 1
    fi
    echo "installing for $*: ${lacking% }"
    apt_install "$as_root" $lacking ;;
*)
    echo "deps.sh: unknown action $action (install, check or list)" >&2; exit 2 ;;
esac
