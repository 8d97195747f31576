#!/usr/bin/env bash
# Builds the tag fuzz targets with clang (libFuzzer, AddressSanitizer, UBSan) and runs each for
# a while on a seed corpus of tagged files made with the tools the tests use.
#   fuzz/tags-fuzz.sh [SECONDS]        (default 120 per target)
# Corpora grow in build/fuzz/corpus-*; crashes are written to build/fuzz/ as crash-* files.
# Run one input again: build/fuzz/fuzz_id3v2_tag build/fuzz/crash-...
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
build=build/fuzz
cmake -S fuzz -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null
cmake --build "$build" --target fuzz_id3v2_tag fuzz_wave_tags

seeds=$(mktemp -d)
trap 'rm -rf "$seeds"' EXIT
sox -n -r 8000 -c 1 -b 16 "$seeds/tone.wav" synth 0.05 sine 440
lame --quiet -b 32 "$seeds/tone.wav" "$seeds/plain.mp3"
cp "$seeds/plain.mp3" "$seeds/id3lib.mp3"
id3v2 -a Artist -A Album -t Title -y 1999 -T 3/12 -g 17 -c Comment "$seeds/id3lib.mp3"
# Tags as this system writes them, when a vinora-cli has been built.
cli=${VINORA_CLI:-build/release/src/cli/vinora-cli}
if [ -x "$cli" ]; then
  cp "$seeds/plain.mp3" "$seeds/vinora.mp3"
  cp "$seeds/tone.wav" "$seeds/vinora.wav"
  for file in "$seeds/vinora.mp3" "$seeds/vinora.wav"; do
    "$cli" tags "$file" --set TITLE=Title --set GENRE=Rock --set COMMENT=Comment \
      --set URL=http://example.org --set RATING=5 --set PLAYCOUNT=9 --set POSTTIMER1USAGE=SEG
  done
fi
ffmpeg -v error -y -i "$seeds/tone.wav" -metadata title=Title -metadata artist=Artist \
  -write_bext 1 -metadata originator=Someone -c copy "$seeds/ffmpeg.wav"

mkdir -p "$build/corpus-id3v2" "$build/corpus-wave"
cp "$seeds"/*.mp3 "$build/corpus-id3v2/"
cp "$seeds"/*.wav "$build/corpus-wave/"
"$build/fuzz_id3v2_tag" -max_total_time="$seconds" -artifact_prefix="$build/" \
  "$build/corpus-id3v2"
"$build/fuzz_wave_tags" -max_total_time="$seconds" -artifact_prefix="$build/" \
  "$build/corpus-wave"
