# SPDX-License-Identifier: Apache-2.0
# What of a build tree goes on a board, sourced.

# built_program BUILD NAME
built_program() {
    local found
    found=$(find "$1" -type f -perm -u+x -name "$2" -print -quit)
    [ -n "$found" ] || { echo "board: $2 has not been built in $1" >&2; return 1; }
    realpath "$found"
}

# add_program BUILD NAME: found there by its name alone, too
add_program() {
    local file
    file=$(built_program "$@") && add_file "$file" && ln -s "$file" "$IMAGE/usr/bin/$2"
}

# add_speech_data: the engine's voices and the audio library's settings
add_speech_data() {
    add_folder "$LIBRARY_ROOT/usr/lib/$TRIPLET/espeak-ng-data" "/usr/lib/$TRIPLET/espeak-ng-data" &&
        add_folder "$LIBRARY_ROOT/usr/share/alsa" /usr/share/alsa
}
