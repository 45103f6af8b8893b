#!/usr/bin/env bash
# usage: interface_symbols.sh SHARED_OBJECT HEADERS
# The interface for applications exports each function that its C headers in the folder HEADERS
# declare, and the classes of its C++ headers, all with their version, and nothing else.
set -euo pipefail
symbols=$(nm --dynamic --defined-only --demangle --with-symbol-versions "$1" |
    sed -E 's/^[0-9a-f]+ . //')
declared=$(sed -nE 's/^vx_status (vx_[a-z_]+)\(.*/\1/p' "$2/voxtrel.h" "$2/testing/fake.h")
[ "$(wc -l <<<"$declared")" -gt 100 ] || { echo "the declarations were not found in $2"; exit 1; }
wanted=$(sed 's/$/@@VOXTREL_APP_1/' <<<"$declared" | sort)
exported=$(grep '^vx_' <<<"$symbols" | sort)
diff <(echo "$wanted") <(echo "$exported") || { echo "declared (<), exported (>)"; exit 1; }
for class in 'Client::say(' 'Client::~Client()' 'Utterance::wait(' 'Outcome::message() const' \
    'Lock::~Lock()' 'Diagnosis::whyNot() const' 'Profile::read(' 'describe(' 'testing::FakeService::FakeService()' \
    'testing::FakeService::die()'; do
    grep -qF "voxtrel::$class" <<<"$symbols" || { echo "not exported: voxtrel::$class"; exit 1; }
done
grep -qxF 'typeinfo for voxtrel::Failure@@VOXTREL_APP_1' <<<"$symbols" ||
    { echo "a Failure cannot be caught"; exit 1; }
foreign=$(grep -vE '^(vx_[a-z_]+|VOXTREL_APP_1|voxtrel::(Client|Diagnosis|Lock|Outcome|Profile|Utterance)::[^:]*\(.*|voxtrel::describe\(.*|voxtrel::testing::FakeService::(~?FakeService|[a-z][A-Za-z]*(\[abi:cxx11\])?)\(.*|(typeinfo|typeinfo name|vtable) for voxtrel::Failure)(@@VOXTREL_APP_1)?$' \
    <<<"$symbols" || true)
unversioned=$(grep -vE '@@VOXTREL_APP_1$|^VOXTREL_APP_1$' <<<"$symbols" || true)
if [ -n "$foreign$unversioned" ]; then
    echo "exported, but not declared, or without a version:"
    echo "$foreign$unversioned"
    exit 1
fi
