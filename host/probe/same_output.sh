#!/bin/sh
# same_output.sh - runs a command and compares what it prints with a reference file; 77 (skipped) without the reference
# Usage: same_output.sh REFERENCE COMMAND [ARG...]
set -eu
reference=$1
shift
if [ ! -f "$reference" ]; then
    echo "no reference output at $reference (make probe-m32 writes it)"
    exit 77
fi
out=$(mktemp)
trap 'rm -f "$out"' EXIT
"$@" > "$out"
if diff -u "$reference" "$out"; then
    echo "same output as $reference ($(wc -l < "$reference") lines)"
else
    exit 1
fi
