# Top-level commands: `make run` (the main job) and `make test` (every configuration, every test).
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE ?= cmake
CTEST ?= ctest

NATIVE := $(BUILD)/native
M32 := $(BUILD)/m32
ASAN := $(BUILD)/asan
TSAN := $(BUILD)/tsan
FUZZ := $(BUILD)/fuzz
FUZZ_COVERAGE := $(BUILD)/fuzz-coverage
FUZZ_SECONDS ?= 60
CLANG_FUZZ_FLAGS := -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DVKTIFF_BUILD_FUZZERS=ON \
	-DVKTIFF_BUILD_HOST=OFF -DVKTIFF_BUILD_TESTS=OFF
BENCH := $(BUILD)/bench
BENCH32 := $(BUILD)/bench32
# Extra arguments for both benchmark programs (vktiff_bench --filter=REGEX
# --reps=N --min-time=SECONDS), e.g. BENCH_ARGS=--filter=_lzw_
BENCH_ARGS ?=
# An earlier 64-bit run whose plug-in figures are shown beside the new ones:
# by default the plug-in before its fast paths, on the machine of BENCHMARKS.md
BENCH_BEFORE ?= bench/results_before_fast_paths.json

.PHONY: all native m32 asan tsan run test test-native test-m32 test-asan test-tsan fuzz fuzz-build fuzz-coverage bench clean

all: native

native:
	$(CMAKE) -S . -B $(NATIVE) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	$(CMAKE) --build $(NATIVE) -j $(JOBS)

m32:
	$(CMAKE) -S . -B $(M32) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_M32=ON -DVKTIFF_BUILD_HOST=OFF
	$(CMAKE) --build $(M32) -j $(JOBS)

asan:
	$(CMAKE) -S . -B $(ASAN) -DCMAKE_BUILD_TYPE=Debug -DVKTIFF_SANITIZE="address;undefined"
	$(CMAKE) --build $(ASAN) -j $(JOBS)

# vkhost exits 3 when it tried every file but some failed: samples/broken.tif
# fails on purpose, so that outcome is printed but does not fail `make run`;
# any other failure (1, 2, a crash) does.
run: native
	$(NATIVE)/host/vkhost info samples/*.tif || [ $$? -eq 3 ]
	$(NATIVE)/host/vkhost convert samples --out-dir out || [ $$? -eq 3 ]
	@echo "PNGs written to $(CURDIR)/out/:" && ls out/*.png

test-native: native
	$(CTEST) --test-dir $(NATIVE) --output-on-failure -j $(JOBS)

test-m32: m32
	$(CTEST) --test-dir $(M32) --output-on-failure -j $(JOBS)

test-asan: asan
	$(CTEST) --test-dir $(ASAN) --output-on-failure -j $(JOBS)

test: test-native test-m32 test-asan test-tsan

# ThreadSanitizer: decodes on several threads at once, compared with sequential results.
tsan:
	$(CMAKE) -S . -B $(TSAN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_SANITIZE=thread -DVKTIFF_BUILD_HOST=OFF
	$(CMAKE) --build $(TSAN) -j $(JOBS) --target test_concurrency

test-tsan: tsan
	$(CTEST) --test-dir $(TSAN) -R '^test_concurrency$$' --output-on-failure

# libFuzzer targets (clang, ASan+UBSan): each runs FUZZ_SECONDS (default 60);
# new crashers are kept in $(FUZZ)/crashers/<target>/.
fuzz-build:
	$(CMAKE) -S . -B $(FUZZ) $(CLANG_FUZZ_FLAGS) -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DVKTIFF_SANITIZE=address;undefined"
	$(CMAKE) --build $(FUZZ) -j $(JOBS)

fuzz: fuzz-build
	VKTIFF_TEST_BIN_DIR=$(CURDIR)/$(NATIVE)/tests fuzz/run_fuzzers.sh $(FUZZ) $(FUZZ_SECONDS)

# Line coverage of tiff/ reached by the fuzz corpus (source-based, llvm-cov-14).
fuzz-coverage:
	$(CMAKE) -S . -B $(FUZZ_COVERAGE) $(CLANG_FUZZ_FLAGS) -DCMAKE_BUILD_TYPE=Debug \
		"-DCMAKE_CXX_FLAGS=-fprofile-instr-generate -fcoverage-mapping"
	$(CMAKE) --build $(FUZZ_COVERAGE) -j $(JOBS)
	fuzz/coverage.sh $(FUZZ_COVERAGE) $(FUZZ)/corpus

# Decode speed beside libtiff on generated 4096 x 4096 images (Release, -O2),
# in 64-bit and in -m32 beside a 32-bit libtiff (installed by
# bench/install_peer32.sh); writes the table with the machine it ran on to BENCHMARKS.md.
BENCH_CONFIG := -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" -DVKTIFF_BUILD_BENCH=ON \
	-DVKTIFF_BUILD_TESTS=OFF -DVKTIFF_BUILD_HOST=OFF -DVKTIFF_BENCH_INPUTS=$(CURDIR)/$(BENCH)/bench_inputs
bench:
	sh bench/install_peer32.sh
	$(CMAKE) -S . -B $(BENCH) $(BENCH_CONFIG)
	$(CMAKE) --build $(BENCH) -j $(JOBS) --target vktiff_bench bench_inputs
	$(CMAKE) -S . -B $(BENCH32) $(BENCH_CONFIG) -DVKTIFF_M32=ON
	$(CMAKE) --build $(BENCH32) -j $(JOBS) --target vktiff_bench
	$(BENCH)/bench/vktiff_bench --out=$(BENCH)/results.json $(BENCH_ARGS)
	$(BENCH32)/bench/vktiff_bench --out=$(BENCH32)/results.json $(BENCH_ARGS)
	/usr/bin/python3 bench/write_table.py $(BENCH) $(BENCH32) $(BENCH_BEFORE) > BENCHMARKS.md

clean:
	rm -rf $(BUILD) out
