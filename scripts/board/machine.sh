# The emulated machine, sourced.

# run_machine SECONDS: boots the board's image and prints its console until it turns itself off.
# MACHINE_CPUS and MACHINE_ICOUNT (of qemu's option -icount) say what it is like.
run_machine() {
    local options=(-smp "${MACHINE_CPUS:-2}") kernel=("$BOARD_ROOT"/boot/vmlinuz-*)
    if [ -n "${MACHINE_ICOUNT:-}" ]; then options+=(-icount "$MACHINE_ICOUNT"); fi
    timeout --kill-after=5 "$1" "${EMULATOR[@]}" -accel tcg "${options[@]}" -m 1536 \
        -display none -monitor none -net none -no-reboot -serial stdio \
        -kernel "${kernel[0]}" -initrd "$BOARD_FOLDER/initramfs" \
        -append "console=$CONSOLE quiet panic=-1" </dev/null 2>&1 | tr -d '\r'
}
