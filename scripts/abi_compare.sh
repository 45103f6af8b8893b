#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: abi_compare.sh compare|accept ARCHITECTURE SHARED_OBJECT...
# Compares what applications are compiled against with abi/: the library's description by abidw, and
# tables made of it. The name in abi/ is that of the shared object with its major version, so that a new
# major version begins anew. 'accept' writes what is compatible, or of a new major version, into abi/.
# Exit status: 0 if no table has changed or all was accepted, 1 if a change is not compatible, 3 if it is
# and the tables in abi/ do not have it yet.
set -euo pipefail
cd "$(dirname "$0")/.."
command=$1
architecture=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# describe SHARED_OBJECT HEADERS >XML: of what the headers in the folder HEADERS declare; nothing of it
# depends on where it was built
describe() {
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names \
        --drop-private-types --drop-undefined-syms --exported-interfaces-only --type-id-style hash \
        --headers-dir "$2" "$1" | sed -E "s|( path=')[^']*/([^/']+/[^/']+')|\1\2|"
}

# copy_headers LIBRARY FOLDER: those that are installed
copy_headers() {
    mkdir -p "$2"
    case $1 in
        libvoxtrel-client.*) find vocabulary ipc profile client -name '*.h' ! -path '*/internal/*' ;;
        *) sed -n '/^set(VOXTREL_PUBLIC_HEADERS$/,/)$/p' voxtrel/CMakeLists.txt |
            grep -oE '[A-Za-z/]+\.h' | sed 's|^|voxtrel/|' ;;
    esac | xargs cp -t "$2"
}

# incompatible OLD NEW: says what breaks
incompatible() {
    local differs=0
    scripts/abi_tables.py compare "$1.txt" "$2.txt" || differs=1
    abidiff --no-added-syms --no-show-locs "$1.xml" "$2.xml" || differs=1
    [ $differs -eq 1 ]
}

# check SHARED_OBJECT: 0, 1 or 3 as above
check() {
    local library name old new
    library=$(basename "$1")
    name=$library.$architecture
    old=abi/$name new=$work/$name
    copy_headers "$library" "$new.headers"
    describe "$1" "$new.headers" >"$new.xml"
    scripts/abi_tables.py write "$new.xml" >"$new.txt"
    grep -q '^name ' "$new.txt" || { echo "abi: $1 exports nothing" >&2; return 1; }
    if [ -f "$old.xml" ]; then
        if incompatible "$old" "$new"; then
            echo "abi: $name: this breaks what was compiled before; it needs a new major version" >&2
            return 1
        fi
    fi
    if [ "$command" = accept ]; then
        cp "$new.xml" "$new.txt" abi
    elif ! cmp -s "$old.txt" "$new.txt"; then # another compiler's description says the same otherwise
        echo "abi: $name: compatible, but not in abi/ yet; run ./dev abi accept" >&2
        return 3
    fi
}

status=0
for library in "$@"; do
    check "$library" || status=$?
done
exit $status
