# The commands of the README. Everything is built below build/, one folder per preset.

.PHONY: help setup build demo test test-asan coverage bench format format-check lint ci clean

help: ## List the commands
	@grep -E '^[a-z-]+:.*## ' $(MAKEFILE_LIST) | sed -E 's/:[^#]*## /\t/' | expand -t 16

setup: ## Install the Debian packages that are missing
	@scripts/setup

build: setup ## Build the library, the tool and the tests
	@scripts/build dev

demo: build ## Take two sample configurations to a simulated device and back, and show the registers
	@scripts/demo build/dev

test: build ## Run all tests
	@ctest --preset dev --progress

test-asan: setup ## Run all tests under AddressSanitizer and UndefinedBehaviorSanitizer
	@scripts/build asan
	@ctest --preset asan --progress

coverage: setup ## Measure the line coverage of src/ (report in build/coverage/coverage.html)
	@scripts/build coverage
	@scripts/coverage

bench: setup ## Run the benchmarks
	@scripts/build release
	@scripts/bench

format: setup ## Format the sources
	@scripts/format

format-check: setup ## Fail if a source is not formatted
	@scripts/format --check

lint: setup ## Run clang-tidy, shellcheck and the spelling check
	@scripts/build dev
	@scripts/lint

clean: ## Remove everything that was built
	rm -rf build
