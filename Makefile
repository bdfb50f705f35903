# Quick start:  make demo   (renders the bundled sample drawing to out/sample.bmp)
#               make test   (build and run every test)
PRESET ?= release
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc)

FUZZ_SECONDS ?= 60
# A seed of 0 lets each run explore afresh; a fixed seed with a fixed number of runs
# replays the same inputs on every machine (what CI does, so that its verdict belongs to
# the change and not to the dice).
FUZZ_SEED ?= 0
FUZZ_RUNS ?= -1
FUZZERS := load_fuzzer render_fuzzer

.PHONY: all deps configure build demo test asan-test bench fuzz package clean

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
	@$(BUILD)/bench/text_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/output_bench --benchmark_counters_tabular=true

# The Debian packages dxfimport and dxfimport-dev, in build/package/.
package: build
	@cd $(BUILD) && cpack -B $(CURDIR)/build/package >/dev/null
	@rm -rf build/package/_CPack_Packages
	@ls build/package/*.deb

# Runs each fuzzer for FUZZ_SECONDS (or FUZZ_RUNS inputs) from the seed corpus; findings
# land in build/fuzz/.
fuzz: deps
	@cmake --preset fuzz >/dev/null && cmake --build build/fuzz -j $(JOBS)
	@for f in $(FUZZERS); do \
	  mkdir -p build/fuzz/corpus/$$f; \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/fuzz/lsan.supp QT_QPA_PLATFORM=offscreen \
	  build/fuzz/fuzz/$$f build/fuzz/corpus/$$f fuzz/seeds -max_total_time=$(FUZZ_SECONDS) \
	    -seed=$(FUZZ_SEED) -runs=$(FUZZ_RUNS) \
	    -timeout=20 -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 \
	    -artifact_prefix=build/fuzz/$$f- > build/fuzz/$$f.log 2>&1; status=$$?; \
	  tail -n 14 build/fuzz/$$f.log; \
	  if [ $$status -ne 0 ]; then echo "$$f found a failing input (see build/fuzz/)"; exit 1; fi; \
	done

clean:
	@rm -rf build out
