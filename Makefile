# The commands of the project (see README.md):
#   make test   installs what is missing, configures, builds and runs every test
#   make serve  installs what is missing, builds, and runs the media server mdbd in the foreground
#               on FOLDERS (default: the sample media library); MDBD_ARGS adds options
#   make demo   installs what is missing, builds, makes a sample media library, scans it with the
#               mdb tool and shows the library answering Browse and Search requests on it
#   make fuzz   builds the libFuzzer targets with clang, ASan and UBSan and runs each for FUZZ_TIME seconds
#   make bench  builds and runs the benchmark on a synthetic catalogue (never part of tests or CI)
#   make coverage  line coverage of the tests, measured with gcovr
# They work on a fresh Debian machine; run them as root to let them install Debian packages.

BUILD      ?= build
ASAN_BUILD ?= build-asan
BENCH_BUILD ?= build-bench
JOBS       ?= 2
FUZZ_BUILD ?= build-fuzz
COV_BUILD  ?= build-coverage
FUZZ_TIME  ?= 60

.PHONY: deps configure build test test-sanitize coverage serve demo fuzz bench bench-server clean

deps:
	@scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-sanitize: deps
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DMDB_SANITIZE=ON >/dev/null
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:fast_unwind_on_malloc=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan-suppressions.txt \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS) -E install_consumer

# Line coverage of the test command: the library alone, then the library, the platform and the
# tools together (gcovr, installed when run as root).
coverage:
	MDB_WITH_COVERAGE=1 scripts/install-deps.sh
	cmake -S . -B $(COV_BUILD) -DCMAKE_BUILD_TYPE=Debug -DMDB_COVERAGE=ON >/dev/null
	cmake --build $(COV_BUILD) -j $(JOBS)
	find $(COV_BUILD) -name '*.gcda' -delete
	ctest --test-dir $(COV_BUILD) -j $(JOBS) -E install_consumer >/dev/null
	@echo "== src/"
	@gcovr -r . --object-directory $(COV_BUILD) --filter 'src/' -s | tail -3
	@echo "== src/, platform/, tools/"
	@gcovr -r . --object-directory $(COV_BUILD) --filter 'src/' --filter 'platform/' --filter 'tools/' -s | tail -3

# Fuzzing: every target of fuzz/ runs FUZZ_TIME seconds from its seeds in fuzz/corpus/<name>/ (which
# stay as they are); new inputs and findings go to fuzz-corpus-work/. Standard output is closed, since
# the library's own messages (such as the parentID warning of CreateObject) would flood it.
FUZZ_TARGETS ?= search elements
fuzz:
	MDB_WITH_FUZZ=1 scripts/install-deps.sh
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMDB_FUZZ=ON \
	      -DMDB_SANITIZE=ON -DMDB_BUILD_TESTS=OFF >/dev/null
	cmake --build $(FUZZ_BUILD) -j $(JOBS) $(addprefix --target mdb_fuzz_,$(FUZZ_TARGETS))
	set -e; for t in $(FUZZ_TARGETS); do \
	  mkdir -p fuzz-corpus-work/$$t; \
	  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	    $(FUZZ_BUILD)/fuzz/mdb_fuzz_$$t -max_total_time=$(FUZZ_TIME) -timeout=10 -rss_limit_mb=2048 \
	    -close_fd_mask=1 -artifact_prefix=fuzz-corpus-work/$$t- fuzz-corpus-work/$$t fuzz/corpus/$$t; \
	done

FOLDERS ?=
serve: build
	server/serve.sh $(BUILD) $(FOLDERS)

demo: build
	tools/demo.sh $(BUILD)

# The benchmark on a synthetic catalogue (see bench/RESULTS.md); BENCH_ARGS="--million" for about
# 1,000,000 items. Not part of "make test" or CI.
bench: deps
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DMDB_BENCH=ON -DMDB_BUILD_TESTS=OFF \
	      -DMDB_SCHEMA_SCRIPT=$(CURDIR)/$(BENCH_BUILD)/share/mdb/create_db.sql >/dev/null
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target mdb_bench
	$(BENCH_BUILD)/bench/mdb_bench --work $(BENCH_BUILD)/work $(BENCH_ARGS)

# mdbd against MiniDLNA end to end (see bench/SERVER-RESULTS.md): a media tree of 50,000 tracks is
# made once in $(BENCH_BUILD)/server-tree; both servers run in a private network namespace.
# BENCH_SERVER_ARGS="--tracks 5000 --big 1000 --count 50" for a quick look. Not part of the tests.
bench-server:
	MDB_WITH_MINIDLNA=1 scripts/install-deps.sh
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DMDB_BENCH=ON -DMDB_BUILD_TESTS=OFF \
	      -DMDB_SCHEMA_SCRIPT=$(CURDIR)/$(BENCH_BUILD)/share/mdb/create_db.sql >/dev/null
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target mdbd mdb_bench_tag_tree
	scripts/run_in_namespace.sh /usr/bin/python3 bench/server/bench_server.py \
	  --mdbd $(BENCH_BUILD)/server/mdbd --tag-tree $(BENCH_BUILD)/bench/mdb_bench_tag_tree \
	  --tree $(BENCH_BUILD)/server-tree --work $(BENCH_BUILD)/server-work --out bench/SERVER-RESULTS.md \
	  $(BENCH_SERVER_ARGS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD) $(BENCH_BUILD) $(COV_BUILD) fuzz-corpus-work
