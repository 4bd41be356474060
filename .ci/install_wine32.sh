#!/usr/bin/env bash
# install_wine32.sh - what the Windows configuration needs: the mingw-w64 cross compiler and a private 32-bit Wine
# Usage: install_wine32.sh [DIR]   (DIR default build/wine32; run as root)
#
# Debian's wine32:i386 cannot be installed next to the amd64 system here (the
# i386 security index is often missing, and several amd64 libraries carry
# security versions with no i386 twin, so apt refuses). Its files need none of
# that to run test programs: the packages are downloaded and unpacked into DIR,
# and cmake/wine32.sh runs their 32-bit loader with a prefix of its own.
set -euo pipefail

dir=${1:-build/wine32}
apt=(apt-get -o DPkg::Lock::Timeout=600)

missing=()
for p in g++-mingw-w64-i686-posix wine wine64 libz-mingw-w64; do
    dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    "${apt[@]}" update -qq || echo "install_wine32: apt-get update failed in part; installing from what is there" >&2
    DEBIAN_FRONTEND=noninteractive "${apt[@]}" install -y -qq --no-install-recommends "${missing[@]}"
fi

loader="$dir/usr/lib/wine/wine"
if [ -x "$loader" ]; then
    exit 0
fi

dpkg --print-foreign-architectures | grep -qx i386 || dpkg --add-architecture i386
# The i386 indexes are all that is wanted; a failing one (security) must not stop us.
"${apt[@]}" update -qq || echo "install_wine32: apt-get update failed in part; going on with the indexes it got" >&2

# The 32-bit half must match the installed 64-bit Wine exactly.
version=$(dpkg-query -W -f='${Version}' wine64)
debs=$(mktemp -d)
trap 'rm -rf "$debs"' EXIT
chown _apt "$debs" 2>/dev/null || chmod 777 "$debs" # apt downloads as its own user
(cd "$debs" && apt-get download "wine32:i386=$version" "libwine:i386=$version")
mkdir -p "$dir"
for deb in "$debs"/*.deb; do
    dpkg-deb -x "$deb" "$dir"
done
[ -x "$loader" ] || { echo "install_wine32: no 32-bit loader in the unpacked packages" >&2; exit 1; }
# Debian's Wine takes zlib from the mingw-w64 build as a built-in DLL; its
# install script puts it in place, which unpacking does not run.
cp /usr/i686-w64-mingw32/lib/zlib1.dll "$dir/usr/lib/i386-linux-gnu/wine/i386-windows/"
echo "install_wine32: 32-bit Wine $version in $dir"
