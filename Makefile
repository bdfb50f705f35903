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
FUZZERS := load_fuzzer render_fuzzer modern_draw_fuzzer hatch_fuzzer binary_fuzzer mtext_fuzzer text_codes_fuzzer proxy_graphics_fuzzer

.PHONY: all deps configure build demo test asan-test tsan-test bench fuzz package format clean

all: build

deps:
	@scripts/install-deps

# In CI a warning fails the build.
WERROR := $(if $(CI),-DDXFIMPORT_WERROR=ON,)

configure: deps
	@cmake --preset $(PRESET) $(WERROR) >/dev/null

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

# The redraw's threads under ThreadSanitizer: the render and viewer suites (Qt itself is
# not instrumented; tests/tsan.supp names what it reports inside Qt; a child forked by a
# test draws unchecked).
TSAN_TESTS := render_test navigation_test display_options_test viewer_test
empty :=
space := $(empty) $(empty)
tsan-test: deps
	@cmake --preset tsan $(WERROR) >/dev/null
	@cmake --build build/tsan -j $(JOBS) --target $(TSAN_TESTS)
	@TSAN_OPTIONS="halt_on_error=1 die_after_fork=0 suppressions=$(CURDIR)/tests/tsan.supp" \
	  ctest --test-dir build/tsan --output-on-failure -j $(JOBS) -R '^($(subst $(space),|,$(TSAN_TESTS)))$$'

bench: build
	@$(BUILD)/bench/reader_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/render_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/text_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/output_bench --benchmark_counters_tabular=true
	@$(BUILD)/bench/hostile_bench

# The Debian packages dxfimport and dxfimport-dev, in build/package/.
package: build
	@cd $(BUILD) && cpack -B $(CURDIR)/build/package >/dev/null
	@rm -rf build/package/_CPack_Packages
	@ls build/package/*.deb

# Runs each fuzzer for FUZZ_SECONDS (or FUZZ_RUNS inputs) from its seeds, with its
# dictionary; the drawings of ../shared/corpus (when it is there) and the texts and hatches
# taken out of them are seeds too. Findings land in build/fuzz/.
CORPUS_DIR := $(wildcard ../shared/corpus)
fuzz: deps
	@cmake --preset fuzz $(WERROR) >/dev/null && cmake --build build/fuzz -j $(JOBS)
	@$(if $(CORPUS_DIR),python3 tools/make_fuzz_seeds.py --from-corpus $(CORPUS_DIR) build/fuzz/corpus,true)
	@for f in $(FUZZERS); do \
	  mkdir -p build/fuzz/corpus/$$f; \
	  case $$f in \
	    mtext_fuzzer) seeds="fuzz/seeds_mtext"; dict=fuzz/mtext.dict;; \
	    text_codes_fuzzer) seeds="fuzz/seeds_text_codes"; dict=fuzz/mtext.dict;; \
	    hatch_fuzzer) seeds="fuzz/seeds_hatch"; dict=fuzz/dxf.dict;; \
	    binary_fuzzer) seeds="fuzz/seeds_binary"; dict=;; \
    proxy_graphics_fuzzer) seeds="fuzz/seeds_proxy"; dict=;; \
	    *) seeds="fuzz/seeds $(CORPUS_DIR)"; dict=fuzz/dxf.dict;; \
	  esac; \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/fuzz/lsan.supp QT_QPA_PLATFORM=offscreen \
	  build/fuzz/fuzz/$$f build/fuzz/corpus/$$f $$seeds $${dict:+-dict=$$dict} -max_total_time=$(FUZZ_SECONDS) \
	    -seed=$(FUZZ_SEED) -runs=$(FUZZ_RUNS) \
	    -timeout=20 -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 \
	    -artifact_prefix=build/fuzz/$$f- > build/fuzz/$$f.log 2>&1; status=$$?; \
	  tail -n 14 build/fuzz/$$f.log; \
	  if [ $$status -ne 0 ]; then echo "$$f found a failing input (see build/fuzz/)"; exit 1; fi; \
	done

# Formats every C++ source as .clang-format says (CI checks it with scripts/check-format).
format: deps
	@scripts/check-format --fix

clean:
	@rm -rf build out
