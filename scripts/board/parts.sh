# What a board's list consists of; sourced there.

# add_module NAME [PARAMETER...]
add_module() {
    module=$1
    shift
    insmod "/lib/modules/$module.ko" "$@"
}

# part NAME SECONDS COMMAND...: runs it, between two lines that tell what it is and how it ended
part() {
    part_name=$1 part_seconds=$2
    shift 2
    echo "#board begin $part_name"
    timeout -s KILL "$part_seconds" "$@" </dev/null 2>&1
    printf '\n#board end %s %s\n' "$part_name" $?
}

# send_file FILE: brings it to the machine that runs the board, under its own name
send_file() {
    echo "#board file $(basename "$1")"
    base64 "$1"
    echo "#board file end"
}
