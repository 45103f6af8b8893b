#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: help_in_man_page.sh PROGRAM PAGE
# The options of a man page, in its section OPTIONS, are those that the program's help lists.
set -euo pipefail
program=$1
page=$2
names() { grep -oE -- '(^|[ ,"])-{1,2}[A-Za-z][A-Za-z-]*' | tr -d ' ,"' | sort -u; }

helped=$(timeout 60 "$program" --help | sed -nE 's/^ +((-{1,2}[A-Za-z-]+,? ?)+).*/\1/p' | names)
described=$(sed -n '/^\.SH OPTIONS/,/^\.SH [^O]/p' "$page" | sed 's/\\-/-/g' | names)
echo "$helped"
grep -qx -- --help <<<"$helped"
diff <(echo "$helped") <(echo "$described") || {
    echo "< stands in the help only, > in $page only"
    exit 1
}
