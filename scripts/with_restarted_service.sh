#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/with_restarted_service.sh PROGRAMS COMMAND [ARGUMENT...]
# Runs COMMAND beside a service manager and a speech service of the folder PROGRAMS, kills the service
# when sound is heard, and starts another one. Prints what COMMAND prints; its status is COMMAND's.
set -eu
programs=$1
shift
. "$(dirname "$0")/service_manager.sh"

# Not faster than a loudspeaker, so that a sentence has a middle.
start_service() {
    "$programs/voxtreld" --profile "$private/voxtrel.ini" --sink "wav:$private/$1.wav" --real-time \
        >>"$private/service.log" 2>&1 &
    service=$!
}
# More than the header of its file.
is_heard() { [ -n "$(find "$private" -name "$1.wav" -size +4096c)" ]; }

start_service first
"$@" >"$private/output" 2>&1 &
command=$!
while ! is_heard first; do
    kill -0 "$command" 2>/dev/null || give_up "'$*' left before the service was killed"
    kill -0 "$service" 2>/dev/null || give_up "the service did not start"
    sleep 0.02
done
kill -9 "$service"
{ wait "$service" || true; } 2>/dev/null
start_service second
status=0
wait "$command" || status=$?
cat "$private/output"
exit "$status"
