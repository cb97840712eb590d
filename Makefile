# Ringwell's two entry points: `make run` and `make test`.
# Both install whatever Debian packages are missing, then build.

SHELL := /bin/bash
# The build directories are the ones CMakePresets.json names for its presets.
BUILD_DIR := build/release
SAN_DIR := build/sanitize
JOBS ?= $(shell nproc)
SUDO := $(shell [ "$$(id -u)" -eq 0 ] || echo sudo)

# Everything the build, the tests and the benchmarks need from Debian.
PACKAGES := g++ cmake ninja-build pkg-config clang-format clang-tidy ccache \
            libicu-dev nlohmann-json3-dev libgtest-dev libgmock-dev libbenchmark-dev \
            libboost-dev libsndfile1-dev libpulse-dev libsystemd-dev libssl-dev openssl \
            chromium dbus-daemon libnotify-bin libglib2.0-bin clang libclang-rt-14-dev

WEB_DIR := Views/web

.PHONY: all deps web-deps build build-sanitize build-debug build-fuzz run test check-format lint bench \
        fuzz soak format clean

all: build

# Installs only the packages that are missing, so a second run costs one dpkg query.
deps:
	@missing=$$(for p in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}\n' "$$p" 2>/dev/null | grep -q 'install ok installed' || echo "$$p"; \
	  done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing missing packages:" $$missing; \
	  $(SUDO) apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq --no-install-recommends $$missing; \
	fi

# The web app's npm packages, pinned by package-lock.json; reinstalled only
# when the lock file changed. Node.js comes from Debian when it is missing.
web-deps: deps
	@if [ -f $(WEB_DIR)/package-lock.json ]; then \
	  command -v npm >/dev/null || { $(SUDO) apt-get update -qq && \
	    DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq nodejs npm; }; \
	  if [ ! -f $(WEB_DIR)/node_modules/.package-lock.json ] || \
	     [ $(WEB_DIR)/package-lock.json -nt $(WEB_DIR)/node_modules/.package-lock.json ]; then \
	    cd $(WEB_DIR) && npm ci --no-audit --no-fund; \
	  fi; \
	fi

build: web-deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)

build-sanitize: web-deps
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)

build-debug: web-deps
	cmake --preset debug
	cmake --build --preset debug -j $(JOBS)

# Starts the daemon in the foreground; use `ringwell` from another terminal
# (the README shows how to put it on PATH).
run: build
	@echo "Starting Ringwell. In another terminal: $(CURDIR)/$(BUILD_DIR)/bin/ringwell --help"
	$(BUILD_DIR)/bin/ringwell serve

# Every test runs under ASan + UBSan; the release build is built too, so code
# that only the optimiser warns about fails here rather than in `make run`.
# Each configuration is configured and built once.
test: check-format build-sanitize build build-fuzz
	ctest --preset asan-ubsan -j $(JOBS)
	$(MAKE) --no-print-directory fuzz FUZZ_SECONDS=30

# Formatting (and the web app's lint) is checked, never rewritten, by the test
# run; `make format` rewrites.
check-format: web-deps
	git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
	cd $(WEB_DIR) && npm run --silent format:check && npm run --silent lint

# clang-tidy with .clang-tidy's checks over every source the sanitize build
# compiles (its compile_commands.json, written by configuring); headers are
# checked only where they are the project's own. The commands are GCC's, so
# clang is told to pass over GCC-only warning flags, and Boost 1.74 is told
# that clang has co_await (it looks for libc++'s <experimental/coroutine>).
TIDY_PATHS := ^$(CURDIR)/(Alarms|Cli|Core|Daemon|Intents|Model|Platform|Shared|Support|bench|tests)/
lint: check-format deps
	cmake --preset asan-ubsan >/dev/null
	run-clang-tidy -quiet -j 2 -p $(SAN_DIR) \
	  -extra-arg=-Wno-unknown-warning-option -extra-arg=-DBOOST_ASIO_HAS_CO_AWAIT=1 \
	  -header-filter='$(TIDY_PATHS)' '$(TIDY_PATHS)'

# libFuzzer targets (clang, see fuzz/): `make fuzz` runs each for FUZZ_SECONDS
# from the checked-in seeds; new inputs go to build/fuzz/corpus, crashes to
# build/fuzz/crashes, and the first crash fails the run.
FUZZ_DIR ?= build/fuzz
FUZZ_SECONDS ?= 300
FUZZ_TARGETS := store-decode rule-eval date-parse request-bodies text-helpers
build-fuzz: deps
	cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
	  -DRINGWELL_FUZZ=ON -DRINGWELL_BUILD_TESTS=OFF -DRINGWELL_BUILD_BENCH=OFF
	cmake --build $(FUZZ_DIR) -j $(JOBS) --target $(addprefix fuzz-,$(FUZZ_TARGETS))
fuzz: build-fuzz
	set -e; for t in $(FUZZ_TARGETS); do \
	  mkdir -p $(FUZZ_DIR)/corpus/$$t $(FUZZ_DIR)/crashes/$$t; \
	  $(FUZZ_DIR)/bin/fuzz-$$t -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
	    -artifact_prefix=$(FUZZ_DIR)/crashes/$$t/ $(FUZZ_DIR)/corpus/$$t fuzz/corpus/$$t; \
	done

# The daemon SIGKILLed at random moments of a busy burst, SOAK_ROUNDS times.
SOAK_ROUNDS ?= 2000
soak: build-sanitize
	RINGWELL_CRASH_ROUNDS=$(SOAK_ROUNDS) $(SAN_DIR)/bin/ringwell-daemon-tests --gtest_filter='CrashConsistency*'

bench: build
	$(BUILD_DIR)/bin/ringwell-bench

format: web-deps
	git ls-files '*.cpp' '*.h' | xargs clang-format -i
	cd $(WEB_DIR) && npm run --silent format

clean:
	rm -rf build
