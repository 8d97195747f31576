#!/usr/bin/env bash
# Runs a fuzz target over its seed corpus, then for a fixed number of mutated inputs; fails when
# an input crashes, hangs or takes too much memory (the input is saved in ARTIFACTS).
#   fuzz/run-seeds.sh TARGET SEEDS RUNS ARTIFACTS
# New inputs go to a temporary folder, so the seed corpus stays as it is; the home, settings and
# log folders are temporary too.
set -euo pipefail
target=$1 seeds=$2 runs=$3 artifacts=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$artifacts" "$work/corpus"
export HOME="$work" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data"
"$target" -runs="$runs" -seed=1 -timeout=5 -rss_limit_mb=512 -print_final_stats=1 \
  -artifact_prefix="$artifacts/" "$work/corpus" "$seeds"
