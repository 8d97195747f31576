#!/usr/bin/env bash
# Builds the Debian package of the program, optimised and installed under /usr, in its own
# build folder (build/package), checks it with lintian when lintian is installed, and leaves
# vinora_VERSION_ARCH.deb in the current folder. Install it with
#     sudo apt-get install ./vinora_*.deb
set -euo pipefail
out=$PWD
cd "$(dirname "$0")/.."
scripts/deps.sh
build=build/package
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
# Hardened as Debian builds its own packages: checked buffer functions, stack protector,
# read-only relocations bound at start.
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVINORA_TESTS=OFF \
      -DVINORA_BENCH=OFF -DCMAKE_INSTALL_PREFIX=/usr "${launcher[@]}" \
      -DCMAKE_C_FLAGS="-D_FORTIFY_SOURCE=2 -fstack-protector-strong" \
      -DCMAKE_CXX_FLAGS="-D_FORTIFY_SOURCE=2 -fstack-protector-strong" \
      -DCMAKE_EXE_LINKER_FLAGS="-Wl,-z,relro,-z,now" >/dev/null
cmake --build "$build"
rm -f "$build"/vinora_*.deb
(cd "$build" && cpack -G DEB >/dev/null)
package=$(ls "$build"/vinora_*.deb)
if command -v lintian >/dev/null; then
  lintian --fail-on error "$package"
fi
cp "$package" "$out/"
echo "$out/$(basename "$package")"
