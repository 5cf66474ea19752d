# The two commands of the project (see README.md):
#   make test   installs what is missing, configures, builds and runs every test
#   make demo   installs what is missing, builds, makes a sample media library, scans it with the
#               mdb tool and shows the library answering Browse and Search requests on it
# Both work on a fresh Debian machine; run them as root to let them install Debian packages.

BUILD      ?= build
ASAN_BUILD ?= build-asan
BENCH_BUILD ?= build-bench
JOBS       ?= 2
SCHEMA      = $(CURDIR)/$(BUILD)/share/mdb/create_db.sql

.PHONY: deps configure build test test-sanitize demo bench clean

deps:
	@scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMDB_SCHEMA_SCRIPT=$(SCHEMA) >/dev/null

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-sanitize: deps
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DMDB_SANITIZE=ON \
	      -DMDB_SCHEMA_SCRIPT=$(CURDIR)/$(ASAN_BUILD)/share/mdb/create_db.sql >/dev/null
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS) -E install_consumer

demo: build
	tools/demo.sh $(BUILD)

# The benchmark on a synthetic catalogue (see bench/RESULTS.md); BENCH_ARGS="--million" for about
# 1,000,000 items. Not part of "make test" or CI.
bench: deps
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DMDB_BENCH=ON -DMDB_BUILD_TESTS=OFF \
	      -DMDB_SCHEMA_SCRIPT=$(CURDIR)/$(BENCH_BUILD)/share/mdb/create_db.sql >/dev/null
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target mdb_bench
	$(BENCH_BUILD)/bench/mdb_bench --work $(BENCH_BUILD)/work $(BENCH_ARGS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(BENCH_BUILD)
