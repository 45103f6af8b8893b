#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/with_service.sh PROGRAMS COMMAND [ARGUMENT...]
# Runs COMMAND beside a service manager and a speech service of the folder PROGRAMS, which speak into
# a private folder, and fails unless COMMAND succeeds, the service ends in order and sound was made.
set -eu
programs=$1
shift
. "$(dirname "$0")/service_manager.sh"

"$programs/voxtreld" --profile "$private/voxtrel.ini" --sink "wav:$private/spoken.wav" \
    >"$private/service.log" 2>&1 &
service=$!
"$@" || give_up "'$*' left with $?"
kill "$service"
wait "$service" || give_up "the service left with $?"
service=

"$(dirname "$0")/wav_level.sh" "$private/spoken.wav" || give_up "no sound was made"
