#!/bin/sh
# summary.sh - one closing summary of the test configurations, from the ctest.xml each ctest run wrote.
# Usage: summary.sh BUILD_DIR CONFIG...   Exits 1 when a configuration failed, ran nothing or left no results.
set -eu
build=$1; shift
# The first NAME="N" of the file belongs to its <testsuite> element.
attr() { grep -o "\\b$1=\"[0-9]*\"" "$2" | head -n 1 | tr -dc 0-9; }
total=0 passed=0 failed=0 skipped=0 broken=""
echo
echo "== summary of $# configurations =="
for c in "$@"; do
    xml=$build/$c/ctest.xml
    if [ ! -s "$xml" ]; then
        echo "  $c: no results (the build or ctest failed before the tests ran)"
        broken="$broken $c"
        continue
    fi
    t=$(attr tests "$xml"); f=$(attr failures "$xml"); s=$(attr skipped "$xml"); d=$(attr disabled "$xml")
    s=$((${s:-0} + ${d:-0}))
    p=$((t - f - s))
    echo "  $c: $t tests, $p passed, $f failed, $s skipped"
    [ "$f" -eq 0 ] && [ "$t" -gt 0 ] || broken="$broken $c"
    total=$((total + t)) passed=$((passed + p)) failed=$((failed + f)) skipped=$((skipped + s))
done
echo "  $# configurations, $total tests run${broken:+; failing:$broken}"
echo "tests: $passed passed, $failed failed, $skipped skipped"
[ -z "$broken" ]
