#!/usr/bin/env bash
# make_samples.sh - writes the small sample TIFFs in samples/ with independent tools (numpy+tifffile, libtiff's tiffcp).
# Run once; the results are committed. Needs /usr/bin/python3 with numpy and tifffile, and tiffcp.
set -euo pipefail
cd "$(dirname "$0")"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

/usr/bin/python3 - "$tmp" <<'PY'
import sys
import numpy as np
import tifffile

tmp = sys.argv[1]
w, h = 96, 64
y, x = np.mgrid[0:h, 0:w].astype(np.float64)
# A smooth colour field with a ring, so orientation and channel order are easy to judge by eye.
r = x / (w - 1)
g = y / (h - 1)
b = 0.5 + 0.5 * np.sin(np.hypot(x - w / 2, y - h / 2) / 5.0)
a = np.clip(1.2 - np.hypot(x - w / 2, y - h / 2) / (w / 2), 0, 1)
rgb = np.stack([r, g, b], axis=-1)
rgba = np.stack([r, g, b, a], axis=-1)

def q8(v): return np.round(v * 255).astype(np.uint8)
def q16(v): return np.round(v * 65535).astype(np.uint16)

tifffile.imwrite(f"{tmp}/rgb8.tif", q8(rgb), photometric="rgb")
tifffile.imwrite(f"{tmp}/rgba8.tif", q8(rgba), photometric="rgb", extrasamples=[2])
tifffile.imwrite("rgb16.tif", q16(rgb), photometric="rgb")
tifffile.imwrite("rgba16.tif", q16(rgba), photometric="rgb", extrasamples=[2])
# Over-range float: brightness rises to 3.0 towards the right, which the false-colour display shows as bands.
hdr = (rgb * (0.5 + 2.5 * (x / (w - 1)))[..., None]).astype(np.float32)
tifffile.imwrite("float_overrange.tif", hdr, photometric="rgb")
PY

tiffcp -c none "$tmp/rgb8.tif" rgb8.tif
tiffcp -c none "$tmp/rgba8.tif" rgba8.tif
tiffcp -c lzw "$tmp/rgb8.tif" rgb8_lzw.tif
tiffcp -c lzw:2 -r 16 "$tmp/rgba8.tif" rgba8_lzw_predict.tif
tiffcp -c packbits -r 8 "$tmp/rgb8.tif" rgb8_packbits.tif
tiffcp -c lzw -t -w 32 -l 32 "$tmp/rgb8.tif" rgb8_tiled_lzw.tif
tiffcp -c none -B -r 16 "$tmp/rgba8.tif" rgba8_bigendian.tif

# A broken file: a TIFF whose byte-order mark is damaged.
head -c 4096 rgb8.tif > broken.tif
printf 'XX' | dd of=broken.tif bs=1 seek=0 conv=notrunc status=none
ls -l *.tif
