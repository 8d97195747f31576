#!/usr/bin/env bash
# Runs each fuzz target in turn for SECONDS (one at a time) and reports, per target, the inputs
# run, inputs per second and the coverage reached (libFuzzer's cov and ft), and what it found.
#   fuzz/campaign.sh SECONDS [NAME...]      (default: every target with a seed corpus)
# The targets must be built (see fuzz/CMakeLists.txt). Each target starts from its seeds
# (fuzz/corpus/NAME) and the corpus of earlier campaigns (build/fuzz/campaign/corpus/NAME).
# A crash, a hang (an input taking over 1 s) or a memory blow-up (over 512 MB) ends the
# target's run; the input is kept in build/fuzz/campaign/crashes/NAME/, the log in
# build/fuzz/campaign/NAME.log. Run it with nice on a shared machine.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=$1
shift
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for dir in fuzz/corpus/*/; do names+=("$(basename "$dir")"); done
fi
build=build/fuzz
out=$build/campaign
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data"

printf '%-12s %8s %10s %8s %6s %6s  %s\n' target seconds inputs inputs/s cov ft result
for name in "${names[@]}"; do
  mkdir -p "$out/corpus/$name" "$out/crashes/$name"
  log=$out/$name.log
  start=$(date +%s)
  result=clean
  "$build/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=1 -rss_limit_mb=512 \
    -print_final_stats=1 -artifact_prefix="$out/crashes/$name/" \
    "$out/corpus/$name" "fuzz/corpus/$name" >"$log" 2>&1 || result=found
  took=$(($(date +%s) - start))
  stats=$(grep -E '^#[0-9]+' "$log" | tail -1 || true)
  cov=$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' <<<"$stats")
  ft=$(sed -n 's/.* ft: \([0-9]*\).*/\1/p' <<<"$stats")
  inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  if [ "$result" = found ]; then
    result="found: $(grep -m1 -oE 'ERROR: [A-Za-z]+: [a-z-]+|runtime error: .*|ERROR: libFuzzer: [a-z-]+' "$log" || echo 'see log')"
  fi
  printf '%-12s %8s %10s %8s %6s %6s  %s\n' "$name" "$took" "${inputs:-?}" "${rate:-?}" \
    "${cov:-?}" "${ft:-?}" "$result"
done
