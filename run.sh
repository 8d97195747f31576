#!/usr/bin/env bash
# Builds what is missing (optimised) and starts the program.
set -euo pipefail
cd "$(dirname "$0")"
scripts/deps.sh
build=build/release
[ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" >&2
if [ $# -eq 0 ]; then
  exec "$build/src/cli/vinora-cli" --help
fi
exec "$build/src/cli/vinora-cli" "$@"
