#!/usr/bin/env bash
# Builds what is missing (optimised) and starts the program. With a display (X11 or Wayland) it
# opens the desktop program, with the audio files given added to its list; a vinora-cli command
# ("./run.sh info FILE") runs the command-line tool. Without a display it says so and runs the
# command-line tool with the arguments given, or, without any, the headless demo (the demo side
# recorded from the Virtual Turntable, split into tracks, restored and converted).
set -euo pipefail
cd "$(dirname "$0")"
scripts/deps.sh
build=build/release
[ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" >&2
cli="$build/src/cli/vinora-cli"
if [ $# -gt 0 ] && [ ! -e "$1" ]; then
  exec "$cli" "$@"
fi
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$build/src/ui/vinora/vinora" "$@"
fi
echo "No display (DISPLAY and WAYLAND_DISPLAY are unset): running vinora-cli instead of the window." >&2
if [ $# -eq 0 ]; then
  exec "$cli" demo
fi
exec "$cli" "$@"
