# Set-up and everyday targets. Each one installs what is missing first, so
# they work on a fresh Debian machine.
BUILD      ?= build
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?= -DCMAKE_BUILD_TYPE=Release

.PHONY: all deps configure build test demo studio bench tsan fuzz install clean

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

# Engine tests under ThreadSanitizer, in a build of their own.
tsan:
	@./scripts/install-deps.sh
	@cmake -S . -B $(BUILD)-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DFIZZLE_TSAN=ON -DFIZZLE_BUILD_BENCH=OFF >/dev/null
	@cmake --build $(BUILD)-tsan -j $(JOBS) --target bubbles_tests
	TSAN_OPTIONS=halt_on_error=1 $(BUILD)-tsan/tests/bubbles_tests

# The amplitude-file reader under libFuzzer for a bounded time.
FUZZ_SECONDS ?= 60
fuzz:
	@FIZZLE_EXTRA_PACKAGES="clang libclang-rt-14-dev" ./scripts/install-deps.sh
	@./scripts/fuzz.sh $(FUZZ_SECONDS)

PREFIX ?= /usr/local/Corvale
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	rm -rf $(BUILD) $(BUILD)-tsan out
