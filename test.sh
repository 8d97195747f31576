#!/usr/bin/env bash
# Builds every test with AddressSanitizer and UndefinedBehaviorSanitizer and runs them all, then
# builds the fuzz targets with clang and runs each over its seeds and a fixed number of inputs.
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

fuzz=build/fuzz
cmake -S . -B "$fuzz" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVINORA_FUZZ=ON >/dev/null
cmake --build "$fuzz" --target fuzz_targets
ctest --test-dir "$fuzz" --output-on-failure -j "$(nproc)" "$@"
