# SPDX-License-Identifier: Apache-2.0
# The file system that a board boots with, sourced. Files lie in it where they lie here, so that the paths
# which programs were compiled with hold there.

# start_image: makes IMAGE, a folder of this run alone: busybox, the kernel's modules and the first process
start_image() {
    [ -z "${IMAGE:-}" ] || rm -rf "$IMAGE" "$IMAGE.cpio"
    trap 'rm -rf "$IMAGE" "$IMAGE.cpio"' EXIT
    IMAGE=$(mktemp -d "$BOARD_FOLDER/image.XXXXXX")
    chmod 755 "$IMAGE"
    mkdir -p "$IMAGE"/{board,dev,etc,proc,root,run,sys,tmp,usr/bin,usr/lib/modules,usr/sbin,var}
    chmod 1777 "$IMAGE/tmp"
    local folder
    for folder in bin lib sbin; do ln -s "usr/$folder" "$IMAGE/$folder"; done
    cp "$BOARD_ROOT/bin/busybox" "$IMAGE/usr/bin"
    find "$BOARD_ROOT/lib/modules" -name '*.ko' -exec cp -t "$IMAGE/usr/lib/modules" {} +
    cp scripts/board/parts.sh "$IMAGE/board"
    install -m 755 scripts/board/init.sh "$IMAGE/init"
    printf 'root:x:0:0::/root:/bin/sh\nnobody:x:65534:65534::/:/bin/sh\n' >"$IMAGE/etc/passwd"
    printf 'root:x:0:\nnogroup:x:65534:\n' >"$IMAGE/etc/group"
    add_file "$LIBRARY_ROOT$LOADER" "$LOADER" &&
        add_library libgcc_s.so.1 # the C library loads it when a thread is cancelled
}

# add_file FILE [PLACE]: FILE, as PLACE there, and the libraries that it needs
add_file() {
    local file=$1 place=$IMAGE${2:-$1}
    [ ! -e "$place" ] || return 0
    [ -e "$file" ] || { echo "board: there is no $file" >&2; return 1; }
    mkdir -p "$(dirname "$place")"
    if ! "$STRIP" -o "$place" "$file" 2>/dev/null; then
        cp -L "$file" "$place" # a script, or data
        return
    fi
    local sections name folders
    sections=$(readelf -d "$file" 2>/dev/null)
    folders=$(sed -n -E 's/.*\((RUNPATH|RPATH)\).*\[(.*)\]$/\2/p' <<<"$sections")
    while read -r name; do
        add_library "$name" "$folders" || return 1
    done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' <<<"$sections")
}

# add_library NAME [FOLDER:FOLDER...]: out of the first of these, as seen from the board or from here, and
# the system's folders that has it
add_library() {
    local folder folders place
    IFS=: read -r -a folders <<<"${2:-}"
    for folder in "${folders[@]}" "/lib/$TRIPLET" "/usr/lib/$TRIPLET"; do
        for place in "$LIBRARY_ROOT$folder" "$folder"; do
            if [ -e "$place/$1" ]; then
                add_file "$place/$1" "${place#"$LIBRARY_ROOT"}/$1"
                return
            fi
        done
    done
    echo "board: there is no library $1" >&2
    return 1
}

# add_folder FOLDER [PLACE]: all that is in it, as data
add_folder() {
    mkdir -p "$IMAGE${2:-$1}"
    cp -rL "$1/." "$IMAGE${2:-$1}"
}

# pack_image: makes of it what the kernel unpacks. Compression would cost more time there than it saves here.
pack_image() {
    (cd "$IMAGE" && find . -print0 | cpio --null --create --quiet --format=newc --owner=0:0) \
        >"$IMAGE.cpio"
}
