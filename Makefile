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
            chromium dbus-daemon libnotify-bin libglib2.0-bin clang libclang-rt-14-dev \
            pulseaudio pulseaudio-utils systemd dpkg-dev

WEB_DIR := Views/web

.PHONY: all deps web-deps build build-sanitize build-debug build-fuzz run test check-format lint bench \
        fuzz soak format clean install uninstall deb deb-check

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

# Installs for the current user: programs and data under PREFIX, the systemd
# user units under ~/.config/systemd/user, whose socket (and service) are
# enabled so that the daemon runs from login and the first `ringwell` command
# starts it. `make uninstall` reverses it, by the list the install wrote.
PREFIX ?= $(HOME)/.local
USER_UNIT_DIR ?= $(HOME)/.config/systemd/user
install: build
	cmake -S . -B $(BUILD_DIR) -DRINGWELL_SYSTEMD_USER_UNIT_DIR=$(USER_UNIT_DIR) >/dev/null
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)
	@if systemctl --user show-environment >/dev/null 2>&1; then \
	  systemctl --user daemon-reload && \
	  systemctl --user enable --now ringwell.socket && \
	  systemctl --user enable ringwell.service && \
	  echo "Ringwell is installed; its socket is enabled, so the first \`ringwell\` command starts it."; \
	else \
	  echo "Ringwell is installed, but \`systemctl --user\` is not usable here (no user service" \
	       "manager): start it with \`ringwell serve\`."; \
	fi
	@case ":$$PATH:" in *":$(PREFIX)/bin:"*) ;; *) echo "Add $(PREFIX)/bin to PATH to run \`ringwell\`.";; esac

uninstall:
	@if systemctl --user show-environment >/dev/null 2>&1; then \
	  systemctl --user disable --now ringwell.service ringwell.socket 2>/dev/null || true; \
	fi
	@if [ -f $(BUILD_DIR)/install_manifest.txt ]; then \
	  xargs -d '\n' rm -f -- < $(BUILD_DIR)/install_manifest.txt; \
	  rm -rf -- $(PREFIX)/share/ringwell $(PREFIX)/libexec/ringwell; \
	  echo "Ringwell is uninstalled (your channels and history under ~/.local/share/ringwell stay)."; \
	else \
	  echo "Nothing to uninstall: $(BUILD_DIR)/install_manifest.txt is missing."; \
	fi
	@if systemctl --user show-environment >/dev/null 2>&1; then systemctl --user daemon-reload; fi

# A Debian package for /usr (units in /usr/lib/systemd/user), its library
# dependencies declared by dpkg-shlibdeps: build/release/packages/ringwell_*.deb.
deb: build
	cmake -S . -B $(BUILD_DIR) -DRINGWELL_SYSTEMD_USER_UNIT_DIR=lib/systemd/user >/dev/null
	cd $(BUILD_DIR) && cpack -G DEB
	dpkg-deb --info $(BUILD_DIR)/packages/ringwell_*.deb | grep -E 'Package|Version|Depends|Recommends'

# Installs the package system-wide with apt-get, checks it, and removes it
# again. Not part of `make test`: it changes /usr of the machine it runs on.
deb-check: deb
	$(SUDO) DEBIAN_FRONTEND=noninteractive apt-get install -y -qq ./$(BUILD_DIR)/packages/ringwell_*.deb
	/usr/bin/ringwell --version
	test -x /usr/libexec/ringwell/ringwell-daemon && test -f /usr/lib/systemd/user/ringwell.socket
	$(SUDO) DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq ringwell
	! test -e /usr/bin/ringwell
	@echo "The package installs and removes cleanly."

bench: build
	$(BUILD_DIR)/bin/ringwell-bench

format: web-deps
	git ls-files '*.cpp' '*.h' | xargs clang-format -i
	cd $(WEB_DIR) && npm run --silent format

clean:
	rm -rf build
