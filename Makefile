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

.PHONY: all deps configure build test run bench format clean package install

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	@QT_QPA_PLATFORM=offscreen ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

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

format:
	@find src tests bench -name '*.h' -o -name '*.cpp' | xargs clang-format -i

clean:
	@rm -rf $(BUILD) $(BUILD)-bench
