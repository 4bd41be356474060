#!/bin/sh
# smoke.sh - builds the fuzz targets and runs each for a few seconds (about 20 s in all); exits 77 (skipped)
# without clang, or fails where CI=true, since the install step brings clang.
# Usage: smoke.sh SOURCE_DIR BUILD_DIR [TEST_BIN_DIR]   (TEST_BIN_DIR: built decoder tests, for seeds)
set -eu
src=$1
build=$2
tests=${3:-}
if ! command -v clang++ >/dev/null 2>&1; then
    if [ "${CI:-}" = true ]; then
        echo "clang++ not found (install clang): fuzz smoke failed"
        exit 1
    fi
    echo "clang++ not found (install clang): fuzz smoke skipped"
    exit 77
fi
nice -n 19 cmake -S "$src" -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_BUILD_FUZZERS=ON -DVKTIFF_BUILD_HOST=OFF -DVKTIFF_BUILD_TESTS=OFF \
    "-DVKTIFF_SANITIZE=address;undefined" >/dev/null
nice -n 19 cmake --build "$build" -j 2 >/dev/null
[ -d "$build/corpus/decode_file" ] || /usr/bin/python3 "$src/fuzz/make_seeds.py" "$build/corpus" "$tests"
# A fixed seed keeps the run the same from one test to the next; the memory
# limit leaves room for the largest scratch a header may ask for (just under
# 2 GiB) with the sanitizers' share on top, as the long runs do.
for t in decode_file lzw buffer_strings; do
    if ! "$build/fuzz/fuzz_$t" -seed=1 -max_total_time=7 -timeout=10 -rss_limit_mb=4096 -dict="$src/fuzz/tiff.dict" \
        -artifact_prefix="$build/" "$build/corpus/$t" 2>"$build/smoke_$t.log"; then
        tail -n 40 "$build/smoke_$t.log"
        exit 1
    fi
    grep -E "^Done" "$build/smoke_$t.log"
done
