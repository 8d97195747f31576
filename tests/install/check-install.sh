#!/usr/bin/env bash
# Installs the build folder given into a temporary prefix and checks what a user gets there:
# the files in their places, the desktop entry, the AppStream metadata and both manual pages
# passing their validators, the completion offering every command and option that
# "vinora-cli --help" lists, the manual page describing each command, and the installed
# vinora-cli encoding MP3 with the encoder component installed beside it. The entry that the
# built vinora (second argument) installs for the user with -installer is validated as well.
set -euo pipefail
build=$1
built_vinora=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

cmake --install "$build" --prefix "$prefix" >/dev/null
id=com.brakwater.Vinora
for file in bin/vinora bin/vinora-cli libexec/vinora/mp3el \
            share/applications/$id.desktop share/metainfo/$id.metainfo.xml \
            share/icons/hicolor/scalable/apps/$id.svg \
            share/man/man1/vinora.1.gz share/man/man1/vinora-cli.1.gz \
            share/bash-completion/completions/vinora-cli share/doc/vinora/copyright; do
  [ -e "$prefix/$file" ] || fail "$file is not installed"
done
for size in 16 22 24 32 48 64 128 256; do
  png=$prefix/share/icons/hicolor/${size}x${size}/apps/$id.png
  [ "$(file -b "$png" 2>/dev/null | cut -d, -f2)" = " $size x $size" ] ||
    fail "the $size px icon is missing or of another size"
done

desktop-file-validate "$prefix/share/applications/$id.desktop" || fail "desktop-file-validate"
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" >"$work/appstream" ||
  { cat "$work/appstream" >&2; fail "appstreamcli validate"; }
for page in vinora vinora-cli; do
  warnings=$(MANWIDTH=80 man --warnings -l "$prefix/share/man/man1/$page.1.gz" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "man --warnings $page.1: $warnings"
done

# The commands and the options of each as --help shows them (a usage may go on over lines
# indented deeper than its first).
cli=$prefix/bin/vinora-cli
"$cli" --help | awk '/^  [a-z]/ { sub(/^  /, ""); line[++n] = $0; next }
                     /^   +/ && n { sub(/^ +/, " "); line[n] = line[n] $0 }
                     END { for (i = 1; i <= n; i++) print line[i] }' >"$work/usages"
[ -s "$work/usages" ] || fail "vinora-cli --help lists no commands"
manual=$(MANWIDTH=200 man -l "$prefix/share/man/man1/vinora-cli.1.gz" 2>/dev/null)

complete_words() {
  bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vinora_cli
           printf "%s\n" "${COMPREPLY[@]}"' _ "$prefix/share/bash-completion/completions/vinora-cli" "$@"
}
commands=$(complete_words vinora-cli "")
while read -r name usage; do
  grep -qx -- "$name" <<<"$commands" || fail "the completion does not offer the command $name"
  grep -q -- "vinora-cli $name" <<<"$manual" || fail "the manual page does not describe $name"
  options=$(complete_words vinora-cli "$name" --)
  for option in $(grep -o -- '--[a-z][a-z-]*' <<<"$usage" | sort -u); do
    grep -qx -- "$option" <<<"$options" || fail "the completion does not offer $name $option"
  done
done <"$work/usages"
[ "$(complete_words vinora-cli convert in.wav out.wav --speed "")" = "$(printf '0\n1\n2')" ] ||
  fail "the completion does not offer the values of convert --speed"
[ "$(complete_words vinora-cli queue "")" = "$(printf 'add\nlist\nrun')" ] ||
  fail "the completion does not offer the sub-commands of queue"

# The installed program finds its encoder under the prefix when none is on PATH.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
mkdir -p "$HOME"
sox -n -r 44100 -c 2 -b 16 "$work/tone.wav" synth 1 sine 440 2>/dev/null
PATH=$prefix/bin "$cli" convert "$work/tone.wav" "$work/tone.mp3" >/dev/null 2>"$work/convert" ||
  { cat "$work/convert" >&2; fail "the installed vinora-cli encodes no MP3 without lame on PATH"; }
[ -s "$work/tone.mp3" ] || fail "no MP3 written by the installed vinora-cli"

QT_QPA_PLATFORM=offscreen "$built_vinora" -installer >/dev/null 2>&1 || fail "vinora -installer"
desktop-file-validate "$XDG_DATA_HOME/applications/$id.desktop" || fail "the user's desktop entry"

[ "$failures" -eq 0 ] || exit 1
echo "installed tree checked in $prefix"
