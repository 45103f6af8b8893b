# SPDX-License-Identifier: Apache-2.0
# The emulated machine, sourced.

# run_machine SECONDS: boots the board's image and prints its console until it turns itself off.
# MACHINE_CPUS says how many processors it has, MACHINE_ICOUNT what qemu's option -icount says. With that
# the board's clock is the number of its instructions: how busy this machine is, it cannot see, and waiting
# takes no time. Only a board with one processor boots so.
run_machine() {
    local options=(-smp "${MACHINE_CPUS:-2}") kernel=("$BOARD_ROOT"/boot/vmlinuz-*)
    if [ -n "${MACHINE_ICOUNT:-}" ]; then options=(-smp 1 -icount "$MACHINE_ICOUNT"); fi
    timeout --foreground --kill-after=5 "$1" "${EMULATOR[@]}" -accel tcg "${options[@]}" -m 1536 \
        -display none -monitor none -net none -no-reboot -serial stdio \
        -kernel "${kernel[0]}" -initrd "$IMAGE.cpio" \
        -append "console=$CONSOLE quiet panic=-1" </dev/null 2>&1 | sed -u 's/\r$//'
}
