#!/bin/sh
# install_peer32.sh - installs the 32-bit libtiff that the -m32 benchmark runs beside (Debian, as root).
# The comparison program is compiled against libtiff-dev's headers, so that
# comes too. Nothing to do when both are already there. The i386 lists of some
# mirrors lag behind the amd64 ones (a security index may fail to download);
# a multi-arch library must have one version in both architectures, so such
# a library is pinned to the newest version that both lists offer, and with
# it the installed packages built from the same source (its -dev package
# requires that exact version).
set -eu

have() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

need=""
have libtiff6:i386 || need="libtiff6:i386"
have libtiff-dev || need="$need libtiff-dev"
if [ -z "$need" ]; then
    exit 0
fi
aptget() { apt-get -o DPkg::Lock::Timeout=600 "$@"; }

if ! dpkg --print-foreign-architectures | grep -qx i386; then
    dpkg --add-architecture i386
fi
aptget update || echo "install_peer32.sh: some package lists failed to download; going on with the rest" >&2

# Versions of package $1 listed for architecture $2, newest first.
versions() { apt-cache madison "$1:$2" | awk -v a="$2" '$0 ~ (" " a " Packages") {print $3}'; }

pins=""
for dep in $(apt-cache depends libtiff6:i386 | awk '/Depends:/ {sub(/:i386$/, "", $2); print $2}'); do
    have "$dep:amd64" || continue
    installed=$(dpkg-query -W -f='${Version}' "$dep:amd64")
    i386=$(versions "$dep" i386 | head -n 1)
    [ -n "$i386" ] && [ "$installed" != "$i386" ] || continue
    common=$(versions "$dep" i386 | while read -r v; do
        versions "$dep" amd64 | grep -qxF "$v" && { echo "$v"; break; }
    done)
    [ -n "$common" ] || continue
    pins="$pins $dep:i386=$common"
    source=$(dpkg-query -W -f='${source:Package}' "$dep:amd64")
    for sibling in $(dpkg-query -W -f='${binary:Package} ${source:Package} ${Status}\n' | \
        awk -v s="$source" '$2 == s && $NF == "installed" {print $1}'); do
        case "$sibling" in *:i386) continue ;; esac
        pins="$pins ${sibling%:amd64}:amd64=$common"
    done
done
# shellcheck disable=SC2086
aptget install -y --allow-downgrades $need $pins
