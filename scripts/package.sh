#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/package.sh [VERSION]
# Builds the Debian packages in a copy of the sources, and from the same objects a tarball whose
# programs and build files work wherever it is unpacked. Behind `./dev package`.
# They are put into build/package; with a VERSION in place of that in debian/changelog, into
# build/package/VERSION.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

work=$PWD/build/package
copy=$work/source
out=$work${1:+/$1}
mkdir -p "$copy" "$out"
rm -rf "$out/dbgsym"
rm -f "$out"/*.deb "$out"/*.tar.gz "$out"/*.buildinfo "$out"/*.changes

say_step "sources"
# What an earlier call compiled stays.
find "$copy" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
if [ "$(git rev-parse --show-toplevel 2>/dev/null)" = "$PWD" ]; then
    git ls-files -z --cached --others --exclude-standard |
        tar -c --null --ignore-failed-read -T - | tar -x -C "$copy"
else
    tar -c --exclude ./build --exclude ./.git . | tar -x -C "$copy"
fi
changelog=$copy/debian/changelog
export SOURCE_DATE_EPOCH
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l "$changelog" -S Timestamp)
if [ $# -gt 0 ]; then
    {
        printf 'voxtrel (%s) unstable; urgency=medium\n\n  * Build with version %s.\n\n' "$1" "$1"
        printf ' -- %s  %s\n\n' "$(dpkg-parsechangelog -l "$changelog" -S Maintainer)" \
            "$(date -R -u -d "@$SOURCE_DATE_EPOCH")"
        cat debian/changelog
    } >"$changelog"
fi
version=$(dpkg-parsechangelog -l "$changelog" -S Version)

say_step "Debian packages"
# A package build has a home of its own, in which ccache would find nothing.
if command -v ccache >/dev/null; then
    export CCACHE_DIR=${CCACHE_DIR:-$(ccache --get-config cache_dir)}
fi
(cd "$copy" && dpkg-buildpackage -b -nc -us -uc -j"$(jobs_here)")
[ "$out" = "$work" ] || mv "$work"/*_"$version"_* "$out"
mkdir "$out/dbgsym"
mv "$out"/*-dbgsym_*.deb "$out/dbgsym"

say_step "tarball"
name=voxtrel-$version
(
    cd "$copy"
    cmake --preset package -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_SKIP_INSTALL_RPATH=OFF >/dev/null
    cmake --build --preset package
    cmake --install build/package --strip --prefix "$out/$name" >/dev/null
    # Units name their programs by absolute paths, and a tarball may lie anywhere.
    rm -r "$out/$name/lib/systemd"
    install -m 644 LICENSE README.md CHANGELOG.md SECURITY.md "$out/$name/share/doc/voxtrel"
    scripts/sbom.py build/package "$version" "voxtrel=$out/$name"
)
tar -C "$out" --sort=name --owner=0 --group=0 --numeric-owner --mode=go=rX,u+rw \
    --mtime="@$SOURCE_DATE_EPOCH" -c "$name" | gzip -n >"$out/$name-$(dpkg --print-architecture).tar.gz"
rm -rf "${out:?}/$name"

say_step "in $out"
ls -l "$out"/*.deb "$out"/*.tar.gz
