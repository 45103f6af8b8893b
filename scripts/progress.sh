# SPDX-License-Identifier: Apache-2.0
# Progress of long work, sourced by lib.sh: one line that moves at a terminal, a few plain ones in a log.

PROGRESS_STEP=20 # percent between two lines of a log

# show_progress LABEL: reads lines 'DONE TOTAL' and shows them until they end.
show_progress() {
    local label=$1 done total percent shown=-1
    while read -r done total; do
        [ "$total" -gt 0 ] || continue
        percent=$((done * 100 / total))
        if [ -t 1 ]; then
            printf '\r%s: %d%%\033[K' "$label" "$percent"
        elif [ "$shown" -lt 0 ] || [ $((percent / PROGRESS_STEP)) -gt $((shown / PROGRESS_STEP)) ]; then
            printf '%s: %d%%\n' "$label" "$percent"
        else
            continue
        fi
        shown=$percent
    done
    if [ -t 1 ] && [ "$shown" -ge 0 ]; then printf '\n'; fi
}

# count_steps LOG EXPRESSION: writes what it reads to LOG; the lines that the sed EXPRESSION makes
# 'DONE TOTAL' of come out.
count_steps() { sed -u -n -E -e "w $1" -e "$2"; }

ninja_steps() { count_steps "$1" 's#^\[([0-9]+)/([0-9]+)\] .*#\1 \2#p'; }

apt_steps() { count_steps "$1" 's#^(dl|pm)status:.*:([0-9]+)[.0-9]*:.*#\2 100#p'; }
