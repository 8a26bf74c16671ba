# Velloran — the two commands people use are `make run` and `make test`.
SANITIZE ?= 0
WERROR ?= 0
BUILD_TYPE ?= RelWithDebInfo
TEST_LABELS ?=
# Build only these targets (default: everything).
BUILD_TARGETS ?=
JOBS ?= $(shell nproc)
# Where `make install` puts the programs, icons and desktop files.
PREFIX ?= /usr/local

ifeq ($(SANITIZE),1)
BUILD_DIR ?= build-sanitize
else
BUILD_DIR ?= build
endif

CMAKE_FLAGS = -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	-DVELLORAN_SANITIZE=$(if $(filter 1,$(SANITIZE)),ON,OFF) \
	-DVELLORAN_WERROR=$(if $(filter 1,$(WERROR)),ON,OFF)

CTEST_ARGS = --output-on-failure -j $(JOBS) $(if $(TEST_LABELS),-L '$(TEST_LABELS)',)

.PHONY: deps configure build run test bench clean fuzz install

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) $(if $(BUILD_TARGETS),--target $(BUILD_TARGETS),)

DEMO_DOCUMENT = resources/demo/Demo.composition

run: build
	@if [ -d $(DEMO_DOCUMENT) ]; then $(BUILD_DIR)/src/app/velloran $(DEMO_DOCUMENT); else $(BUILD_DIR)/src/app/velloran; fi

test: build
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest $(CTEST_ARGS)

install: build
	@cmake --install $(BUILD_DIR) --prefix $(PREFIX)

bench: deps
	@cmake -S . -B build-bench $(subst RelWithDebInfo,Release,$(CMAKE_FLAGS)) -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build build-bench -j $(JOBS) --target velloran-bench
	@bash bench/run.sh build-bench

fuzz: deps
	@bash fuzz/run.sh

clean:
	rm -rf build build-sanitize build-bench build-fuzz
