# User-facing commands. The real build is CMake + Ninja in $(BUILD).
BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=
ifeq ($(CI),true)
CMAKE_ARGS += -DKILNOVA_WERROR=ON
endif

DEMO_DIR := examples/demo
DEMO_OUT := $(BUILD)/demo

PACKAGE_DIR ?= .
PREFIX      ?= /usr/local

.PHONY: all deps configure build test run bench format clean package install test-sanitize fuzz fuzz-build

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	@QT_QPA_PLATFORM=offscreen ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)
ifeq ($(CI),true)
	@$(MAKE) --no-print-directory test-sanitize
	@scripts/fuzz $(SANITIZE_BUILD) $(CI_FUZZ_SECONDS)
endif

# The place is checked first: a read-only one is said at once, not after the build.
package:
	@scripts/package check-dir $(PACKAGE_DIR) package
	@$(MAKE) --no-print-directory build
	@scripts/package deb $(BUILD) $(PACKAGE_DIR)

install:
	@scripts/package check-dir $(PREFIX) install
	@$(MAKE) --no-print-directory build
	@scripts/package install $(BUILD) $(PREFIX)

run: build
	@scripts/run-demo $(BUILD)

bench: deps
	@cmake -S . -B $(BUILD)-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKILNOVA_BUILD_TESTS=OFF -DKILNOVA_BUILD_BENCH=ON >/dev/null
	@cmake --build $(BUILD)-bench -j $(JOBS)
	@scripts/run-bench $(BUILD)-bench

# Reliability: the whole suite under AddressSanitizer and UBSan, and the fuzz targets, built by clang
# in a folder of their own. CI runs both (above); `make fuzz FUZZ_SECONDS=3600` fuzzes at length.
SANITIZE_BUILD  ?= $(BUILD)-sanitize
FUZZ_SECONDS    ?= 300
CI_FUZZ_SECONDS ?= 10
# The ODBC driver's leaks are only matched by the suppression on a full unwind through it.
SANITIZER_ENV   := ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:check_initialization_order=1 \
                   LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:fast_unwind_on_malloc=0 UBSAN_OPTIONS=print_stacktrace=1

fuzz-build: deps
	@cmake -S . -B $(SANITIZE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
	  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DKILNOVA_SANITIZE=ON -DKILNOVA_BUILD_FUZZ=ON $(CMAKE_ARGS) >/dev/null

test-sanitize: fuzz-build
	@$(SANITIZER_ENV) cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	@$(SANITIZER_ENV) QT_QPA_PLATFORM=offscreen ctest --test-dir $(SANITIZE_BUILD) --output-on-failure -j $(JOBS)

fuzz: fuzz-build
	@cmake --build $(SANITIZE_BUILD) -j $(JOBS) --target fuzz_targets
	@scripts/fuzz $(SANITIZE_BUILD) $(FUZZ_SECONDS)

format:
	@find src tests bench -name '*.h' -o -name '*.cpp' | xargs clang-format -i

clean:
	@rm -rf $(BUILD) $(BUILD)-bench $(SANITIZE_BUILD)
