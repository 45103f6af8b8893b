# SPDX-License-Identifier: Apache-2.0
# What differs between the emulated boards; sourced.

BOARDS=(x86 arm)

# choose_board x86|arm
choose_board() {
    BOARD_FOLDER=$PWD/build/board/$1
    BOARD_ROOT=$BOARD_FOLDER/root # the board's packages, unpacked
    case $1 in
        x86)
            ARCHITECTURE=amd64 TRIPLET=x86_64-linux-gnu KERNEL_PACKAGE=linux-image-amd64
            LOADER=/lib64/ld-linux-x86-64.so.2 STRIP=strip CONSOLE=ttyS0 PRESET=debug
            LIBRARY_ROOT= # this machine's own
            EMULATOR=(qemu-system-x86_64 -cpu max)
            BOARD_PACKAGES=(busybox-static libasound2-data)
            SOUND_CARD_TEST=sound_card_test
            ;;
        arm)
            ARCHITECTURE=armhf TRIPLET=arm-linux-gnueabihf KERNEL_PACKAGE=linux-image-armmp
            LOADER=/lib/ld-linux-armhf.so.3 STRIP=arm-linux-gnueabihf-strip CONSOLE=ttyAMA0
            PRESET=board_arm SOUND_CARD_TEST=
            LIBRARY_ROOT=$BOARD_ROOT
            EMULATOR=(qemu-system-arm -M "virt,highmem=off" -cpu cortex-a15)
            BOARD_PACKAGES=(busybox-static libstdc++6 libespeak-ng-dev libsndfile1-dev libasound2-dev
                libcli11-dev nlohmann-json3-dev)
            ;;
        *)
            echo "board: there is no board '$1', but these: ${BOARDS[*]}" >&2
            return 1
            ;;
    esac
}
