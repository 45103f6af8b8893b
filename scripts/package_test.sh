#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/package_test.sh ROOT PACKAGES NEWER
# Tries the Debian packages of the folder PACKAGES, and the upgrade to those of the folder NEWER, in
# ROOT: the folder of a bare Debian system in which apt works and /proc is mounted. Needs root. Ends
# with 'N passed, N failed', and leaves ROOT without the packages, but with lintian and a compiler.
set -euo pipefail
root=$(realpath "${1:?ROOT}")
packages=${2:?PACKAGES}
newer=${3:?NEWER}
here=$(dirname "$0")
source "$here/lib.sh"

NOBODY=65534
work=/tmp/package-test
all=(libvoxtrel-client1 libvoxtrel-platform1 libvoxtrel-client-dev libvoxtrel1 libvoxtrel-dev
    python3-voxtrel voxtrel speech-dispatcher-voxtrel)
log=$(mktemp)
trap 'rm -f "$log"; rm -rf "$root$work"' EXIT

in_root() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}
as_user() {
    chroot --userspec=$NOBODY:$NOBODY --groups= "$root" \
        env -i PATH=/usr/bin:/bin HOME=/nonexistent LC_ALL=C "$@"
}

# check NAME COMMAND...: one line, and what the command printed if it failed. In a function that is
# checked a failure of any but the last command needs its own `|| return 1`.
check() {
    local name=$1
    shift
    if "$@" >"$log" 2>&1; then
        PASSED=$((PASSED + 1))
        say "passed: $name"
    else
        FAILED=$((FAILED + 1))
        say "FAILED: $name"
        tail -n 40 "$log" | sed 's/^/    /'
    fi
}
refused() { ! "$@"; }

apt() { in_root apt-get -y -q "$@"; }
# install_from FOLDER NAME...: our packages by file, and nothing else than what they depend on.
install_from() {
    local folder=$1 name files=()
    shift
    for name in "$@"; do
        files+=("$(cd "$root" && echo ".$work/$folder/${name}_"*.deb)")
    done
    apt --no-remove --no-install-recommends install "${files[@]#.}"
}
speak_with() { as_user "$work/with_service.sh" /usr/bin "$@"; }
speaks() { speak_with voxtrelctl say --wait "Hello from the package."; }

# Every file, with its kind, rights and owner, and the contents of what configures the system; not
# what apt and dpkg know, caches and logs.
state_of_root() {
    (
        cd "$root"
        find . -xdev \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./var/lib/apt \
            -o -path ./var/lib/dpkg -o -path ./var/cache -o -path ./var/log -o -path ".$work" \) \
            -prune -o -printf '%p %y %m %U:%G\n'
        find etc -type f ! -name 'ld.so.cache' ! -name '*-' -exec sha256sum {} +
    ) | LC_ALL=C sort
}

contents() {
    local deb
    for deb in "$root$work/$1"/*.deb; do
        dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $6}' || return 1
    done
}
no_file_twice() {
    contents old >"$root$work/contents" && [ "$(wc -l <"$root$work/contents")" -gt 40 ] &&
        [ -z "$(sort "$root$work/contents" | uniq -d | tee /dev/stderr)" ]
}
version_of() { in_root dpkg-query -W -f '${Version}' "$1"; }
all_have_version() {
    local name
    for name in "${all[@]}"; do
        [ "$(version_of "$name")" = "$1" ] || { say "$name: $(version_of "$name")"; return 1; }
    done
}
# Every installed file is the one that its package brought.
files_are_whole() { [ -z "$(in_root dpkg -V "${all[@]}" | tee /dev/stderr)" ]; }
dependants_need_the_interface_only() {
    in_root dpkg-query -W -f '${Depends}' voxtrel | grep -F 'libvoxtrel-client1 (>= 1.0)'
}
is_documented() {
    local page name
    for page in voxtreld voxtrelctl voxtrel-servicemanager voxtrel-platform-check; do
        gzip -t "$root/usr/share/man/man1/$page.1.gz" || return 1
    done
    gzip -t "$root/usr/share/man/man5/voxtreld-policy.5.gz" || return 1
    for name in "${all[@]}"; do
        [ -s "$root/usr/share/doc/$name/copyright" ] || return 1
        gzip -t "$root/usr/share/doc/$name/changelog.Debian.gz" || return 1
    done
    [ -f "$root/usr/share/bash-completion/completions/voxtrelctl" ]
}

module_begins() {
    printf 'INIT\nQUIT\n' |
        as_user /usr/lib/speech-dispatcher-modules/sd_voxtrel /etc/speech-dispatcher/modules/voxtrel.conf |
        grep -A 1 -Fx "299 OK LOADED SUCCESSFULLY" | grep -Fx "210 OK QUIT"
}

install_and_speak() {
    check "the packages install" install_from old "${all[@]}"
    check "no file is in two packages" no_file_twice
    check "programs depend on the library's interface" dependants_need_the_interface_only
    check "man pages, completion, copyright and changelogs are there" is_documented
    check "an ordinary user speaks" speaks
    check "speech-dispatcher's module begins and ends" module_begins
    check "root speaks" in_root "$work/with_service.sh" /usr/bin voxtrelctl say --wait "Hello."
}

remove_headers() { apt remove libvoxtrel-client-dev; }
prints_version() { in_root voxtrelctl --version | grep -Fx "voxtrelctl $1"; }

upgrade() {
    local new
    new=$(dpkg-deb -f "$root$work/new"/voxtrel_*.deb Version)
    check "new programs are refused beside the old runtime" refused install_from new voxtrel
    check "a new library is refused beside the old headers" \
        refused install_from new libvoxtrel-client1
    check "the headers are removed" remove_headers
    check "a new library installs under the old programs" install_from new libvoxtrel-client1
    check "the old programs speak with it" speaks
    check "everything is upgraded" install_from new "${all[@]}"
    check "everything has the new version" all_have_version "$new"
    check "the programs were replaced" prints_version "$new"
    check "every installed file is its package's" files_are_whole
    check "the new programs speak" speaks
}

purge_all() { apt purge "${all[@]}" && apt --purge autoremove; }
root_is_as_before() {
    state_of_root >"$root$work/after"
    diff "$root$work/before" "$root$work/after"
}

purge() {
    check "everything is purged" purge_all
    check "nothing is left behind" root_is_as_before
}

builds_with_cmake() {
    as_user sh -ec "cmake -S /usr/share/doc/voxtrel/examples/$1 -B $work/build/cmake-$1
        cmake --build $work/build/cmake-$1"
}
# The line of the README.
builds_with_pkg_config() {
    as_user sh -ec "g++ -std=c++17 /usr/share/doc/voxtrel/examples/hello/hello.cpp \
        -o $work/build/hello \$(pkg-config --cflags --libs voxtrel-client)"
}

# Applications need neither the headers of the client library nor its link line.
build_application() {
    as_user sh -ec "cd /usr/share/doc/voxtrel/examples/application
        g++ -std=c++17 speak.cpp -o $work/build/speak \$(pkg-config --cflags --libs voxtrel)
        gcc speak.c -o $work/build/speak-c \$(pkg-config --cflags --libs voxtrel)"
}
restart_with() { as_user "$work/with_restarted_service.sh" /usr/bin "$@"; }
long="This sentence is long enough to be cut off in its middle."
is_cut_off() { ! restart_with "$@" "$long" && grep -q "there is no connection to the service" "$log"; }
loses_both() {
    restart_with "$@" "$long" Two. && [ "$(grep -c "there is no connection" "$log")" -eq 2 ]
}
is_said_again() { restart_with "$@" "$long" && grep -q "spoken to its end" "$log"; }

build_applications() {
    local language
    check "only the headers for applications stay" remove_headers
    check "applications build with CMake" builds_with_cmake application
    check "applications build with pkg-config" build_application
    for language in "" -c; do
        check "speak$language speaks" speak_with "$work/build/speak$language"
        check "speak$language tells that the service died" \
            is_cut_off "$work/build/cmake-application/speak$language"
        check "loop$language tells of each utterance that the service died" \
            loses_both "$work/build/cmake-application/loop$language"
        check "survive$language speaks again after the service died" \
            is_said_again "$work/build/cmake-application/survive$language"
    done
}

knows_the_module() {
    [ "$(as_user python3 -c 'import importlib.metadata as known; print(known.version("voxtrel"))')" = \
        "$(sed -n 's/^version = "\(.*\)"$/\1/p' "$here/../python/pyproject.toml")" ]
}
run_python() {
    local examples=/usr/share/doc/voxtrel/examples/python
    check "the interpreter knows the module and its version" knows_the_module
    check "speak.py speaks" speak_with python3 "$examples/speak.py"
    check "speak.py tells that the service died" is_cut_off python3 "$examples/speak.py"
    check "loop.py tells of each utterance that the service died" \
        loses_both python3 "$examples/loop.py"
    check "survive.py speaks again after the service died" \
        is_said_again python3 "$examples/survive.py"
}

build_example() {
    check "the packages install again" install_from old "${all[@]}"
    check "CMake, pkg-config and g++ install" \
        apt --no-install-recommends install g++ cmake make pkg-config
    check "the example builds with CMake" builds_with_cmake hello
    check "the CMake build speaks" speak_with "$work/build/cmake-hello/hello"
    check "the example builds with pkg-config" builds_with_pkg_config
    check "the pkg-config build speaks" speak_with "$work/build/hello"
    check "the example of a service builds" builds_with_cmake service
    check "the example of a service is heard from" \
        as_user "$work/with_example_service.sh" /usr/bin "$work/build/cmake-service/service"
}

# Programs and libraries, a path in the root each.
installed_elf_files() {
    local path
    in_root dpkg-query -L voxtrel libvoxtrel1 libvoxtrel-dev libvoxtrel-client1 libvoxtrel-platform1 \
        speech-dispatcher-voxtrel | while read -r path; do
        if [ -f "$root$path" ] && [ ! -L "$root$path" ] &&
            [ "$(head -c 4 "$root$path" | tr -d '\0')" = $'\x7fELF' ]; then
            echo "$path"
        fi
    done
}
are_hardened() {
    local files
    mapfile -t files < <(installed_elf_files)
    [ ${#files[@]} -ge 9 ] || { say "only ${files[*]}"; return 1; }
    as_user "$work/hardening_check.sh" "${files[@]}"
}
# The compiler's own flags, turned off.
build_soft_program() {
    as_user sh -ec "echo '#include <cstdio>
        #include <vector>
        int main(int argc, char** argv) {
            return printf(\"%s %d\", argv[0], std::vector<int>(8)[argc]);
        }' >$work/build/soft.cpp
        g++ -O2 -no-pie -fno-stack-protector -U_FORTIFY_SOURCE -Wl,-z,norelro,-z,lazy,-z,execstack \
            -Wl,-rpath,$work $work/build/soft.cpp -o $work/build/soft"
}
sees_soft_program() {
    ! as_user "$work/hardening_check.sh" "$work/build/soft" && [ "$(wc -l <"$log")" -eq 8 ]
}

owner_of() { in_root dpkg-query -S "$1" 2>/dev/null || in_root dpkg-query -S "/usr$1"; }
# is_in_bill FILE: the package of each shared object that it loads is named in that of its own package.
is_in_bill() {
    local name bill library owner libraries
    name=$(owner_of "$1" | cut -d: -f1)
    bill=$(echo "$root/usr/share/doc/$name/$name"_*.spdx.json)
    mapfile -t libraries < <(in_root ldd "$1" | awk '$2 == "=>" {print $3}')
    [ ${#libraries[@]} -ge 2 ] || { say "$1 loads only ${libraries[*]}"; return 1; }
    for library in "${libraries[@]}"; do
        owner=$(owner_of "$library" | cut -d: -f1)
        if [ -z "$owner" ] || ! grep -qFx "   \"name\": \"$owner\"," "$bill"; then
            say "$bill does not name '$owner', of which $1 loads $library"
            return 1
        fi
    done
}
bills_are_complete() {
    local file files
    mapfile -t files < <(installed_elf_files)
    [ ${#files[@]} -ge 9 ] || { say "only ${files[*]}"; return 1; }
    for file in "${files[@]}"; do is_in_bill "$file" || return 1; done
}

look_into_programs() {
    check "programs and libraries are hardened" are_hardened
    check "a program that is not is built" build_soft_program
    check "all that it lacks is noticed" sees_soft_program
    check "all that they load is in the bills of materials" bills_are_complete
}

runs_lintian() {
    as_user sh -c "exec lintian --fail-on error --info --display-info $work/old/*.deb"
}

rm -rf "$root$work"
install -d -m 755 "$root$work" "$root$work/old" "$root$work/new"
install -d -m 777 "$root$work/build"
install -m 755 "$here/with_service.sh" "$here/with_example_service.sh" \
    "$here/with_restarted_service.sh" "$here/wav_level.sh" "$here/hardening_check.sh" "$root$work"
install -m 644 "$here/service_manager.sh" "$root$work"
cp "$packages"/*.deb "$root$work/old"
cp "$newer"/*.deb "$root$work/new"
say_step "packages"
check "apt knows its sources" apt update
# Its user stays when it is purged, so it is there before and after.
check "speech-dispatcher installs" apt --no-install-recommends install speech-dispatcher
state_of_root >"$root$work/before"
install_and_speak
say_step "upgrade and purge"
upgrade
purge
say_step "the example"
build_example
say_step "applications"
build_applications
say_step "applications in Python"
run_python
say_step "programs and libraries"
look_into_programs
say_step "lintian"
check "lintian installs" apt --no-install-recommends install lintian
check "lintian finds no error" runs_lintian
grep -E '^[EWI]:' "$log" || true
say ""
closing_line
