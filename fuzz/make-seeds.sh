#!/usr/bin/env bash
# Makes the seed corpora of the fuzz targets (corpus/NAME) from real outputs: sox, LAME, id3v2,
# ffmpeg and this program's own vinora-cli (its AIFF writer, wave writer, tag writers and queue
# file), plus a few hand-made inputs for layouts no tool here writes (ID3v2.2, unsynchronised
# and compressed ID3v2 frames, drive replies, HTTP replies). Every seed is small.
#   fuzz/make-seeds.sh [VINORA_CLI]     (default build/test/src/cli/vinora-cli)
# Seeds found by campaigns (regression inputs) are kept: only the made files are replaced.
set -euo pipefail
cd "$(dirname "$0")"
cli=$(realpath "${1:-../build/test/src/cli/vinora-cli}")
corpus=$PWD/corpus
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
export HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/home/config" XDG_DATA_HOME="$tmp/home/data"
mkdir -p "$HOME" "$corpus"/{wave_file,wave_tags,mp3_file,mp3_frames,id3v2_tag,aiff_track,http_reply,mmc_reply,queue_file}

# Wave files of every sample format the reader takes.
sox -n -r 8000 -c 1 -b 16 "$tmp/tone.wav" synth 0.02 sine 440
sox -n -r 8000 -c 1 -b 8 "$corpus/wave_file/pcm8.wav" synth 0.02 sine 440
sox -n -r 8000 -c 2 -b 24 "$corpus/wave_file/pcm24-stereo.wav" synth 0.01 sine 440
sox -n -r 8000 -c 1 -b 32 -e float "$corpus/wave_file/float32.wav" synth 0.01 sine 440
sox -n -r 8000 -c 1 -e ima-adpcm "$corpus/wave_file/ima-adpcm.wav" synth 0.05 sine 440
sox -n -r 8000 -c 3 -b 16 "$corpus/wave_file/extensible-3ch.wav" synth 0.01 sine 440
"$cli" convert "$tmp/tone.wav" "$corpus/wave_file/vinora.wav" >/dev/null

# Wave tags: LIST INFO, DISP, bext and cart as this program writes them, and ffmpeg's bext.
cp "$tmp/tone.wav" "$corpus/wave_tags/plain.wav"
for mode in 0 1 2 3; do
  cp "$tmp/tone.wav" "$corpus/wave_tags/vinora-mode$mode.wav"
  "$cli" tags "$corpus/wave_tags/vinora-mode$mode.wav" --mode "$mode" --set TITLE=Title \
    --set ARTIST=Artist --set COMMENT=Comment --set URL=http://example.org --set GENRE=Rock \
    --set POSTTIMER1USAGE=SEG --set CODINGHISTORY=A=PCM >/dev/null
done
ffmpeg -v error -y -i "$tmp/tone.wav" -metadata title=Title -metadata artist=Artist \
  -write_bext 1 -metadata originator=Someone -c copy "$corpus/wave_tags/ffmpeg-bext.wav"
cp "$corpus/wave_tags/vinora-mode3.wav" "$corpus/wave_file/vinora-tagged.wav"

# MP3: MPEG-1, 2 and 2.5, constant and variable bit rate, CRC, joint stereo, encoder tags.
sox -n -r 44100 -c 2 -b 16 "$tmp/stereo.wav" synth 0.1 sine 440 sine 660
lame --quiet -b 32 "$tmp/tone.wav" "$corpus/mp3_frames/mpeg25-mono.mp3"
lame --quiet --resample 16 -b 24 "$tmp/tone.wav" "$corpus/mp3_frames/mpeg2.mp3"
lame --quiet -V 5 "$tmp/stereo.wav" "$corpus/mp3_frames/vbr-joint.mp3"
lame --quiet -m s -b 128 -p "$tmp/stereo.wav" "$corpus/mp3_frames/crc-stereo.mp3"
lame --quiet -m d -b 96 -t "$tmp/stereo.wav" "$corpus/mp3_frames/dual-no-tag.mp3"
cp "$corpus"/mp3_frames/*.mp3 "$corpus/mp3_file/"
cp "$corpus/mp3_frames/mpeg25-mono.mp3" "$corpus/mp3_file/id3lib.mp3"
id3v2 -a Artist -A Album -t Title -y 1999 -T 3/12 -g 17 -c Comment "$corpus/mp3_file/id3lib.mp3"
cp "$corpus/mp3_frames/mpeg2.mp3" "$corpus/mp3_file/vinora-tags.mp3"
"$cli" tags "$corpus/mp3_file/vinora-tags.mp3" --set TITLE=Title --set GENRE=Rock \
  --set COMMENT=Comment --set RATING=5 --set PLAYCOUNT=9 >/dev/null

# ID3v2 tags: the tagged files above, version 2.4 from ffmpeg, and hand-made 2.2, unsynchronised
# and compressed frames.
cp "$corpus/mp3_file/id3lib.mp3" "$corpus/mp3_file/vinora-tags.mp3" "$corpus/id3v2_tag/"
ffmpeg -v error -y -i "$tmp/tone.wav" -metadata title=Title -metadata artist=Artist \
  -id3v2_version 4 -b:a 32k "$corpus/id3v2_tag/ffmpeg-v24.mp3"
python3 - "$corpus/id3v2_tag" <<'PY'
import sys, zlib
out = sys.argv[1]
def synchsafe(n):
    return bytes([(n >> 21) & 127, (n >> 14) & 127, (n >> 7) & 127, n & 127])
def tag(version, flags, body):
    return b"ID3" + bytes([version, 0, flags]) + synchsafe(len(body)) + body
text = b"\x00Title\xff\xe0"
v22 = b"TT2" + len(text).to_bytes(3, "big") + text + b"TP1\x00\x00\x07\x00Artist"
open(out + "/v22.id3", "wb").write(tag(2, 0, v22))
unsync = (b"TIT2" + len(text).to_bytes(4, "big") + b"\x00\x00" + text).replace(b"\xff", b"\xff\x00")
open(out + "/v23-unsync.id3", "wb").write(tag(3, 0x80, unsync))
packed = zlib.compress(text)
compressed = (b"TIT2" + (len(packed) + 4).to_bytes(4, "big") + b"\x00\x80" +
              len(text).to_bytes(4, "big") + packed)
open(out + "/v23-compressed.id3", "wb").write(tag(3, 0, compressed))
frame24 = b"TIT2" + synchsafe(len(text) + 4) + b"\x00\x03" + synchsafe(len(text)) + text
open(out + "/v24-unsync-frame.id3", "wb").write(tag(4, 0, frame24.replace(b"\xff", b"\xff\x00")))
PY

# Audio CD tracks: this program's AIFF writer, and sox's AIFF.
"$cli" decode "$tmp/stereo.wav" "$corpus/aiff_track/vinora.aif" >/dev/null
"$cli" decode "$tmp/tone.wav" "$corpus/aiff_track/vinora-mono-22k.aif" --rate 22050 >/dev/null
sox -n -r 44100 -c 2 -b 16 "$corpus/aiff_track/sox.aiff" synth 0.02 sine 440
sox -n -r 44100 -c 4 -b 8 "$corpus/aiff_track/sox-4ch-8bit.aiff" synth 0.005 sine 440

# The processing queue file as the queue writes it: one request, then two.
cp "$tmp/tone.wav" "$tmp/a.wav"
"$cli" queue add "$tmp/a.wav" "$tmp/a.mp3" --restore >/dev/null
list=$(find "$XDG_DATA_HOME" -name vnprocesses.list)
cp "$list" "$corpus/queue_file/one.list"
"$cli" queue add "$tmp/a.wav" "$tmp/b.wav" --copy-to "$tmp" >/dev/null
cp "$list" "$corpus/queue_file/two.list"

# HTTP: a URL, a redirection and a reply, each ended by a NUL byte.
printf 'http://versions.example.org:8080/vinora/check?v=1.51\0../other/place\0HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\nversion=152&info=http://example.org/news\r\n' \
  >"$corpus/http_reply/version.txt"
printf 'http://example.org/a/b\0https://mirror.example.org/c\0HTTP/1.0 302 Found\r\nLocation: /d\r\n\r\n' \
  >"$corpus/http_reply/redirect.txt"

# Drive replies: the first byte chooses the decoder.
python3 - "$corpus/mmc_reply" <<'PY'
import sys
out = sys.argv[1]
replies = {
    0: bytes([0, 26, 0, 0, 0x80, 0xC0, 0x80, 0, 97, 26, 60, 0, 79, 59, 74, 0]) + bytes(12),
    1: bytes([0, 32, 0x0E, 1, 1, 1, 1, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0, 79, 59, 74]) + bytes(10),
    2: bytes([0, 34, 0, 1, 1, 0, 0x44, 0x0F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 0x3D, 0xDF]) + bytes(16),
    3: bytes([0x08, 0x02, 0, 0, 0x01, 0x0F, 0x20, 0x10, 0, 0x03, 0, 0, 0, 0x22, 0x5F, 0xFF, 0, 0, 0, 0]) + bytes(2032),
    4: bytes([0, 0, 0, 28, 0, 0, 0, 0x10, 0, 0, 3, 8, 0, 0x10, 1, 0, 0, 0x09, 0, 0, 0, 0x0A, 0, 0, 0, 0x2F, 3, 4, 0, 0, 0, 0]),
    5: bytes([0, 0x2F]) + bytes([0, 0, 0, 20, 0, 0, 0, 0x10, 0, 0x2F, 3, 4, 0x46, 0, 0, 0]),
    6: bytes([5, 0x36, 0x61, 0x05, 0, 0x20, 0, 0, 8, 0, 0, 0, 0, 0, 0, 150]) + bytes(40),
    7: bytes([0, 0, 0, 16, 0, 0x23, 0x05, 0x40, 0x03, 0, 0x08, 0, 0, 0x23, 0x05, 0x40, 0x10, 0, 0x08, 0]),
    8: bytes([0, 0, 0, 36, 3, 0, 0, 0]) + bytes(4) + (0x22FFFF).to_bytes(4, "big") + (1).to_bytes(4, "big") + (7056).to_bytes(4, "big") + (1).to_bytes(4, "big") + (7056).to_bytes(4, "big"),
    9: bytes([0, 0, 0, 20, 0, 0, 0, 0]) + bytes(4) + (7056).to_bytes(4, "big") + (0x22FFFF).to_bytes(4, "big") + (7056).to_bytes(4, "big"),
    10: bytes([0x2A, 0x1C, 0x3F, 0x37, 0xF1, 0x77, 0x29, 0x23, 0x1B, 0x90, 0, 2, 0x08, 0, 0x1B, 0x90, 0, 0, 0x1B, 0x90, 0, 0, 0, 2, 0, 0x1B, 0x90, 0, 0, 0, 0]),
    11: bytes([0x20, 0, 0, 0, 0, 0x22, 0xFF, 0xFF, 0, 0, 8, 0]),
    13: bytes([5, 0x80, 5, 0x32, 31, 0, 0, 0]) + b"VINORA  Virtual Burner   1.00",
    14: bytes([0x70, 0, 2, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x04, 0x04, 0, 0x80, 0x40, 0]),
    15: bytes([0x72, 2, 0x04, 0x07, 0, 0, 0, 8, 2, 6, 0, 0, 0x80, 0, 0, 0]),
}
for choice, reply in replies.items():
    open(f"{out}/reply-{choice:02d}.bin", "wb").write(bytes([choice]) + reply)
pvd = bytearray(2048)
pvd[0:6] = b"\x01CD001"
pvd[80:84] = (1000).to_bytes(4, "little")
pvd[84:88] = (1000).to_bytes(4, "big")
open(f"{out}/reply-12-iso.bin", "wb").write(bytes([12]) + bytes(pvd))
PY
echo "Seeds in $corpus:"
du -sh "$corpus"/*
