# Quick start:  make demo   (renders the bundled sample drawing to out/sample.bmp)
#               make test   (build and run every test)
PRESET ?= release
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc)

.PHONY: all deps configure build demo test asan-test bench clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	@mkdir -p out
	@$(BUILD)/src/app/dxfimport render samples/floorplan.dxf -o out/sample.bmp
	@echo "The sample drawing is rendered to $(CURDIR)/out/sample.bmp"

test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

asan-test:
	@$(MAKE) --no-print-directory test PRESET=asan

bench: build
	@$(BUILD)/bench/reader_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/render_bench --benchmark_counters_tabular=true

clean:
	@rm -rf build out
