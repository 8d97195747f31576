#!/usr/bin/env bash
# Builds every test with AddressSanitizer and UndefinedBehaviorSanitizer and runs them all.
# Exits non-zero when any test fails.
set -euo pipefail
cd "$(dirname "$0")"
scripts/deps.sh
build=build/test
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVINORA_SANITIZE=ON -DVINORA_BENCH=OFF >/dev/null
cmake --build "$build"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
