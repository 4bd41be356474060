#!/usr/bin/env bash
# check_exports.sh - compares the symbols libvktiff.so (or vktiff.dll) exports with the expected list in this directory.
#   check_exports.sh LIB          exit 0 when they match, else print a diff (- expected, + exported) and exit 1
#   check_exports.sh --list LIB   print the exported list (demangled, sorted, one per line)
# The expected list is exports_<arch>.txt (arch x86_64, i386 or win32) when present, else exports.txt.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"

# Defined dynamic symbols of types T, W, V, R, D, B: addresses, types and
# version/undefined entries dropped, and so are the markers that sanitizer
# builds add (ASan's ODR indicators), which are not part of the interface.
list_exports() {
    if is_pe "$1"; then
        list_pe_exports "$1"
        return
    fi
    nm -D --defined-only --demangle "$1" \
        | sed -n 's/^[0-9a-fA-F]* [TWVRDB] //p' \
        | grep -v -E '^__(odr_asan|asan|ubsan|tsan|sanitizer)' \
        | sort -u
}

is_pe() {
    [ "$(od -An -c -N 2 "$1" | tr -d ' ')" = MZ ]
}

# A DLL's export table (the name pointer table of objdump -p): names as GCC
# mangled them, demangled like nm's. The eight C entry points carry no cdecl
# underscore and no @N there.
list_pe_exports() {
    i686-w64-mingw32-objdump -p "$1" \
        | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] //p' \
        | i686-w64-mingw32-c++filt -n \
        | sort -u
}

# A DLL stands alone: its C++ runtime is linked in, and it imports only the
# DLLs every Windows has.
pe_foreign_imports() {
    i686-w64-mingw32-objdump -p "$1" | sed -n 's/^\s*DLL Name: //p' | grep -v -i -x -E 'kernel32\.dll|msvcrt\.dll' || true
}

lib_arch() {
    if is_pe "$1"; then
        echo win32
        return
    fi
    case "$(readelf -h "$1" | sed -n 's/^ *Machine: *//p')" in
        *X86-64*) echo x86_64 ;;
        *80386*) echo i386 ;;
        *) echo unknown ;;
    esac
}

if [ "${1:-}" = "--list" ]; then
    [ $# -eq 2 ] || { echo "usage: $0 --list LIB" >&2; exit 2; }
    list_exports "$2"
    exit 0
fi
[ $# -eq 1 ] || { echo "usage: $0 LIB | --list LIB" >&2; exit 2; }
lib="$1"
[ -f "$lib" ] || { echo "check_exports: no library at $lib" >&2; exit 2; }

expected="$here/exports_$(lib_arch "$lib").txt"
[ -f "$expected" ] || expected="$here/exports.txt"
[ -f "$expected" ] || { echo "check_exports: no expected list in $here" >&2; exit 2; }

if is_pe "$lib" && [ -n "$(pe_foreign_imports "$lib")" ]; then
    echo "check_exports: $(basename "$lib") imports DLLs beside KERNEL32 and msvcrt:" $(pe_foreign_imports "$lib") >&2
    exit 1
fi
if diff -u --label expected --label exported "$expected" <(list_exports "$lib"); then
    echo "check_exports: $(wc -l < "$expected") symbols as expected ($(basename "$expected"))"
else
    echo "check_exports: exported symbols differ from $(basename "$expected"); regenerate with update_exports.sh if intended" >&2
    exit 1
fi
