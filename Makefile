# Ringwell's two entry points: `make run` and `make test`.
# Both install whatever Debian packages are missing, then build.

SHELL := /bin/bash
BUILD_DIR ?= build/release
SAN_DIR ?= build/sanitize
JOBS ?= $(shell nproc)
SUDO := $(shell [ "$$(id -u)" -eq 0 ] || echo sudo)

# Everything the build, the tests and the benchmarks need from Debian.
PACKAGES := g++ cmake ninja-build pkg-config clang-format ccache \
            libicu-dev nlohmann-json3-dev libgtest-dev libgmock-dev libbenchmark-dev \
            libboost-dev libsndfile1-dev libpulse-dev libsystemd-dev \
            chromium dbus-daemon clang libclang-rt-14-dev

WEB_DIR := Views/web

.PHONY: all deps web-deps build build-sanitize run test bench format clean build-fuzz fuzz soak

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
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

build-sanitize: web-deps
	cmake -S . -B $(SAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DRINGWELL_SANITIZE=ON
	cmake --build $(SAN_DIR) -j $(JOBS)

# Starts the daemon in the foreground; use `ringwell` from another terminal
# (the README shows how to put it on PATH).
run: build
	@echo "Starting Ringwell. In another terminal: $(CURDIR)/$(BUILD_DIR)/bin/ringwell --help"
	$(BUILD_DIR)/bin/ringwell serve

test: build-sanitize build build-fuzz
	cd $(SAN_DIR) && ctest --output-on-failure --no-tests=error -j $(JOBS)
	$(MAKE) --no-print-directory fuzz FUZZ_SECONDS=30

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

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
