# Set-up and everyday targets. Each one installs what is missing first, so
# they work on a fresh Debian machine.
BUILD      ?= build
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?= -DCMAKE_BUILD_TYPE=Release

.PHONY: all deps configure build test demo studio bench sanitize tsan fuzz install clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The main job: a preset over the built-in default scene, no input files.
demo: build
	./scripts/demo.sh $(BUILD)

# The interactive studio on the built-in clips, serving the working directory;
# STUDIO_ARGS passes options on (e.g. STUDIO_ARGS="--preset Soap --port 8700").
studio: build
	$(BUILD)/fizzle-studio $(STUDIO_ARGS)

bench: build
	@for b in $(BUILD)/bench/*_bench; do echo "== $$b"; $$b; done

# The whole suite with AddressSanitizer and UndefinedBehaviorSanitizer, in a
# build of its own (the dlopen'ed plug-in too); leaks are checked and any
# report fails the test. Then the ThreadSanitizer run. Tests that need a
# browser or Slurm are left to `make test`.
# LeakSanitizer's exit-time scan crashes on the thread-local storage of
# libraries opened later with dlopen (the image library behind the image I/O
# module); preloaded, that storage is part of the static block and scans cleanly.
IMAGE_LIBRARY = $(shell pkg-config --variable=libdir OpenImageIO)/libOpenImageIO.so
SANITIZE_ENV = ASAN_OPTIONS=detect_leaks=1:halt_on_error=1:verify_asan_link_order=0 \
               UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
               LD_PRELOAD=$(IMAGE_LIBRARY) FIZZLE_IMAGE_LIBRARY_PRELOADED=1
sanitize:
	@./scripts/install-deps.sh
	@cmake -S . -B $(BUILD)-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFIZZLE_SANITIZE=ON -DFIZZLE_BUILD_BENCH=OFF >/dev/null
	@cmake --build $(BUILD)-sanitize -j $(JOBS)
	cd $(BUILD)-sanitize && $(SANITIZE_ENV) ctest --output-on-failure -j $(JOBS) -LE 'browser|farm|frei0r'
	@$(MAKE) --no-print-directory tsan

# The engine, host and fizzle-render tests under ThreadSanitizer, in a build
# of their own (fizzle-render and the plug-in it loads included); the only
# suppression, in scripts/tsan.supp, is for a system library. The --version
# checks are left out: the other programs are not built here.
TSAN_TESTS = framework_tests bubbles_tests host_tests sparkhost_tests render_tests apps_tests
tsan:
	@./scripts/install-deps.sh
	@cmake -S . -B $(BUILD)-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFIZZLE_TSAN=ON -DFIZZLE_BUILD_BENCH=OFF >/dev/null
	@cmake --build $(BUILD)-tsan -j $(JOBS) --target $(TSAN_TESTS) fizzle-render
	cd $(BUILD)-tsan && TSAN_OPTIONS=halt_on_error=1:suppressions=$(CURDIR)/scripts/tsan.supp ctest --output-on-failure -j $(JOBS) -LE 'browser|farm|frei0r' -E '_NOT_BUILT|^Version\.'

# Every fuzz target (amplitude files, setup files, option values) under
# libFuzzer, each for FUZZ_SECONDS (60 by default).
FUZZ_SECONDS ?= 60
fuzz:
	@FIZZLE_EXTRA_PACKAGES="clang libclang-rt-14-dev" ./scripts/install-deps.sh
	@./scripts/fuzz.sh $(FUZZ_SECONDS)

PREFIX ?= /usr/local/Corvale
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	rm -rf $(BUILD) $(BUILD)-sanitize $(BUILD)-tsan $(BUILD)-fuzz out
