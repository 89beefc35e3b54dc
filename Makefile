# The two commands for a new machine: `make run` and `make test`.
# Each installs what is missing, configures, builds, and then runs.

BUILD       ?= build
BENCH_BUILD ?= build-bench
ASAN_BUILD  ?= build-asan
FUZZ_BUILD  ?= build-fuzz
JOBS        ?= $(shell nproc)
GENERATOR   := -G Ninja
CMAKE_ARGS  ?=

.PHONY: all deps configure build run test test-asan bench fuzz format install clean screenshots \
	package package-check

all: build

deps:
	@scripts/install-deps.sh

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) $(GENERATOR) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS)

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	./$(BUILD)/daywyn

# The pop-out's focus checks need a real X server with a window manager; they run
# there first, then the whole suite (which also runs them offscreen).
test: build
	scripts/test-under-x11.sh $(BUILD) DrawerReminderPopout
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) --timeout 600

test-asan: deps
	cmake -S . -B $(ASAN_BUILD) $(GENERATOR) -DCMAKE_BUILD_TYPE=Debug -DDAYWYN_SANITIZE=ON $(CMAKE_ARGS)
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan-suppressions.txt \
		ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS) --timeout 900
	@if [ -x scripts/run-fuzzers.sh ]; then scripts/run-fuzzers.sh $(FUZZ_BUILD) 30; fi

bench: deps
	cmake -S . -B $(BENCH_BUILD) $(GENERATOR) -DCMAKE_BUILD_TYPE=Release -DDAYWYN_BUILD_BENCH=ON \
		-DDAYWYN_BUILD_TESTS=OFF $(CMAKE_ARGS)
	cmake --build $(BENCH_BUILD) -j $(JOBS)
	scripts/run-benchmarks.sh $(BENCH_BUILD)

fuzz: deps
	scripts/run-fuzzers.sh $(FUZZ_BUILD) 120

format:
	git ls-files -z -- '*.cpp' '*.h' | xargs -0 -r clang-format -i

# The drawer, Quick Add, every settings page and the welcome window, light and dark,
# from a seeded state on a private X server.
screenshots: build
	scripts/screenshots.sh $(BUILD)

install: build
	cmake --install $(BUILD) $(if $(PREFIX),--prefix $(PREFIX),)

# The Debian package build/daywyn_<version>_amd64.deb, and its checks (lintian, the
# desktop entry, the AppStream metainfo, and the program run from an unpacked copy).
package: build
	cd $(BUILD) && cpack -G DEB

package-check: package
	scripts/check-package.sh $(BUILD)

clean:
	rm -rf $(BUILD) $(BENCH_BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
