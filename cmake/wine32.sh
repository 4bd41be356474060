#!/bin/sh
# wine32.sh - runs a 32-bit Windows program under the private Wine that .ci/install_wine32.sh unpacked
# Usage: wine32.sh WINE_DIR PROGRAM [ARG...]
# The prefix and the wineserver are the folder's own, so that nothing of a
# system Wine or of the user's ~/.wine is touched; the first run creates the
# prefix (some seconds).
set -eu
root=$(cd "$1" 2>/dev/null && pwd) || {
    echo "wine32.sh: no 32-bit Wine in $1; run .ci/install_wine32.sh $1 (as root)" >&2
    exit 2
}
shift
export WINELOADER="$root/usr/lib/wine/wine"
export WINESERVER=/usr/lib/wine/wineserver64
export WINEPREFIX="$root/prefix"
export WINEARCH=win32
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$root/prefix.ready" ]; then
    # Tests run in parallel: one of them makes the prefix and waits until
    # Wine's set-up processes are done (wineboot itself may answer 53 under
    # this loader; the prefix is made all the same), the others wait for it.
    flock "$root/prefix.lock" sh -c '[ -f "$0/prefix.ready" ] ||
        { "$WINELOADER" wineboot -i; "$WINESERVER" -w; touch "$0/prefix.ready"; }' "$root" >/dev/null 2>&1
fi
exec "$WINELOADER" "$@"
