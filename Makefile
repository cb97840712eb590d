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
            chromium dbus-daemon libnotify-bin libglib2.0-bin

WEB_DIR := Views/web

.PHONY: all deps web-deps build build-sanitize run test bench format clean

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

test: build-sanitize build
	cd $(SAN_DIR) && ctest --output-on-failure --no-tests=error -j $(JOBS)

bench: build
	$(BUILD_DIR)/bin/ringwell-bench

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
