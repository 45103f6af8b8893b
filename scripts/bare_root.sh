# SPDX-License-Identifier: Apache-2.0
# Bare Debian roots, sourced by bare.sh: made from this machine's own package sources, entered with
# processes, mounts and a /tmp of their own.

# debian_sources: this machine's sources of Debian packages, a line 'URI SUITE COMPONENT CODENAME' each
debian_sources() {
    apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT) $(CODENAME)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u
}

# apt_settings: how this machine reaches them: a proxy, an archive of a past day
apt_settings() {
    apt-config dump Acquire | grep -E '^Acquire::(http|https|Check-|Retries)' || true
    local scheme variable
    for scheme in http https; do
        variable=${scheme}_proxy
        [ -z "${!variable:-}" ] || echo "Acquire::$scheme::Proxy \"${!variable}\";"
    done
}

# make_root FOLDER: minbase and git, nothing else
make_root() {
    local root=$1 suite uri packages=git
    suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    uri=$(debian_sources | awk -v suite="$suite" '$4 == suite { print $1; exit }')
    if [ -z "$uri" ]; then
        echo "bare: apt knows no Debian source of this system, '$suite'; run apt-get update" >&2
        return 1
    fi
    ! debian_sources | grep -q '^https:' || packages+=,ca-certificates
    if ! debootstrap --variant=minbase --include="$packages" --cache-dir="$PACKAGE_CACHE" "$suite" "$root" \
        "$uri" >"$root.log" 2>&1; then
        tail -n 20 "$root.log" >&2
        return 1
    fi
    debian_sources | awk '{ print "deb", $1, $2, $3 }' >"$root/etc/apt/sources.list" &&
        apt_settings >"$root/etc/apt/apt.conf.d/10machine" &&
        cp /etc/resolv.conf "$root/etc/resolv.conf"
}

# with_root ROOT COMMAND...: runs it where ROOT has its mounts; they and its processes end with it.
with_root() {
    local root=$1
    shift
    unshare --mount --pid --ipc --uts --fork --kill-child bash -euc '
        root=$1 cache=$2
        shift 2
        mount --make-rprivate /
        mount --bind "$root" "$root"
        mount --bind "$cache" "$root/var/cache/apt/archives"
        mount -t proc proc /proc
        mount -t proc proc "$root/proc"
        mount --rbind /dev "$root/dev"
        mount -t tmpfs tmpfs "$root/dev/shm"
        mount -t tmpfs tmpfs "$root/run"
        "$@" || exit
    ' bash "$root" "$PACKAGE_CACHE" "$@"
}

# in_root ROOT COMMAND...: runs it as root of ROOT, with an environment of its own. A new root and not
# a changed one: a process in a changed one may make no user namespace, as any other process may.
in_root() {
    local root=$1
    shift
    with_root "$root" bash -euc '
        cd "$1"
        shift
        mkdir -p .outside
        pivot_root . .outside
        cd /
        umount -l /.outside
        rmdir /.outside
        env -i HOME=/root TERM="${TERM:-dumb}" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@" || exit
    ' bash "$root" "$@"
}
