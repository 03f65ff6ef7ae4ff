# The ways to build and check, by job. Everything lands below build/; the work is done by CMake and its presets.
OST_WERROR ?= OFF
JOBS ?= $(shell nproc)
SECONDS ?= 60
SEEDS ?= 200

.PHONY: help build release deb docs test oracle mutants demo bench asan fuzz field clean

help:
	@echo "make build   build the package into build/dev (usable as TCLLIBPATH=build/dev/lib)"
	@echo "make test    build and run all tests"
	@echo "make oracle  capture random projects in simulation and compare; SEEDS=n (200)"
	@echo "make mutants put single faults into the core and the inserter; each must be found"
	@echo "make demo    build, insert a debug core into examples/, simulate it and show its capture"
	@echo "make bench   measure speed and the core's cost against their aims; BENCH_FULL=1 for the largest designs"
	@echo "make asan    run the tests on a build with address and undefined-behaviour checks"
	@echo "make fuzz    feed generated words, damaged files and random designs to the same build; SECONDS=n (60), SEED=n (the day's)"
	@echo "make field   insert into the designs below DESIGNS=folder, prove, simulate and capture; FIELD='-rows n -timeout s'"
	@echo "make release build for installing: sudo cmake --install build/release [--prefix FOLDER]"
	@echo "make deb     the same as a Debian package in build/release; OST_MAINTAINER='name <address>'"
	@echo "make docs    the manual as one page: build/dev/docs/manual.html"
	@echo "make clean   remove build/"

build: build/dev.product
release: build/release.product

# Always run; the files are never made. CMake decides what is out of date. `product` is what a user runs, `built` has the
# tests too.
build/%.product: TARGET = --target product
build/%.product build/%.built:
	@tools/bootstrap
	@mkdir -p build
	@cmake --preset $* -DOST_WERROR=$(OST_WERROR) >build/$*.log 2>&1 || { cat build/$*.log; exit 1; }
	@cmake --build --preset $* -j $(JOBS) $(TARGET)

deb: build/release.product
	@cd build/release && cmake $(if $(OST_MAINTAINER),-DOST_MAINTAINER='$(OST_MAINTAINER)') . >/dev/null && cpack -G DEB

docs: build/dev.product
	@tools/bootstrap cmark-gfm
	@tclsh tools/write_page.tcl . build/dev/docs cmark-gfm build/dev/docs/manual.html

test: build/dev.built
	@ctest --preset dev -j 2

# Two processes share the seeds.
oracle: build/dev.built
	@tests/sim/run_oracle build/dev $(SEEDS)

mutants: build/dev.built
	@tests/sim/mutants/run build/dev

asan: build/asan.built
	@ctest --preset asan -j 2

# Only what the fuzzers need is built.
fuzz:
	@tools/bootstrap
	@mkdir -p build
	@cmake --preset asan >build/fuzz.log 2>&1 || { cat build/fuzz.log; exit 1; }
	@cmake --build --preset asan --target fuzz_commands fuzz_files product -j $(JOBS) >build/fuzz.log || { cat build/fuzz.log; exit 1; }
	@tests/fuzz/run build/asan $(SECONDS) $(SEED)

field: build/dev.product
	@tools/field/run build/dev $(or $(DESIGNS),$(error make field needs DESIGNS=folder; see docs/field.md)) $(FIELD)

demo: build/dev.product
	@examples/demo/run build/dev

bench: build/dev.product
	@cmake --build --preset dev --target bench_modules ost_emit_core -j $(JOBS) >build/bench.log 2>&1 || { cat build/bench.log; exit 1; }
	@bench/run build/dev
	@bench/core_cost build/dev || test $$? -eq 1

clean:
	rm -rf build
