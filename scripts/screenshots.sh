#!/usr/bin/env bash
# Renders every window to docs/screenshots/*.png on the offscreen platform (no display needed).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
build=build/test
[ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DVINORA_SANITIZE=ON -DVINORA_BENCH=OFF >/dev/null
cmake --build "$build" --target test_ui >&2
mkdir -p docs/screenshots
LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp" VINORA_SCREENSHOTS="$PWD/docs/screenshots" QT_QPA_PLATFORM=offscreen \
  "$build/tests/test_ui" --gtest_filter='Screenshots.*' >/dev/null
ls docs/screenshots/*.png
