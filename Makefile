# Thin front of the CMake presets; every target sets up what it needs first.
.PHONY: run test e2e lint format sanitize bench fuzz setup clean
RELEASE := build/release

setup:
	@scripts/setup

$(RELEASE)/build.ninja: | setup
	@cmake --preset release

build: setup $(RELEASE)/build.ninja
	@cmake --build --preset release

run: setup $(RELEASE)/build.ninja
	@cmake --build --preset release --target lumacart
	@scripts/run $(RELEASE)/bin/lumacart

test: build
	@ctest --preset release

lint: setup $(RELEASE)/build.ninja
	@scripts/lint $(RELEASE)

format: setup
	@scripts/sources | xargs clang-format -i

sanitize: setup
	@cmake --preset sanitize
	@cmake --build --preset sanitize
	@ctest --preset sanitize

bench: build
	@scripts/bench $(RELEASE)

# FUZZ_SECONDS: how long each target runs.
FUZZ_SECONDS ?= 60
fuzz: setup
	@cmake --preset fuzz
	@cmake --build --preset fuzz
	@scripts/fuzz build/fuzz $(FUZZ_SECONDS)

clean:
	rm -rf build
