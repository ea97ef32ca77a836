# Short names for the CMake presets.
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local

.PHONY: demo test quick bench check fuzz asan coverage windows test-windows docs install uninstall package clean

demo:
	scripts/install_packages build
	cmake --preset release -DTQC_BUILD_BENCH=OFF
	cmake --build --preset release --parallel $(JOBS) --target tqc
	scripts/demo build/release/tools/tqc/tqc

test:
	scripts/install_packages build python
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS)
	ctest --preset release --parallel $(JOBS)

# Between two edits: the quick tests in a debug build.
quick:
	cmake --preset dev
	cmake --build --preset dev --parallel $(JOBS) --target quick_tests
	ctest --preset dev --parallel $(JOBS) --label-regex '^quick$$'

# EARLIER=PATH: an earlier build of tqc to compare with.
bench:
	scripts/install_packages build bench python
	cmake --preset release -DTQC_BUILD_BENCH=ON -DTQC_BENCH_SIZE=$${SIZE:-256000000} -DTQC_BENCH_EARLIER=$(EARLIER)
	cmake --build --preset release --parallel $(JOBS) --target bench_files
	cmake --build --preset release --parallel $(JOBS) --target run_program_benchmark
	cmake --build --preset release --parallel $(JOBS) --target bench_xls
	cmake --build --preset release --parallel $(JOBS) --target bench_xlsx
	cmake --build --preset release --parallel $(JOBS) --target bench_jobs
	cmake --build --preset release --parallel $(JOBS) --target run_access_benchmark
	cmake --build --preset release --parallel $(JOBS) --target run_batch_benchmark
	cmake --build --preset release --parallel $(JOBS) --target run_python_benchmark
	cmake --build --preset release --parallel $(JOBS) --target run_benchmarks

# With CHANGED=1 the static analysis looks only at what differs from the branch main, and needs nothing built.
check:
	scripts/install_packages build check docs
	cmake --preset asan
ifdef CHANGED
	CHECK_TIDY=changed scripts/check build/asan
	@echo "Before a commit, also run: make quick"
else
	cmake --build --preset asan --parallel $(JOBS)
	scripts/check build/asan
	@echo "Before a merge, also run: make test asan"
endif

asan:
	scripts/install_packages build check
	cmake --preset asan
	cmake --build --preset asan --parallel $(JOBS)
	ctest --preset asan --parallel $(JOBS)

# The DLL, tqc.exe and, in build/windows, a zip of them with headers, import library and manual.
windows:
	scripts/install_packages windows
	cmake --preset windows
	cmake --build --preset windows --parallel $(JOBS) --target tqc tqcAccess tqc_manual
	cd build/windows && cpack

# Under Wine, in a prefix in the build folder. The program of Linux is what that of Windows is compared with.
test-windows:
	scripts/install_packages build windows
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target tqc
	cmake --preset windows
	cmake --build --preset windows --parallel $(JOBS)
	ctest --preset windows --parallel $(JOBS)

fuzz:
	scripts/install_packages build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS)
	scripts/run_fuzzers build/fuzz $${FUZZ_SECONDS:-60}

coverage:
	scripts/install_packages build coverage
	cmake --preset coverage
	cmake --build --preset coverage --parallel $(JOBS)
	ctest --preset coverage --parallel $(JOBS)
	scripts/check_coverage build/coverage

# The reference of the exported headers, to build/docs/html.
docs:
	scripts/install_packages docs
	scripts/make_docs build/docs

# PREFIX is where it will be, DESTDIR what is put before every path meanwhile. The Python module is included where the
# headers of Python are (python3-dev).
install:
	scripts/install_packages build
	cmake --preset install -DCMAKE_INSTALL_PREFIX=$(abspath $(PREFIX))
	cmake --build --preset install --parallel $(JOBS)
	cmake --install build/install

# What `make install` has installed, wherever that was; DESTDIR as it was then.
uninstall:
	scripts/uninstall build/install/install_manifest.txt

# Debian packages of the library, of what programs are built with, of tqc and of the Python module, to build/package.
package:
	scripts/install_packages build package
	cmake --preset package
	cmake --build --preset package --parallel $(JOBS)
	rm -f build/package/*.deb
	cd build/package && cpack -G DEB
	scripts/check_packages build/package/*.deb

clean:
	rm -rf build
