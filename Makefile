# The commands of this project; each installs what it needs first, and all work twice.
BUILD := build
PYTHON := PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3
CTEST := ctest --output-on-failure --parallel 2

.PHONY: help setup configure build demo gallery test accept-pictures bench format sanitize clean
.DEFAULT_GOAL := help

help:
	@echo 'make demo      build, deliver a sample push to a fresh device, show what came of it'
	@echo 'make gallery   draw every layout and state into a page: $(BUILD)/gallery/index.html'
	@echo 'make test      build everything, run the whole suite and the checks of the source'
	@echo 'make build     build the program: $(BUILD)/tavrolin'
	@echo 'make accept-pictures'
	@echo '               take the pictures that are drawn now as those that tests compare with'
	@echo 'make bench     run the benchmarks, each as a ratio to a baseline beside it'
	@echo 'make sanitize  run the suite under the address, undefined-behaviour and thread sanitizers'
	@echo 'make format    format the source'
	@echo 'make clean     remove $(BUILD)/'

setup:
	@scripts/setup

configure: setup
	@echo '== Configuring'
	@cmake --preset release

build: configure
	@echo '== Building the program'
	@cmake --build $(BUILD) --target tavrolin_app
	@echo '== Built: $(BUILD)/tavrolin'

demo: build
	@scripts/demo

gallery: build
	@echo '== Drawing the gallery'
	@$(PYTHON) scripts/gallery --program $(BUILD)/tavrolin --folder $(BUILD)/gallery

test: configure
	@echo '== Building everything'
	@cmake --build $(BUILD)
	@echo '== Testing'
	@$(CTEST) --test-dir $(BUILD)

accept-pictures: build
	@$(PYTHON) tests/gallery/golden_test.py . $(BUILD)/tavrolin $(BUILD)/gallery-tests/golden --accept

bench: setup
	@scripts/bench

format: setup
	@scripts/format

sanitize: setup
	@scripts/sanitize

clean:
	rm -rf $(BUILD)
