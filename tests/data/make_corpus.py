#!/usr/bin/python3
"""Writes the tool-made test files into the folder given: 8-bit RGB and RGBA by
PIL, 16-bit and float by tifffile, each copied by tiffcp into every layout and
compression the plug-in reads. Beside them, STEM.samples holds the samples the
tools wrote (little-endian, interleaved) for every file named STEM_*.tif; PIL
must read the same 8-bit samples back from each copy. Exit status 77 when a
tool is missing."""
import os
import shutil
import subprocess
import sys

try:
    import numpy as np
    import tifffile
    from PIL import Image
except ImportError:
    sys.exit(77)
if shutil.which('tiffcp') is None:
    sys.exit(77)

out = sys.argv[1]
os.makedirs(out, exist_ok=True)
W, H = 37, 29
rng = np.random.default_rng(8)

COPIES = {
    'strips_none': ['-c', 'none', '-r', '5'],
    'strips_lzw': ['-c', 'lzw', '-r', '5'],
    'strips_lzw_predict': ['-c', 'lzw:2', '-r', '5'],
    'strips_packbits': ['-c', 'packbits', '-r', '5'],
    'one_strip_lzw': ['-c', 'lzw', '-r', str(H)],
    'tiles_none': ['-c', 'none', '-t', '-w', '16', '-l', '16'],
    'tiles_lzw': ['-c', 'lzw', '-t', '-w', '16', '-l', '16'],
    'tiles_lzw_predict': ['-c', 'lzw:2', '-t', '-w', '16', '-l', '16'],
}


def picture(channels, dtype, scale):
    """Random samples with flat bands and ramps, so that runs and strings occur."""
    a = rng.integers(0, scale, (H, W, channels)).astype(dtype)
    a[3:7, :, :] = dtype(scale // 7)
    a[20:, :10, :] = (np.arange(10)[None, :, None] * (scale // 11)).astype(dtype)
    return a


def copies(original, stem, names, big_endian, pixels=None):
    for name in names:
        args = COPIES[name] + (['-B'] if big_endian else ['-L'])
        path = os.path.join(out, stem + '_' + name + '.tif')
        subprocess.run(['tiffcp'] + args + [original, path], check=True)
        if pixels is not None and not np.array_equal(np.asarray(Image.open(path)), pixels):
            sys.exit('PIL reads other samples from ' + path)


for mode, channels in (('RGB', 3), ('RGBA', 4)):
    original = os.path.join(out, 'pil_' + mode.lower() + '8.tif')
    a = picture(channels, np.uint8, 256)
    Image.fromarray(a, mode).save(original, compression=None)
    a.tofile(os.path.join(out, mode.lower() + '8.samples'))
    for big in (False, True):
        copies(original, mode.lower() + '8' + ('_mm' if big else ''), COPIES, big, a)

strip_copies = [n for n in COPIES if not n.startswith('tiles')]
for bits, dtype, scale in ((16, np.uint16, 65536), (32, np.float32, 1)):
    for channels in (3, 4):
        if dtype == np.float32:
            a = (rng.random((H, W, channels)) * 1.4 - 0.2).astype(np.float32)
            a[3:7, :, :] = 0.5
            a[0, :5, 0] = [np.nan, np.inf, -np.inf, 1.0, -0.0]
        else:
            a = picture(channels, dtype, scale)
        stem = 'tifffile_%d_%d' % (bits, channels)
        a.astype(a.dtype.newbyteorder('<')).tofile(os.path.join(out, stem + '.samples'))
        original = os.path.join(out, stem + '.tif')
        tifffile.imwrite(original, a, photometric='rgb', planarconfig='contig',
                         extrasamples=[2] if channels == 4 else None)
        for big in (False, True):
            copies(original, stem + ('_mm' if big else ''), strip_copies, big)
