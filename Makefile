# The doors to the everyday tasks; the work is done by CMake (see CMakePresets.json) and the scripts.
PRESET ?= dev
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PREFIX ?= /usr/local
# The build that demo, docs, package and install work with.
RELEASE ?= release
# How long make fuzz-long runs each target, and make soak in all.
SECONDS ?= 1800

DEPENDENCIES = scripts/install-dependencies.sh
BUILD = cmake --build --parallel $(JOBS)
MAKEFLAGS += --no-print-directory
CPP_FILES = $(shell git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
SOURCES = git ls-files --cached --others --exclude-standard
CLANG_TIDY = clang-tidy --quiet -p build/$(PRESET)
# The analyzer takes three fifths of the time, and a quarter of that if it doesn't look far into callees. The program, small beside
# the library and run under the sanitizers, does without it.
LINT_LIBRARY = $(foreach word,-Xclang -analyzer-config -Xclang mode=shallow,--extra-arg=$(word))
LINT_TOOLS = --checks=-clang-analyzer-*

.DEFAULT_GOAL := help
.PHONY: help demo test bench stress faults asan tsan coverage fuzz fuzz-long predicates soak format lint exports docs package install clean

help: ## list the targets
	@sed -nE 's/^([a-z-]+):.*## (.*)/  make \1\t\2/p' $(MAKEFILE_LIST) | expand -t 20

demo: ## triangulate the world's coastlines, draw them, fill the land, and mesh an island, in demo/
	$(DEPENDENCIES) demo
	cmake --preset $(RELEASE) -DNORVIK2D_BUILD_EXAMPLES=ON
	$(BUILD) --preset $(RELEASE) --target norvik2d_tool norvik2d_example_landAndSea
	scripts/demo.sh build/$(RELEASE) demo

test: ## build and run all tests (PRESET=dev)
	$(DEPENDENCIES) test
	cmake --preset $(PRESET) -DNORVIK2D_BUILD_TESTS=ON
	$(BUILD) --preset $(PRESET)
	ctest --preset $(PRESET) --parallel $(JOBS)

bench: ## measure against other libraries and print the table of ratios
	$(DEPENDENCIES) bench
	cmake --preset release -DNORVIK2D_BUILD_TOOLS=OFF -DNORVIK2D_BUILD_BENCHMARKS=ON
	$(BUILD) --preset release
	benchmarks/run.sh build/release

stress: ## insert random points 200 times on random numbers of threads (SEED=...)
	$(DEPENDENCIES) test
	cmake --preset $(PRESET) -DNORVIK2D_BUILD_TESTS=ON
	$(BUILD) --preset $(PRESET) --target norvik2d_stress
	build/$(PRESET)/fuzz/norvik2d_stress $(SEED)

faults: ## plant forty small faults, and tell which of them the tests catch
	$(DEPENDENCIES) faults
	JOBS=$(JOBS) tests/faults/plant.py

asan: ## run the tests under the address and undefined behaviour sanitizers
	@$(MAKE) test PRESET=asan-ubsan

tsan: ## run the threaded tests under the thread sanitizer
	@$(MAKE) test PRESET=tsan

fuzz: ## run each fuzz target for a minute
	@$(MAKE) fuzz-long SECONDS=60

fuzz-long: ## run each fuzz target for half an hour, JOBS at a time (SECONDS=...)
	$(DEPENDENCIES) fuzz
	cmake --preset fuzz
	$(BUILD) --preset fuzz
	fuzz/run.sh build/fuzz $(SECONDS) $(JOBS)

predicates: ## compare 100 million answers of the predicates with exact ones (SEED=...)
	$(DEPENDENCIES) fuzz
	cmake --preset release -DNORVIK2D_BUILD_FUZZERS=ON
	$(BUILD) --preset release --target norvik2d_predicates
	build/release/fuzz/norvik2d_predicates --threads $(JOBS) $(if $(SEED),--seed $(SEED))

soak: ## work at random on meshes of JOBS threads for half an hour, all laws checked (SECONDS=..., SEED=...)
	$(DEPENDENCIES) fuzz
	cmake --preset release -DNORVIK2D_BUILD_FUZZERS=ON
	$(BUILD) --preset release --target norvik2d_soak
	build/release/fuzz/norvik2d_soak --seconds $(SECONDS) --threads $(JOBS) $(if $(SEED),--seed $(SEED))

coverage: ## tell how much of the library the tests execute; line by line in build/coverage/report
	$(DEPENDENCIES) coverage
	cmake --preset coverage -DNORVIK2D_BUILD_TESTS=ON
	$(BUILD) --preset coverage
	find build/coverage -name '*.gcda' -delete
	ctest --preset coverage --parallel $(JOBS)
	mkdir -p build/coverage/report
	gcovr --filter dt2Library/ --exclude-throw-branches --exclude-unreachable-branches -j $(JOBS) \
	    --html-details build/coverage/report/index.html --print-summary build/coverage/CMakeFiles/norvik2d_objects.dir

format: ## format all C++ files
	$(DEPENDENCIES) lint
	clang-format -i $(CPP_FILES)

lint: ## check the rules of the tree, and the library with clang-tidy
	$(DEPENDENCIES) lint
	tools/checkHouse.sh
	cmake --preset $(PRESET)
	$(SOURCES) 'dt2Library/*.cpp' | xargs -P $(JOBS) -n 1 $(CLANG_TIDY) $(LINT_LIBRARY)
	$(SOURCES) 'tools/*.cpp' | xargs -P $(JOBS) -n 1 $(CLANG_TIDY) $(LINT_TOOLS)

exports: ## keep what the library exports now as what it has to export from now on, in tests/exports
	$(DEPENDENCIES) exports
	cmake --preset dev -DNORVIK2D_BUILD_TESTS=OFF
	$(BUILD) --preset dev --target norvik2d
	tests/exports/exports_test.sh renew build/dev/libnorvik2d.so include build/dev/include

docs: ## make the reference, in build/release/docs/html
	$(DEPENDENCIES) docs
	cmake --preset $(RELEASE) -DNORVIK2D_BUILD_TOOLS=OFF -DNORVIK2D_BUILD_DOCS=ON
	$(BUILD) --preset $(RELEASE) --target norvik2d_docs

package: ## make Debian packages, in build/packages
	$(DEPENDENCIES) package
	cmake --preset $(RELEASE) -DCMAKE_INSTALL_PREFIX=/usr
	$(BUILD) --preset $(RELEASE)
	cpack --config build/$(RELEASE)/CPackConfig.cmake -B build/packages

install: ## install the library below PREFIX (/usr/local)
	$(DEPENDENCIES) demo
	cmake --preset $(RELEASE) -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	$(BUILD) --preset $(RELEASE)
	cmake --install build/$(RELEASE)

clean: ## remove all builds and the demo's pictures
	rm -rf build demo
