# Thin names over the CMake presets; whoever prefers CMake uses it directly.
JOBS ?= $(shell nproc)

.PHONY: demo test bench check fuzz asan coverage install clean

demo:
	scripts/install_packages build
	cmake --preset release -DTQC_BUILD_BENCH=OFF
	cmake --build --preset release --parallel $(JOBS) --target tqc
	scripts/demo build/release/tools/tqc/tqc

test:
	scripts/install_packages build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS)
	ctest --preset release

bench:
	scripts/install_packages build bench
	cmake --preset release -DTQC_BUILD_BENCH=ON -DTQC_BENCH_SIZE=$${SIZE:-256000000}
	cmake --build --preset release --parallel $(JOBS) --target bench_files
	cmake --build --preset release --parallel $(JOBS) --target run_benchmarks
	cmake --build --preset release --parallel $(JOBS) --target run_access_benchmark

check:
	scripts/install_packages build check
	cmake --preset check
	cmake --build --preset check --parallel $(JOBS)
	scripts/check build/check

asan:
	scripts/install_packages build
	cmake --preset asan
	cmake --build --preset asan --parallel $(JOBS)
	ctest --preset asan

fuzz:
	scripts/install_packages build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS)
	scripts/run_fuzzers build/fuzz $${FUZZ_SECONDS:-60}

coverage:
	scripts/install_packages build coverage
	cmake --preset coverage
	cmake --build --preset coverage --parallel $(JOBS)
	ctest --preset coverage
	gcovr --root . --object-directory build/coverage --filter src/ --exclude '.*/Tables.*' --gcov-ignore-parse-errors --print-summary

install:
	scripts/install_packages build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS)
	cmake --install build/release

clean:
	rm -rf build
