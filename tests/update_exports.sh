#!/usr/bin/env bash
# update_exports.sh - regenerates the expected export list from built libraries.
#   update_exports.sh LIB [LIB...]
# Give the native and the -m32 library: when their lists are identical one
# exports.txt is written (and per-arch lists removed), otherwise
# exports_<arch>.txt for each. Review the result as a git diff.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
check="$here/check_exports.sh"
[ $# -ge 1 ] || { echo "usage: $0 LIB [LIB...]" >&2; exit 2; }

tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT

archs=()
for lib in "$@"; do
    case "$(readelf -h "$lib" | sed -n 's/^ *Machine: *//p')" in
        *X86-64*) arch=x86_64 ;;
        *80386*) arch=i386 ;;
        *) echo "update_exports: unknown architecture of $lib" >&2; exit 2 ;;
    esac
    "$check" --list "$lib" > "$tmp/$arch.txt"
    archs+=("$arch")
done

same=1
for arch in "${archs[@]}"; do
    cmp -s "$tmp/${archs[0]}.txt" "$tmp/$arch.txt" || same=0
done

if [ "$same" = 1 ]; then
    cp "$tmp/${archs[0]}.txt" "$here/exports.txt"
    rm -f "$here"/exports_*.txt
    echo "update_exports: wrote exports.txt ($(wc -l < "$here/exports.txt") symbols)"
else
    for arch in "${archs[@]}"; do
        cp "$tmp/$arch.txt" "$here/exports_$arch.txt"
        echo "update_exports: wrote exports_$arch.txt ($(wc -l < "$here/exports_$arch.txt") symbols)"
    done
    rm -f "$here/exports.txt"
fi
