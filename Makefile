# The front door. Everything else is behind cmake: see CMakePresets.json.
.DEFAULT_GOAL := help
.PHONY: help demo demo-m7 demo-freertos test-freertos build-freertos footprint check-footprint performance check-performance pictures build-counter test test-m7 test-m32 test-luajit test-oom test-apicheck soak check-soak coverage lint bench install package check-package fuzz docs mutants check-mutants build-mutants clean deps build-dev build-m7 build-release cases

# Builds share the objects that their settings leave alike, whichever folder they are built in.
export CCACHE_NOHASHDIR := 1

PREFIX ?= /usr/local
APP ?= examples/thermostat
SECONDS ?= 60
DEMO_EVENTS = press:climate.target.warmer press:climate.mode.cool press:climate.room.alerts press:climate.room.alerts \
	press:preferences.brightness.card press:week.heading.holiday

help: ## Show this list
	@awk -F ':.*## ' '/^[a-z0-9-]+:.*## /{printf "  make %-18s %s\n", $$1, $$2}' $(MAKEFILE_LIST)

demo: deps build-release ## Build all and run the thermostat with its scripts
	build/release/bin/kel run $(APP) $(DEMO_EVENTS:%=--event %)

test: deps build-dev ## Build all with sanitizers and run every test
	ctest --preset dev

test-m32: deps cases ## Run every test with 32-bit words, Lua built with sanitizers too
	cmake --preset m32 && cmake --build --preset m32
	ctest --preset m32

test-luajit: deps ## Run every test on LuaJIT
	cmake --preset luajit && cmake --build --preset luajit
	ctest --preset luajit

test-m7: deps build-release cases build-m7 ## Run the tests on an emulated Cortex-M7
	ctest --preset m7

demo-m7: deps build-m7 ## Run the thermostat on an emulated Cortex-M7
	target/cortex-m7/emulate build/m7/bin/kel run $(APP) $(DEMO_EVENTS:%=--event %)

demo-freertos: build-freertos ## Run the thermostat in a FreeRTOS task there: FREERTOS_KERNEL_PATH=FOLDER
	$(if $(FREERTOS_KERNEL_PATH),target/cortex-m7/emulate build/freertos/bin/kel_freertos $(APP) $(DEMO_EVENTS:%=--event %))

test-freertos: build-freertos $(if $(FREERTOS_KERNEL_PATH),build-release) ## Run the tests of that: FREERTOS_KERNEL_PATH=FOLDER
	$(if $(FREERTOS_KERNEL_PATH),ctest --preset freertos)

footprint: deps build-m7 ## Measure the plug-in on a Cortex-M7 and write docs/footprint.md
	mkdir -p build/footprint
	target/cortex-m7/emulate build/m7/bin/heap_figures > build/footprint/heap.json
	tools/footprint --write --measured build/footprint/heap.json

check-footprint: deps ## Hold the plug-in's size and stack on a Cortex-M7 against the budgets
	tools/footprint --check

performance: deps build-counter ## Count the instructions of each operation on a Cortex-M7 and write docs/performance.md
	tools/performance --write

check-performance: deps build-counter ## Hold the operations' instructions against docs/performance.md
	tools/performance --check

test-oom: deps build-dev ## Let each request for memory fail once, under every test of the conformance suite
	printf 'build/dev/bin/conformance_oom_%s\n' reference recording | xargs -n 1 -P 2 env

pictures: deps build-release ## Draw what README.md and the manual show
	tools/pictures

test-apicheck: deps build-dev ## Run every test with a Lua that checks how it is called
	tools/test-apicheck

soak: deps ## Call the thermostat's handlers a million times and find whether anything grows (a minute)
	cmake --preset release -B build/soak -DKEL_BUILD_TESTS=ON && cmake --build build/soak --target soak luakeldom
	build/soak/bin/soak examples/thermostat build/soak/lib/luakeldom.so 1000000 tests/soak/more_work.lua

check-soak: deps ## The same for a few seconds, with sanitizers, and whether it finds what grows
	cmake --preset dev && cmake --build --preset dev --target soak luakeldom
	ctest --preset dev -R '^soak[.]'

fuzz: deps ## Look for inputs that break plug-in or host, with each fuzzer for SECONDS=60
	cmake --preset fuzz && cmake --build --preset fuzz
	nice -n 10 tests/fuzz/run $(SECONDS)

coverage: deps ## Show which lines and branches of the plug-in the tests do not reach
	cmake --preset coverage && cmake --build --preset coverage
	find build/coverage -name '*.gcda' -delete
	ctest --preset coverage
	gcovr --root . --filter 'src/plugins/kel/luakeldom/' --exclude-unreachable-branches --exclude-throw-branches \
	    --branches --print-summary --fail-under-line 100 --fail-under-branch 100 build/coverage

mutants: deps build-mutants ## Change the plug-in in one place at a time, and show which changes no test notices
	nice tools/mutants

check-mutants: deps build-mutants ## The same for a few of these places, and whether that can tell
	/usr/bin/python3 -B -m unittest tests/mutants/test_mutations.py
	nice tools/mutants --sample 20 --seed 7 --jobs 1

lint: deps ## Check format, include order, static analysis, Lua and shell scripts
	tools/lint

bench: deps ## Measure start-up, and the time of each operation beside its floor
	cmake --preset bench && cmake --build --preset bench
	build/bench/bin/bench_host --benchmark_out=build/bench/host.json --benchmark_out_format=json
	build/bench/bin/bench_operations --benchmark_out=build/bench/operations.json --benchmark_out_format=json

docs: deps ## Build the manual, build/manual/index.html
	PYTHONDONTWRITEBYTECODE=1 mkdocs build --strict

install: deps build-release ## Install below PREFIX=/usr/local; with DESTDIR=FOLDER, staged there
	cmake --install build/release --prefix "$(or $(PREFIX),$(error PREFIX is empty, expected a folder))"

package: deps build-release ## Make a Debian package, build/release/*.deb
	rm -f build/release/*.deb
	cmake --build --preset release --target package

check-package: package ## Check what that package has, and run it
	cd tests/install && PACKAGE="$$(ls "$(CURDIR)"/build/release/*.deb)" /usr/bin/python3 -B -m unittest test_package.py

clean: ## Remove everything that was built
	rm -rf build

deps:
	@tools/install-deps

cases: # random ones, new each time, for machines that cannot make them
	cmake --preset dev && cmake --build --preset dev --target test_property
	build/dev/bin/test_property --write build/cases

build-dev:
	cmake --preset dev && cmake --build --preset dev

build-m7:
	cmake --preset m7 && cmake --build --preset m7

build-mutants:
	cmake --preset mutants && cmake --build --preset mutants
	cmake --preset dev && cmake --build --preset dev --target test_plugin conformance_recording conformance_reference

build-counter:
	cmake --preset m7 && cmake --build --preset m7 --target count_operations

build-release:
	cmake --preset release && cmake --build --preset release

# The kernel is the user's.
build-freertos: $(if $(FREERTOS_KERNEL_PATH),deps)
ifneq ($(FREERTOS_KERNEL_PATH),)
	cmake --preset freertos "-DFREERTOS_KERNEL_PATH=$(FREERTOS_KERNEL_PATH)" && cmake --build --preset freertos
else
	@echo "FREERTOS_KERNEL_PATH is not set: what runs on FreeRTOS is left out"
endif
