#!/bin/sh
# coverage.sh - line coverage of the library (tiff/ in particular) reached by running the fuzz corpora once.
# Usage: coverage.sh COVERAGE_BUILD_DIR CORPUS_DIR   (a build made with -fprofile-instr-generate -fcoverage-mapping)
set -eu
build=$1
corpus=$2
rm -f "$build"/*.profraw "$build/fuzz.profdata"
for t in decode_file lzw buffer_strings; do
    # -runs=0 executes every corpus input once and stops.
    LLVM_PROFILE_FILE="$build/$t.%p.profraw" "$build/fuzz/fuzz_$t" -runs=0 -timeout=60 "$corpus/$t" >/dev/null 2>&1
done
llvm-profdata-14 merge -sparse "$build"/*.profraw -o "$build/fuzz.profdata"
src=$(cd "$(dirname "$0")/.." && pwd)
echo "tiff/:"
llvm-cov-14 report "$build/libvktiff.so" -instr-profile="$build/fuzz.profdata" "$src/tiff"
echo "whole library:"
llvm-cov-14 report "$build/libvktiff.so" -instr-profile="$build/fuzz.profdata" "$src/tiff" "$src/shared" "$src/plugin" | tail -n 1
