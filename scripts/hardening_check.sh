#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: hardening_check.sh [--where-built] FILE...
# Says of these programs and shared objects which lack what cmake/VoxtrelHardening.cmake promises, as far
# as it can be read from them. --where-built: they are not installed, and find their libraries in the build.
# Needs readelf.
set -euo pipefail

# lacks WHAT PATTERN TEXT: says so when no line of TEXT matches; what must not be has a '!' before it
lacks() {
    local what=$1 pattern=$2 text=$3
    if [ "${pattern#!}" != "$pattern" ]; then
        ! grep -qE -e "${pattern#!}" <<<"$text" || echo "$file: $what"
    else
        grep -qE -e "$pattern" <<<"$text" || echo "$file: $what"
    fi
}

# missing_in FILE: what it lacks
missing_in() {
    local file=$1 header symbols
    header=$(readelf -W --file-header --program-headers --dynamic "$file")
    symbols=$(readelf -W --dyn-syms "$file")
    lacks "is not position-independent" '^ *Type: +DYN' "$header"
    lacks "has no read-only relocations" '^ *GNU_RELRO ' "$header"
    lacks "resolves names while it runs" '\((FLAGS|FLAGS_1)\).*\<NOW\>|BIND_NOW' "$header"
    lacks "has an executable stack" '!^ *GNU_STACK .* RWE ' "$header"
    [ -n "$where_built" ] || lacks "finds its libraries by a path of the build" '!\((RPATH|RUNPATH)\).*\[/' "$header"
    lacks "has no checked stack frames" ' __stack_chk_fail(@|$)' "$symbols"
    if grep -q ' INTERP ' <<<"$header" && grep -q '(NEEDED).*libstdc++' <<<"$header"; then
        lacks "has a standard library that checks nothing" ' _ZSt21__glibcxx_assert_fail' "$symbols"
    fi
    # Of these the fortified ones are called whatever the compiler knows, though std::to_string takes the
    # plain one as well; of others nothing need be left to be seen.
    if grep -qE ' v?(as|d|f|s|sn)?printf(@|$)' <<<"$symbols"; then
        lacks "has no fortified functions" ' __[a-z]+_chk(@|$)' "$(grep -v __stack_chk <<<"$symbols")"
    fi
}

where_built=
if [ "${1:-}" = --where-built ]; then
    where_built=yes
    shift
fi
[ $# -gt 0 ] || { echo "usage: hardening_check.sh [--where-built] FILE..." >&2; exit 2; }
missing=$(for file in "$@"; do missing_in "$file"; done)
if [ -n "$missing" ]; then
    printf '%s\n' "$missing" >&2
    exit 1
fi
