#!/bin/sh
# run_fuzzers.sh - runs fuzz targets one after another, each for a set time; new crashers are kept.
# Usage: run_fuzzers.sh BUILD_DIR SECONDS [TARGET...]   (default: every target)
# The corpus grows in BUILD_DIR/corpus/<target>/ (seeded by make_seeds.py when
# empty); inputs that crash, fail a harness check or time out land in
# BUILD_DIR/crashers/<target>/. Replayed by `make test` once copied into
# tests/regress/<target>/ under a name that says what they broke.
set -u
build=$1
seconds=$2
shift 2
targets=${*:-decode_file lzw buffer_strings}
here=$(cd "$(dirname "$0")" && pwd)
status=0
[ -d "$build/corpus/decode_file" ] || /usr/bin/python3 "$here/make_seeds.py" "$build/corpus" "${VKTIFF_TEST_BIN_DIR:-}"
for t in $targets; do
    mkdir -p "$build/corpus/$t" "$build/crashers/$t"
    before=$(ls "$build/crashers/$t" | wc -l)
    echo "fuzz_$t: ${seconds}s"
    # Fork mode keeps going after a crash or a time-out, so one run collects them all.
    "$build/fuzz/fuzz_$t" -fork=1 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 \
        -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -dict="$here/tiff.dict" \
        -artifact_prefix="$build/crashers/$t/" "$build/corpus/$t" >"$build/fuzz_$t.log" 2>&1
    after=$(ls "$build/crashers/$t" | wc -l)
    grep -E "^#[0-9]+: cov" "$build/fuzz_$t.log" | tail -n 1
    if [ "$after" -gt "$before" ]; then
        echo "fuzz_$t: $((after - before)) new crasher(s) in $build/crashers/$t/"
        status=1
    fi
done
exit $status
