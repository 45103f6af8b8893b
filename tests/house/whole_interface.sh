#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: whole_interface.sh SHARED_OBJECT SOURCE_DIR "FOLDER..." OBJECT_FILE...
# The shared object exports everything that its installed headers, those of the folders, declare and do not
# define, with the types and the tables of virtual functions that go with it: what the object files define
# and it does not export must be a helper, of which no installed header knows, or a private member.
set -euo pipefail
library=$1
cd "$2"
read -ra folders <<<"$3"
shift 3

private='TTS::TtsSetting::fileOf(\[abi:cxx11\])?\('

declarations() {
    find "${folders[@]}" -name '*.h' -not -path '*/internal/*' -exec sed -E 's,//.*,,' {} +
}

# Strong symbols; of weak ones the tables and types of our classes, which compilers emit as such, and the
# types of what the platform's templates make of them.
needed() {
    nm --defined-only --extern-only "$@" |
        sed -nE 's/^[0-9a-f]+ ([A-TX-Z]|V _ZT[VTIS]N3TTS|V _ZT[IS]N7android[0-9]+B.*N3TTS)/\1/p' |
        sed 's/^. //'
}

exported() { nm --dynamic --defined-only "$library" | sed -E 's/^[0-9a-f]+ . //; s/@.*//'; }

# declared_of: of the names that it reads, those of which a header declares the class or the function
declared_of() {
    local headers name entity
    headers=$(declarations)
    while IFS= read -r name; do
        entity=${name%%(*}
        entity=${entity%%\[*}
        entity=${entity##*TTS::}
        entity=${entity%>}
        case $entity in
            *::*) grep -qE "\<(class|struct)\>.*\<${entity%%::*}\>" <<<"$headers" && echo "$name" ;;
            *) grep -qE "\<${entity#* }\> *(\(|;|\{|:[^:])" <<<"$headers" && echo "$name" ;;
        esac
    done
    true
}

[ "$(needed "$@" | wc -l)" -gt 150 ] || { echo "the object files have too little"; exit 1; }
missing=$(comm -23 <(needed "$@" | sort -u) <(exported | sort -u) | c++filt | declared_of |
    grep -vE "^$private" || true)
if [ -n "$missing" ]; then
    echo "declared in an installed header, and not exported:"
    echo "$missing"
    exit 1
fi
