# make_inputs.py - writes the benchmark images: a photo-like 4096 x 4096 picture in every layout the plug-in reads.
# Usage: /usr/bin/python3 make_inputs.py OUT_DIR   (needs numpy, tifffile and libtiff's tiffcp)
# The raw pictures come from tifffile, every variant from tiffcp. Existing files are kept.
import os
import subprocess
import sys

import numpy as np
import tifffile

SIZE = 4096
out = sys.argv[1]
os.makedirs(out, exist_ok=True)
rng = np.random.default_rng(20240601)


def upsample(grid):
    """Bilinear enlargement of an (n+1) x (n+1) x C grid to SIZE x SIZE x C."""
    n = grid.shape[0] - 1
    t = np.linspace(0.0, n, SIZE, dtype=np.float32)
    i0 = np.minimum(t.astype(np.int64), n - 1)
    f = (t - i0)[:, None, None]
    rows = grid[i0] * (1 - f) + grid[i0 + 1] * f
    f = (t - i0)[None, :, None]
    return rows[:, i0] * (1 - f) + rows[:, i0 + 1] * f


def field(channels):
    """Smooth structure at several scales, channels strongly correlated like a photograph's colours."""
    acc = np.zeros((SIZE, SIZE, channels), np.float32)
    for cells, weight in ((4, 0.45), (16, 0.25), (64, 0.15), (256, 0.08), (1024, 0.04)):
        luma = rng.random((cells + 1, cells + 1, 1), dtype=np.float32)
        chroma = rng.random((cells + 1, cells + 1, channels), dtype=np.float32)
        acc += weight * upsample(0.8 * luma + 0.2 * chroma)
    lo, hi = acc.min(), acc.max()
    return (acc - lo) / (hi - lo)


def grain(shape, sigma):
    return rng.normal(0.0, sigma, shape).astype(np.float32)


def raw_images():
    base = field(4)
    alpha = np.clip(0.6 + 0.8 * field(1)[..., 0], 0.0, 1.0)  # mostly opaque, soft edges
    rgb = np.clip(base[..., :3] + grain((SIZE, SIZE, 3), 0.006), 0.0, 1.0)
    rgba = np.concatenate([rgb, alpha[..., None]], axis=-1)
    tifffile.imwrite(f"{out}/raw_rgb8.tif", np.round(rgb * 255).astype(np.uint8), photometric="rgb")
    tifffile.imwrite(f"{out}/raw_rgba8.tif", np.round(rgba * 255).astype(np.uint8), photometric="rgb",
                     extrasamples=[2])
    deep = np.clip(base[..., :3] + grain((SIZE, SIZE, 3), 0.004), 0.0, 1.0)
    tifffile.imwrite(f"{out}/raw_rgb16.tif", np.round(deep * 65535).astype(np.uint16), photometric="rgb")
    tifffile.imwrite(f"{out}/raw_rgbf.tif", (deep * 1.2).astype(np.float32), photometric="rgb")


LAYOUTS = {"s16": ["-r", "16"], "s1": ["-r", str(SIZE)], "t256": ["-t", "-w", "256", "-l", "256"]}
CODECS = {"none": "none", "lzw": "lzw", "lzwp": "lzw:2", "pb": "packbits"}

VARIANTS = []
for kind in ("rgb8", "rgba8"):
    for codec in ("none", "lzw", "lzwp", "pb"):
        for layout in ("s16", "s1", "t256"):
            # Tiled PackBits is a file the plug-in refuses (status 4) by design.
            if (codec, layout) != ("pb", "t256"):
                VARIANTS.append((kind, codec, layout))
VARIANTS += [("rgb16", codec, "s16") for codec in ("none", "lzw", "lzwp", "pb")] + [("rgb16", "lzw", "s1")]
VARIANTS += [("rgbf", codec, "s16") for codec in ("none", "lzw", "pb")]

if not all(os.path.exists(f"{out}/raw_{k}.tif") for k in ("rgb8", "rgba8", "rgb16", "rgbf")):
    raw_images()
for kind, codec, layout in VARIANTS:
    path = f"{out}/{kind}_{codec}_{layout}.tif"
    if os.path.exists(path):
        continue
    subprocess.run(["tiffcp", "-c", CODECS[codec]] + LAYOUTS[layout] + [f"{out}/raw_{kind}.tif", path + ".part"],
                   check=True)
    os.replace(path + ".part", path)
with open(f"{out}/variants.txt", "w") as listing:
    for kind, codec, layout in VARIANTS:
        listing.write(f"{kind}_{codec}_{layout}\n")
