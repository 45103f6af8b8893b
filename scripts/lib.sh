# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034 # what it sets is for those who source it
# Shared by ./dev and the scripts behind it; sourced, never run. The caller stands in the root.

source scripts/progress.sh

say() { printf '%s\n' "$*"; }
say_step() { printf '\n== %s\n' "$*"; }

declare -A PACKAGES=(
    [speak]="g++ cmake ninja-build pkg-config libespeak-ng-dev espeak-ng-data libsndfile1-dev
             libasound2-dev libcli11-dev nlohmann-json3-dev"
    [build]="ccache libgtest-dev libgmock-dev python3 util-linux mandoc man-db libsystemd-dev
             systemd"
    [python]="python3-pytest python3-setuptools python3-wheel mypy"
    [clang]="clang-14 libclang-rt-14-dev"
    [libcxx]="libc++-14-dev libc++abi-14-dev googletest"
    [package]="build-essential debhelper dh-python cmake ninja-build pkg-config libasound2-dev
               libcli11-dev libespeak-ng-dev libsndfile1-dev libsystemd-dev nlohmann-json3-dev
               pybuild-plugin-pyproject python3 python3-setuptools"
    [arm]="g++-arm-linux-gnueabihf qemu-user googletest"
    [bench]="libbenchmark-dev libsystemd-dev dbus dbus-daemon valgrind speech-dispatcher libspeechd-dev"
    [coverage]="gcovr"
    [lint]="clang-format-14 clang-tidy-14 cppcheck reuse shellcheck"
    [abi]="abigail-tools"
    [terminal]="tmux"
    [desktop]="speech-dispatcher"
    [docs]="doxygen"
    [board]="qemu-system-x86 qemu-system-arm cpio binutils"
    [bare]="debootstrap git"
)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "dev: '$*' needs root; run it as root, then run ./dev again" >&2
        return 1
    fi
}

# apt_phase LABEL APT-GET-INSTALL-ARGUMENT...: shows how far it is, and apt's words when it fails.
apt_phase() {
    local label=$1 log
    shift
    log=$(mktemp)
    if ! as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        -o APT::Status-Fd=1 -o DPkg::Lock::Timeout=300 "$@" </dev/null 2>&1 |
        apt_steps "$log" | show_progress "$label"; then
        grep -vE '^(dl|pm)status:' "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

is_installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'; }

# need_packages GROUP...: installs what is missing of these groups, and says so.
need_packages() {
    command -v dpkg-query >/dev/null || return 0 # not Debian: the developer sees to it
    local group package missing=()
    for group in "$@"; do
        for package in ${PACKAGES[$group]}; do
            is_installed "$package" || missing+=("$package")
        done
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say_step "installing: ${missing[*]}"
    as_root apt-get update -qq
    if ! apt_phase "downloading packages" --download-only "${missing[@]}" ||
        ! apt_phase "installing packages" "${missing[@]}"; then
        echo "dev: apt-get could not install what is named above; see what it says, then run ./dev again" >&2
        return 1
    fi
}

jobs_here() { nproc; }

# Most tests wait for processes more than they compute; with three a processor a quarter of its time was idle.
test_jobs_here() { echo $((5 * $(nproc))); }

# Sources that are ours to format and lint.
own_sources() {
    git ls-files '*.h' '*.cpp' '*.c' 2>/dev/null
}

# The folders of what ships.
SHIPPED=(vocabulary ipc profile client platform service tools voxtrel bridges)

# build_preset PRESET [cmake --build arguments]: shows how far it is, and the compiler's words when it fails.
build_preset() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! { cmake --preset "$preset" >"$log" 2>&1 &&
        NINJA_STATUS="[%f/%t] " cmake --build --preset "$preset" -j "$(jobs_here)" "$@" 2>&1 | ninja_steps "$log" |
        show_progress "building $preset"; }; then
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Creating)' "$log" >&2 || true
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

PASSED=0
FAILED=0

# run_ctest PRESET [ctest arguments]: runs its tests and adds them to PASSED and FAILED. An entry of
# ctest that stands for many tests counts as those that it ran.
run_ctest() {
    local preset=$1 log summary
    shift
    log="build/$preset/ctest.log"
    local reports="build/$preset/sanitizer-reports" journals="build/$preset/grouped-tests"
    rm -rf "$reports" "$journals"
    mkdir -p "$reports" "$journals"
    ctest --test-dir "build/$preset" -j "$(test_jobs_here)" --output-on-failure --no-tests=error "$@" \
        >"$log" 2>&1 || true
    summary=$(grep -E 'tests passed, [0-9]+ tests failed out of [0-9]+' "$log" || true)
    if [ -z "$summary" ]; then
        cat "$log"
        FAILED=$((FAILED + 1))
        return 0
    fi
    local failed total groups bad_groups grouped_passed grouped_failed
    failed=$(sed -E 's/.*, ([0-9]+) tests failed out of ([0-9]+).*/\1/' <<<"$summary")
    total=$(sed -E 's/.*, ([0-9]+) tests failed out of ([0-9]+).*/\2/' <<<"$summary")
    scripts/grouped_tests.py count "$journals" >"$log.grouped"
    read -r groups bad_groups grouped_passed grouped_failed <"$log.grouped"
    if [ "$failed" -gt 0 ]; then
        grep -vE '^ *[0-9]+/[0-9]+ Test .* Passed|^ *Start ' "$log"
        tail -n +2 "$log.grouped"
    fi
    total=$((total - groups + grouped_passed + grouped_failed))
    failed=$((failed - bad_groups + grouped_failed))
    PASSED=$((PASSED + total - failed))
    FAILED=$((FAILED + failed))
    say "$preset: $((total - failed)) passed, $failed failed"
    local report
    for report in "$reports"/*; do
        # What clang's leak check says of a thread that ends while it looks is no finding.
        if [ -f "$report" ] && ! grep -qvE '^==[0-9]+==Unable to get registers from thread [0-9]+\.$' "$report"; then
            rm "$report"
        fi
    done
    if [ -n "$(ls -A "$reports")" ]; then
        # Also of processes whose tests have passed.
        head -n 60 "$reports"/*
        FAILED=$((FAILED + 1))
        say "$preset: $(ls "$reports" | wc -l) reports of the sanitizers in $reports"
    fi
}

# count_closing_line LOG STATUS: adds the tests of a command that closes with 'N passed, N failed'. One that
# does not has failed.
count_closing_line() {
    local passed failed
    if ! read -r passed failed < <(sed -n -E 's/^([0-9]+) passed, ([0-9]+) failed$/\1 \2/p' "$1" | tail -n 1); then
        passed=0 failed=1
    elif [ "$2" -ne 0 ] && [ "$failed" -eq 0 ]; then
        failed=1
    fi
    PASSED=$((PASSED + passed))
    FAILED=$((FAILED + failed))
}

# The last line of every command that runs tests; its exit status is theirs.
closing_line() {
    say "$PASSED passed, $FAILED failed"
    [ "$FAILED" -eq 0 ] && [ "$PASSED" -gt 0 ]
}
