#!/usr/bin/python3
"""make_seeds.py - writes the seed corpora of the fuzz targets into OUT/<target>/.

Usage: make_seeds.py OUT [TEST_BIN_DIR]

Seed images come from the one list SOURCES: a folder of the repository, the
files a built test loads (collected through VKTIFF_DUMP_DIR: test_golden's
decode cases are every case of tests/data/decode_cases.txt, all depths), and
the files a script writes (tests/data/make_corpus.py: PIL, tifffile and tiffcp
images of all depths). A missing folder, program or tool, or a source that
gives no image, stops the script: a corpus quietly short of a family of
images would fuzz less than it seems to.
Each file becomes a whole-file seed (with the harness's control bytes in
front) and, for the LZW target, its bytes after the 8-byte header become a
stream in both modes. The operation harness gets a few fixed pseudo-random
sequences per object kind. Nothing here is committed: the corpora are
regenerated whenever needed.
"""
import os
import random
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = [
    ("files", "samples"),
    ("test", "test_golden --gtest_filter=Golden.DecodeCases"),
    ("script", "tests/data/make_corpus.py"),
]
MAX_SEED = 256 * 1024


def collect_files(test_bin_dir):
    files = []
    for kind, name in SOURCES:
        with tempfile.TemporaryDirectory() as dump:
            if kind == "files":
                folder = os.path.join(ROOT, name)
            elif kind == "script":
                folder = dump
                if subprocess.run(["/usr/bin/python3", os.path.join(ROOT, name), dump]).returncode != 0:
                    sys.exit("make_seeds.py: %s could not write its images" % name)
            else:
                program, *args = name.split()
                exe = os.path.join(test_bin_dir or "(no TEST_BIN_DIR given)", program)
                if not os.access(exe, os.X_OK):
                    sys.exit("make_seeds.py: %s is missing" % exe)
                env = dict(os.environ, VKTIFF_DUMP_DIR=dump)
                subprocess.run([exe] + args, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                folder = dump
            found = sorted(n for n in os.listdir(folder) if n.endswith(".tif"))
            if not found:
                sys.exit("make_seeds.py: no image from %s %s" % (kind, name))
            for n in found:
                with open(os.path.join(folder, n), "rb") as f:
                    files.append(f.read())
    return [f for f in files if len(f) <= MAX_SEED]


def write(directory, index, data):
    with open(os.path.join(directory, "seed_%05d" % index), "wb") as f:
        f.write(data)


def main():
    out = sys.argv[1]
    test_bin_dir = sys.argv[2] if len(sys.argv) > 2 else None
    dirs = {t: os.path.join(out, t) for t in ("decode_file", "lzw", "buffer_strings")}
    for d in dirs.values():
        os.makedirs(d, exist_ok=True)
    files = collect_files(test_bin_dir)
    n = 0
    for data in files:
        size = len(data)
        # flags: whole file without and with the alpha flag, and half loaded.
        for flags, loaded in ((0x00, size), (0x01, size), (0x02 | 0x5C, size // 2)):
            write(dirs["decode_file"], n, bytes([flags]) + loaded.to_bytes(4, "little") + data)
            n += 1
    n = 0
    for data in files:
        stream = data[8:]
        for mode_bit in (0, 1):
            # root width 8, two requests: a short one and a long one
            write(dirs["lzw"], n, bytes([mode_bit | 8 << 1, 1, 0x40, 0x00, 0xFF, 0x7F]) + stream[:4096])
            n += 1
    rng = random.Random(9)
    n = 0
    for kind in range(8):
        for _ in range(4):
            write(dirs["buffer_strings"], n, bytes([kind]) + bytes(rng.randrange(256) for _ in range(400)))
            n += 1
    print("seeds: %d files -> %s" % (len(files), out))


if __name__ == "__main__":
    main()
