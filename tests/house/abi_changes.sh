#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: abi_changes.sh SOURCE_DIR TABLE COMPILER
# The comparison of interfaces sees what breaks programs: in a table of ours, and from the compiler's words on
# to abidiff's in a small library that is changed in each of these ways. What comes anew breaks nothing.
set -euo pipefail
source=$1
table=$2
compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compare() { "$source/scripts/abi_tables.py" compare "$table" "$work/changed"; }

# breaks WHAT, passes WHAT: what the standard input is, in place of the table
breaks() { cat >"$work/changed"; ! compare >"$work/log" || { echo "not seen: $1"; exit 1; }; }
passes() { cat >"$work/changed"; compare >"$work/log" || { echo "refused: $1"; cat "$work/log"; exit 1; }; }

passes "nothing changed" <"$table"
sed -E 's/^(slot TTS::ITextToSpeechFestival) 4 /\1 x /; s/^(slot TTS::ITextToSpeechFestival) 5 /\1 4 /
    s/^(slot TTS::ITextToSpeechFestival) x /\1 5 /' "$table" | breaks "two slots that change places"
sed 's/^record TTS::Capabilities 0 ready.*/&\nrecord TTS::Capabilities 16 spare: bool/' "$table" |
    breaks "a member that comes to a record"
sed -E 's/^(record TTS::VoiceInfo) [0-9]+ bits$/\1 640 bits/' "$table" | breaks "a record that grows"
grep -v '^name TTS::langStr2Id' "$table" | breaks "a function that goes"
sed '$a name TTS::langNames() function VOXTREL_1' "$table" | passes "a function that comes"
sed '$a slot TTS::Another 0 TTS::Another::one()' "$table" | passes "a class that comes"

# library NAME TEXT: of TEXT, as abidw describes it
library() {
    local second='int second() { return 3; }'
    echo "$2" >"$work/voice.h"
    printf '#include "voice.h"\nint Voice::say(int) { return 1; }\nint Voice::stop() { return 2; }\nint first(Voice& v) { return v.rate; }\n%s' \
        "${3:-$second}" >"$work/voice.cpp"
    "$compiler" -g -fPIC -shared -o "$work/lib.so" "$work/voice.cpp"
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --headers-dir "$work" "$work/lib.so" >"$work/$1.xml"
    "$source/scripts/abi_tables.py" write "$work/$1.xml" >"$work/$1.txt"
}

# judge WANTED WHAT: how the library 'new' compares with 'old', by table and abidiff
judge() {
    local verdict=compatible
    "$source/scripts/abi_tables.py" compare "$work/old.txt" "$work/new.txt" >"$work/log" || verdict=broken
    abidiff --no-added-syms "$work/old.xml" "$work/new.xml" >>"$work/log" || verdict=broken
    [ "$verdict" = "$1" ] || { echo "$2: $verdict"; cat "$work/log"; exit 1; }
}

voice='enum Tone { LOW, HIGH }; struct Voice { virtual int say(int); virtual int stop(); int rate; Tone tone; };
int first(Voice&); int second();'
library old "$voice"
library new "$voice"
judge compatible "the same library"
library new "${voice/virtual int say(int); virtual int stop();/virtual int stop(); virtual int say(int);}"
judge broken "a virtual method that moves"
library new "${voice/int rate;/int pitch; int rate;}"
judge broken "a member that comes"
library new "${voice/HIGH/HIGH = 3}"
judge broken "an enumerator of another value"
library new "${voice/int rate/long long rate}"
judge broken "a member of another type"
library new "$voice" 'int other() { return 3; }'
judge broken "a function that goes"
library new "$voice int third();" 'int second() { return 3; } int third() { return 4; }'
judge compatible "a function that comes"
