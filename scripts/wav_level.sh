#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: wav_level.sh FILE.wav. Says how long and how loud a WAV file of 16-bit samples is; fails
# when nothing in it can be heard.
set -euo pipefail
file=${1:?file}

number() { od -An --endian=little -j "$2" -N "$3" -t "u$3" "$1" | tr -d ' '; }

channels=$(number "$file" 22 2)
rate=$(number "$file" 24 4)
chunk=$(LC_ALL=C grep -abo -m 1 'data' "$file" | head -n 1 | cut -d: -f1 || true)
[ -n "$chunk" ] || { echo "wav_level: $file has no samples" >&2; exit 1; }

od -An -v --endian=little -j $((chunk + 8)) -t d2 "$file" | LC_ALL=C awk -v channels="$channels" -v rate="$rate" '
    function level(x) { return x > 0 ? sprintf("%.1f dBFS", 20 * log(x) / log(10)) : "silent" }
    {
        for (i = 1; i <= NF; ++i) {
            squares += $i * $i
            size = $i < 0 ? -$i : $i
            if (size > peak) peak = size
        }
        count += NF
    }
    END {
        printf "length %.2f s at %d Hz, loudness %s on average, %s at its peak\n",
               count / channels / rate, rate, level(count ? sqrt(squares / count) / 32768 : 0), level(peak / 32768)
        if (peak < 1000 || count < channels * rate / 10) {
            print "wav_level: nothing can be heard in it" > "/dev/stderr"
            exit 1
        }
    }'
