# The commands of the README. Everything is built below build/, one folder per preset.

.PHONY: help setup build demo test test-asan test-install test-packages test-windows test-cross abi-check fuzz \
  fuzz-briefly coverage bench docs format format-check lint package clean

help: ## List the commands
	@grep -E '^[a-z-]+:.*## ' $(MAKEFILE_LIST) | sed -E 's/:[^#]*## /\t/' | expand -t 16

setup: ## Install the Debian packages that are missing for all of these commands
	@scripts/setup all

build: ## Build the library, the tool and the tests
	@scripts/setup test
	@scripts/build dev

demo: ## Show the main jobs: configurations to a simulated device and back, calibrations to settings, images
	@scripts/setup
	@scripts/build package
	@scripts/demo build/package

test: build ## Run all tests
	@scripts/test dev

test-asan: ## Run all tests under AddressSanitizer and UndefinedBehaviorSanitizer
	@scripts/setup test asan
	@scripts/build asan
	@scripts/test asan

test-install: ## Install the release and build host programs against it in every way
	@scripts/setup package
	@scripts/test-consumer

test-packages: ## Make the packages and try them
	@scripts/setup package
	@scripts/test-packages

test-windows: ## Build for Windows and run all tests under Wine
	@scripts/setup windows
	@scripts/test-windows

test-cross: ## Run all tests on emulated ARM and big-endian machines, and as clang builds them
	@scripts/setup cross test
	@scripts/test-cross

abi-check: ## Compare the binary interface with that of the snapshot
	@scripts/setup abi
	@scripts/abi-check

package: ## Make the Debian packages and the archive (in build/package/packages)
	@scripts/setup package
	@scripts/build package
	@cd build/package && cpack

fuzz: ## Run every fuzz target for a minute (SECONDS=n for longer)
	@scripts/setup fuzz
	@scripts/fuzz $(or $(SECONDS),60)

fuzz-briefly: ## Run every fuzz target for five seconds
	@$(MAKE) --no-print-directory fuzz SECONDS=5

coverage: ## Measure the line coverage of src/ (report in build/coverage/coverage.html)
	@scripts/setup test check
	@scripts/build coverage
	@scripts/coverage

bench: ## Measure against well-kept peers (report in build/bench/report.md)
	@scripts/setup bench
	@scripts/build release
	@scripts/bench

docs: ## Make the reference manual (in build/doxygen/html)
	@scripts/setup docs
	@scripts/docs

format: ## Format the sources
	@scripts/setup check
	@scripts/format

format-check: ## Fail if a source is not formatted
	@scripts/setup check
	@scripts/format --check

lint: ## Run clang-tidy, shellcheck and the spelling check
	@scripts/setup test check
	@scripts/build dev
	@scripts/lint

clean: ## Remove everything that was built
	rm -rf build
