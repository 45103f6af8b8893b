# SPDX-License-Identifier: Apache-2.0
# The packages of a board, sourced: fetched by an apt of their own, whose architecture need not be this
# machine's, and unpacked. Nothing of them is installed.

# Of the kernel: it and these modules.
KERNEL_FILES=(./boot/vmlinuz-\* ./lib/modules/\*/kernel/drivers/android ./lib/modules/\*/kernel/sound/core
    ./lib/modules/\*/kernel/sound/soundcore.ko ./lib/modules/\*/kernel/sound/drivers/snd-aloop.ko)

# The distribution alone, without its updates: a board meets no network, and needs no second index.
board_sources() {
    local suite
    suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' "Codename: $suite" | sort -u
}

configure_board_apt() {
    mkdir -p "$1/lists/partial" "$1/archives/partial"
    : >"$1/status"
    board_sources >"$1/sources.list"
    if [ ! -s "$1/sources.list" ]; then
        echo "board: apt knows no Debian source of this system; run apt-get update" >&2
        return 1
    fi
    cat >"$1/apt.conf" <<TXT
APT::Architecture "$ARCHITECTURE";
APT::Architectures { "$ARCHITECTURE"; };
APT::Sandbox::User "$(id -un)";
Acquire::Languages "none";
Dir::State "$1";
Dir::State::status "$1/status";
Dir::Cache "$1";
Dir::Etc::sourcelist "$1/sources.list";
Dir::Etc::sourceparts "-";
TXT
}

# fetch_packages APT-FOLDER: the board's packages with what they depend on, and the kernel's without
fetch_packages() {
    local -x APT_CONFIG=$1/apt.conf
    local kernel
    apt-get update -q && apt-get clean &&
        kernel=$(apt-cache depends --important "$KERNEL_PACKAGE" | sed -n 's/^ *Depends: //p') &&
        apt-get install -y -q --download-only --no-install-recommends "${BOARD_PACKAGES[@]}" &&
        cd "$1/archives" && apt-get download -q "${kernel:?no kernel}"
}

unpack_packages() {
    local package
    for package in "$1"/archives/*.deb; do
        case $package in
            */linux-image-*) dpkg --fsys-tarfile "$package" | tar -x -C "$BOARD_ROOT" --wildcards "${KERNEL_FILES[@]}" ;;
            *) dpkg -x "$package" "$BOARD_ROOT" ;;
        esac || return 1
    done
}

# need_board_root: makes BOARD_ROOT, unless it is there with all that is wanted
need_board_root() {
    local apt=$BOARD_FOLDER/apt log=$BOARD_FOLDER/packages.log wanted
    wanted="$KERNEL_PACKAGE ${BOARD_PACKAGES[*]} ${KERNEL_FILES[*]}"
    [ "$(cat "$BOARD_ROOT.made" 2>/dev/null)" != "$wanted" ] || return 0
    rm -rf "$BOARD_ROOT" "$BOARD_ROOT.made"
    mkdir -p "$BOARD_ROOT"
    say "fetching the board's packages"
    if ! { configure_board_apt "$apt" && (fetch_packages "$apt") && unpack_packages "$apt"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        echo "board: its packages could not be had; $log says more" >&2
        return 1
    fi
    echo "$wanted" >"$BOARD_ROOT.made"
}
