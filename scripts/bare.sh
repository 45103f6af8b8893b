#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: bare.sh. What a newcomer does on a bare Debian, in roots that hold minbase, git and a clean
# clone of HEAD: speak, run some steps of the tests, install the packages. Ends with
# 'N passed, N failed'.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
source scripts/bare_root.sh

[ $# -eq 0 ] || { echo "usage: ./dev bare" >&2; exit 2; }
if [ ! -e /etc/debian_version ]; then
    echo "bare: this takes a Debian machine, whose package sources it uses" >&2
    exit 1
fi
need_packages bare
if [ "$(id -u)" -ne 0 ]; then
    as_root "$0" # changing the root takes it
    exit
fi

BARE=$PWD/build/bare
PACKAGE_CACHE=$BARE/cache
DEVELOPER=$BARE/developer # who builds from source
USER_ROOT=$BARE/user      # who installs the packages
NEWER_VERSION=1.0.1-1      # for the upgrade
STEPS=debug,porting,board
SENTENCE="This sentence is spoken on a bare machine."

# timed WHAT COMMAND...: shows what is done and how long it took
timed() {
    local what=$1 start=$SECONDS status=0
    shift
    say_step "$what"
    "$@" || status=$?
    say "($what: $((SECONDS - start)) s)"
    return "$status"
}

# count WHAT COMMAND...: COMMAND counts as one test
count() {
    if timed "$@"; then
        PASSED=$((PASSED + 1))
    else
        FAILED=$((FAILED + 1))
        say "$1: failed"
    fi
}

# count_all WHAT COMMAND...: COMMAND closes with 'N passed, N failed', and each of its tests counts
count_all() {
    local log=$BARE/closing.log status=0
    timed "$@" | tee "$log" || status=$?
    count_closing_line "$log" "$status"
}

make_roots() {
    make_root "$DEVELOPER" && cp -a "$DEVELOPER" "$USER_ROOT" &&
        git clone -q "file://$PWD" "$DEVELOPER/root/voxtrel" &&
        [ "$(git rev-parse HEAD)" = "$(git -C "$DEVELOPER/root/voxtrel" rev-parse HEAD)" ]
}

# Nothing is compiled twice there, so a cache of objects would cost time alone.
in_clone() { in_root "$DEVELOPER" bash -c 'cd /root/voxtrel && exec env CCACHE_DISABLE=1 "$@"' bash "$@"; }

speak() { in_clone ./dev speak "$SENTENCE" -o /root/spoken.wav && in_clone scripts/wav_level.sh /root/spoken.wav; }

# Of the project's own build: a distribution's flags, which packages have, promise much of it by themselves.
are_hardened() {
    in_clone scripts/hardening_check.sh --where-built build/release/platform/host/voxtrel-servicemanager \
        build/release/service/voxtreld build/release/tools/voxtrelctl
}

build_packages() { in_clone ./dev package && in_clone ./dev package "$NEWER_VERSION"; }

try_packages() {
    local packages=$DEVELOPER/root/voxtrel/build/package
    with_root "$USER_ROOT" scripts/package_test.sh "$USER_ROOT" "$packages" "$packages/$NEWER_VERSION"
}

# Root may be told to test the tree of another user.
export GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=safe.directory GIT_CONFIG_VALUE_0='*'

rm -rf "$DEVELOPER" "$USER_ROOT"
mkdir -p "$PACKAGE_CACHE"
[ -n "$(debian_sources)" ] || apt-get update -qq
if ! timed "making bare roots" make_roots; then
    echo "bare: no root was made, so nothing was tried" >&2
    FAILED=1
    closing_line
    exit 1
fi
count "./dev speak" speak
count "its programs are hardened" are_hardened
count_all "./dev test --only $STEPS" in_clone ./dev test --only "$STEPS"
count "./dev package" build_packages
count_all "the packages" try_packages

# What failed stays to be looked at.
if [ "$FAILED" -eq 0 ]; then rm -rf "$DEVELOPER" "$USER_ROOT"; fi
say ""
closing_line
