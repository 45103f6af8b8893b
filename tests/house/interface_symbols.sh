#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: interface_symbols.sh LIBVOXTREL LIBVOXTREL_TESTING HEADERS
# The interface for applications and the double for their tests export each function that their C
# headers in the folder HEADERS declare, and the classes of their C++ headers, all with a version;
# beyond that the first exports what the second takes of its inside, with a version that says so.
set -euo pipefail

# exports_of SHARED_OBJECT VERSION: with that version
exports_of() {
    nm --dynamic --defined-only --demangle --with-symbol-versions "$1" |
        sed -nE "s/^[0-9a-f]+ . (.*)@@$2\$/\1/p"
}

# check SHARED_OBJECT VERSION CLASSES HEADER...: CLASSES is a pattern of what C++ declares
check() {
    local symbols declared foreign
    symbols=$(exports_of "$1" "$2")
    declared=$(cat "${@:4}" | sed -nE 's/^vx_status (vx_[a-z_]+)\(.*/\1/p')
    [ "$(wc -l <<<"$declared")" -gt 20 ] || { echo "the declarations were not found: ${*:4}"; exit 1; }
    diff <(sort <<<"$declared") <(grep '^vx_' <<<"$symbols" | sort) ||
        { echo "$1: declared (<), exported (>)"; exit 1; }
    foreign=$(grep -vE "^(vx_[a-z_]+|$3)\$" <<<"$symbols" || true)
    [ -z "$foreign" ] || { echo "$1: exported, but not declared:"; echo "$foreign"; exit 1; }
}

# has SHARED_OBJECT VERSION BEGINNING...: exports what begins so
has() {
    local symbols name
    symbols=$(exports_of "$1" "$2")
    for name in "${@:3}"; do
        grep -qF "$name" <<<"$symbols" || { echo "$1: not exported: $name"; exit 1; }
    done
}

# versions SHARED_OBJECT VERSION...: it exports nothing with another version, or without one
versions() {
    local others
    others=$(nm --dynamic --defined-only --with-symbol-versions "$1" |
        grep -vE "(@@| A )($(IFS='|' && echo "${*:2}"))\$" || true)
    [ -z "$others" ] || { echo "$1: exported with no version, or another:"; echo "$others"; exit 1; }
}

check "$1" VOXTREL_APP_1 \
    'voxtrel::(Client|Diagnosis|Lock|Outcome|Profile|Utterance)::[^:]*\(.*|voxtrel::describe\(.*|(typeinfo|typeinfo name|vtable) for voxtrel::Failure' \
    "$3/voxtrel.h"
has "$1" VOXTREL_APP_1 'voxtrel::Client::say(' 'voxtrel::Client::~Client()' 'voxtrel::Utterance::wait(' \
    'voxtrel::Outcome::message() const' 'voxtrel::Lock::~Lock()' 'voxtrel::Diagnosis::whyNot() const' \
    'voxtrel::Profile::read(' 'voxtrel::describe(' 'typeinfo for voxtrel::Failure'
check "$2" VOXTREL_TESTING_1 \
    'voxtrel::testing::FakeService::(~?FakeService|[a-z][A-Za-z]*(\[abi:cxx11\])?)\(.*' \
    "$3/testing/fake.h"
has "$2" VOXTREL_TESTING_1 'voxtrel::testing::FakeService::FakeService()' \
    'voxtrel::testing::FakeService::die()'
versions "$1" VOXTREL_APP_1 VOXTREL_INSIDE
versions "$2" VOXTREL_TESTING_1
