# Top-level commands: `make run` (the main job) and `make test` (every configuration, every test).
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE ?= cmake
CTEST ?= ctest

NATIVE := $(BUILD)/native
M32 := $(BUILD)/m32
ASAN := $(BUILD)/asan

.PHONY: all native m32 asan run test test-native test-m32 test-asan clean

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

test: test-native test-m32 test-asan

clean:
	rm -rf $(BUILD) out
