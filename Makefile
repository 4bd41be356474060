# Top-level commands: `make run` (the main job) and `make test` (every configuration, every test).
# Both first install the Debian packages the machine lacks (.ci/deps.sh: as root,
# or through sudo); each configuration checks its own before it builds.
BUILD ?= build
DEPS := sh .ci/deps.sh
OUT ?= out
# The test configurations `make test` runs, in order; each has a test-NAME target
# and a .ci/deps.sh group of the same name.
TEST_CONFIGS ?= native m32 asan asan32 tsan
JOBS ?= $(shell nproc)
CMAKE ?= cmake
CTEST ?= ctest

NATIVE := $(BUILD)/native
M32 := $(BUILD)/m32
ASAN := $(BUILD)/asan
ASAN32 := $(BUILD)/asan32
TSAN := $(BUILD)/tsan
FUZZ := $(BUILD)/fuzz
FUZZ_COVERAGE := $(BUILD)/fuzz-coverage
FUZZ_SECONDS ?= 60
CLANG_FUZZ_FLAGS := -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DVKTIFF_BUILD_FUZZERS=ON \
	-DVKTIFF_BUILD_HOST=OFF -DVKTIFF_BUILD_TESTS=OFF
BENCH := $(BUILD)/bench
# 32-bit Windows: vktiff.dll cross-built with mingw-w64, tests run by a private 32-bit Wine.
W32 := $(BUILD)/win32
WINE32 := $(abspath $(BUILD))/wine32
W32_TOOLCHAIN := $(CURDIR)/cmake/mingw-i686.cmake
PROBE_W32 := $(BUILD)/probe-win32
PROBE_M32 := $(BUILD)/probe-m32
BENCH32 := $(BUILD)/bench32
# Extra arguments for both benchmark programs (vktiff_bench --filter=REGEX
# --reps=N --min-time=SECONDS), e.g. BENCH_ARGS=--filter=_lzw_
BENCH_ARGS ?=
# An earlier 64-bit run whose plug-in figures are shown beside the new ones:
# by default the plug-in before its fast paths, on the machine of BENCHMARKS.md
BENCH_BEFORE ?= bench/results_before_fast_paths.json

.PHONY: all native m32 asan asan32 tsan run vkhost test test-native test-m32 test-asan test-asan32 test-tsan fuzz \
	fuzz-build fuzz-coverage \
	bench clean
.PHONY: win32 wine32 probe-m32 test-win32

all: native

native:
	@$(DEPS) check native
	$(CMAKE) -S . -B $(NATIVE) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_BUILD_TESTS=ON
	$(CMAKE) --build $(NATIVE) -j $(JOBS)

m32:
	@$(DEPS) check m32
	$(CMAKE) -S . -B $(M32) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_M32=ON -DVKTIFF_BUILD_HOST=OFF
	$(CMAKE) --build $(M32) -j $(JOBS)

# AddressSanitizer and UBSan on the width that ships: 32-bit size arithmetic is where overflows hide.
asan32:
	@$(DEPS) check asan32
	$(CMAKE) -S . -B $(ASAN32) -DCMAKE_BUILD_TYPE=Debug -DVKTIFF_M32=ON -DVKTIFF_BUILD_HOST=OFF \
		-DVKTIFF_SANITIZE="address;undefined"
	$(CMAKE) --build $(ASAN32) -j $(JOBS)

asan:
	@$(DEPS) check asan
	$(CMAKE) -S . -B $(ASAN) -DCMAKE_BUILD_TYPE=Debug -DVKTIFF_SANITIZE="address;undefined"
	$(CMAKE) --build $(ASAN) -j $(JOBS)

# The library and vkhost alone, in the native tree (its tests are left out
# until `make test` builds them, so GoogleTest is not needed here).
vkhost:
	@$(DEPS) check run
	$(CMAKE) -S . -B $(NATIVE) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		$(if $(wildcard $(NATIVE)/CMakeCache.txt),,-DVKTIFF_BUILD_TESTS=OFF)
	$(CMAKE) --build $(NATIVE) -j $(JOBS) --target vkhost

# vkhost exits 3 when some but not all files failed: samples/broken.tif fails
# on purpose, so that outcome is printed but does not fail `make run`; any
# other failure (1 when nothing was converted, 2, a crash) does. Earlier
# pictures are removed first, so that what is listed is what this run wrote.
run:
	@$(DEPS) install run
	@$(MAKE) --no-print-directory vkhost
	$(NATIVE)/host/vkhost info samples/*.tif || [ $$? -eq 3 ]
	rm -f $(OUT)/*.png $(OUT)/*.pfm
	$(NATIVE)/host/vkhost convert samples --out-dir $(OUT) || [ $$? -eq 3 ]
	@echo "PNGs written to $(CURDIR)/$(OUT)/ (samples/broken.tif is refused on purpose):" && ls $(OUT)/*.png
	@echo "vkhost is $(CURDIR)/$(NATIVE)/host/vkhost (try --help)"

# Results go to ctest.xml in each tree, for the summary at the end of `make test`.
ctest_args = --output-on-failure --output-junit $(CURDIR)/$(1)/ctest.xml

test-native: native
	@rm -f $(NATIVE)/ctest.xml
	$(CTEST) --test-dir $(NATIVE) $(call ctest_args,$(NATIVE)) -j $(JOBS)

test-m32: m32
	@rm -f $(M32)/ctest.xml
	$(CTEST) --test-dir $(M32) $(call ctest_args,$(M32)) -j $(JOBS)

test-asan32: asan32
	@rm -f $(ASAN32)/ctest.xml
	$(CTEST) --test-dir $(ASAN32) $(call ctest_args,$(ASAN32)) -j $(JOBS)

test-asan: asan
	@rm -f $(ASAN)/ctest.xml
	$(CTEST) --test-dir $(ASAN) $(call ctest_args,$(ASAN)) -j $(JOBS)

# Every configuration runs even when one fails; one summary closes the run.
test:
	@$(DEPS) install test
	@rc=0; for c in $(TEST_CONFIGS); do $(MAKE) --no-print-directory test-$$c || rc=1; done; \
		sh .ci/summary.sh $(BUILD) $(TEST_CONFIGS) || rc=1; exit $$rc

# ThreadSanitizer: decodes on several threads at once, compared with sequential results.
tsan:
	@$(DEPS) check tsan
	$(CMAKE) -S . -B $(TSAN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_SANITIZE=thread -DVKTIFF_BUILD_HOST=OFF
	$(CMAKE) --build $(TSAN) -j $(JOBS) --target test_concurrency

test-tsan: tsan
	@rm -f $(TSAN)/ctest.xml
	$(CTEST) --test-dir $(TSAN) -R '^test_concurrency$$' $(call ctest_args,$(TSAN))

# vktiff.dll and its import library (build/win32/bin/, build/win32/libvktiff.dll.a), the
# test programs beside it, and the probe host built on its own (build/probe-win32/vkprobe.exe).
win32:
	$(CMAKE) -S host/probe -B $(PROBE_W32) --toolchain $(W32_TOOLCHAIN) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	$(CMAKE) --build $(PROBE_W32) -j $(JOBS)
	$(CMAKE) -S . -B $(W32) --toolchain $(W32_TOOLCHAIN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVKTIFF_BUILD_HOST=OFF \
		-DVKTIFF_WINE32=$(WINE32) -DVKTIFF_PROBE=$(abspath $(PROBE_W32))/vkprobe.exe \
		-DVKTIFF_PROBE_REFERENCE=$(abspath $(PROBE_M32))/samples.txt
	$(CMAKE) --build $(W32) -j $(JOBS)

# The private 32-bit Wine (and the cross compiler), installed once; needs root the first time.
wine32:
	.ci/install_wine32.sh $(WINE32)

# The probe host for Linux -m32 and what it prints over samples/: the lines the Windows build must repeat.
probe-m32: m32
	$(CMAKE) -S host/probe -B $(PROBE_M32) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		"-DCMAKE_CXX_FLAGS=-m32 -msse2 -mfpmath=sse" -DCMAKE_EXE_LINKER_FLAGS=-m32
	$(CMAKE) --build $(PROBE_M32) -j $(JOBS)
	$(PROBE_M32)/vkprobe $(M32)/libvktiff.so samples > $(PROBE_M32)/samples.txt

test-win32: wine32 win32 probe-m32
	$(CTEST) --test-dir $(W32) --output-on-failure -j $(JOBS)

# libFuzzer targets (clang, ASan+UBSan): each runs FUZZ_SECONDS (default 60);
# new crashers are kept in $(FUZZ)/crashers/<target>/.
fuzz-build:
	@$(DEPS) check fuzz
	$(CMAKE) -S . -B $(FUZZ) $(CLANG_FUZZ_FLAGS) -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DVKTIFF_SANITIZE=address;undefined"
	$(CMAKE) --build $(FUZZ) -j $(JOBS)

fuzz: fuzz-build
	VKTIFF_TEST_BIN_DIR=$(CURDIR)/$(NATIVE)/tests fuzz/run_fuzzers.sh $(FUZZ) $(FUZZ_SECONDS)

# Line coverage of tiff/ reached by the fuzz corpus (source-based, llvm-cov-14).
fuzz-coverage:
	@$(DEPS) check fuzz
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
	@$(DEPS) check bench
	sh bench/install_peer32.sh
	$(CMAKE) -S . -B $(BENCH) $(BENCH_CONFIG)
	$(CMAKE) --build $(BENCH) -j $(JOBS) --target vktiff_bench bench_inputs
	$(CMAKE) -S . -B $(BENCH32) $(BENCH_CONFIG) -DVKTIFF_M32=ON
	$(CMAKE) --build $(BENCH32) -j $(JOBS) --target vktiff_bench
	$(BENCH)/bench/vktiff_bench --out=$(BENCH)/results.json $(BENCH_ARGS)
	$(BENCH32)/bench/vktiff_bench --out=$(BENCH32)/results.json $(BENCH_ARGS)
	/usr/bin/python3 bench/write_table.py $(BENCH) $(BENCH32) $(BENCH_BEFORE) > BENCHMARKS.md

clean:
	rm -rf $(BUILD) $(OUT)
