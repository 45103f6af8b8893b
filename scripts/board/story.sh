#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: story.sh FILE.wav. What happens on a device in a day: the service speaks, clients share it, some
# are killed, and the service is killed and comes back. What is said at the end goes into FILE.wav.
. "$(dirname "$0")/checks.sh"
wav=$1
sentence="The last train had left the station an hour ago."
long="A man in a grey coat stood on the platform and read the timetable once more, although he knew
every line of it. Then it began to rain. He closed his umbrella, smiled, and walked home."
export VOXTREL_BINDER_SOCKET="$work/binder"

# start_service SINK...: in the way of a loudspeaker, so that a sentence has a middle
start_service() {
    run_aside service voxtreld --profile "$work/voxtrel.ini" --real-time --sink "$@"
    service=$aside
    await voxtrelctl get speed
}
says() { voxtrelctl say --wait "$sentence" && tail -n 1 "$work/check.log" | grep -q '^finished'; }

start_monitor() {
    run_aside monitor voxtrelctl monitor
    monitor=$aside
    await_logged "service connected" monitor
}
sees_a_setting() { voxtrelctl set speed 250 && await_logged "speed: 250" monitor; }

takes_lock() {
    run_aside holder voxtrelctl lock -- sleep 600
    holder=$aside
    await_logged "lock: held by process $holder" monitor
}
is_refused() { ! voxtrelctl say "$sentence" && grep -q "voxtrelctl: -7" "$work/check.log"; }
loses_its_lock() { kill -9 "$holder" && left_with "$holder" 137 && await_logged "lock: free" monitor; }

kill_service_in_mid_sentence() {
    run_aside speaker voxtrelctl say --wait "$long"
    speaker=$aside
    await_logged "word 1 at" speaker && kill -9 "$service" && left_with "$service" 137
}
speaker_is_told() { left_with "$speaker" 1 && await_logged "voxtrelctl: -5" speaker; }
finds_it_again() { [ "$(logged "service connected" monitor)" -eq 2 ]; }
keeps_settings() { voxtrelctl get speed | grep -qw 250; }

kill_client_in_mid_sentence() {
    run_aside killed voxtrelctl say --wait "$long" "$long" "$long"
    await_logged "word 1 at" killed && kill -9 "$aside" && left_with "$aside" 137
}
ends() { kill "$1" && left_with "$1" 0; }

check 'the service manager starts' start_manager
check 'the service starts' start_service "wav:$work/first.wav"
check 'a sentence is said' says
check 'the monitor connects' start_monitor
check 'the monitor sees a setting change' sees_a_setting
check 'a client takes the lock' takes_lock
check 'another client is refused meanwhile' is_refused
check 'the lock of a killed client is free' loses_its_lock
check 'the other client is heard then' says
check 'a killed client leaves' kill_client_in_mid_sentence
check 'what it wanted to say is not in the way' says
check 'the service is killed in mid sentence' kill_service_in_mid_sentence
check 'who spoke is told' speaker_is_told
check 'the monitor sees the death' await_logged "service died" monitor
check 'the service starts again' start_service "wav:$wav"
check 'the monitor finds it again' await finds_it_again
check 'it has kept its settings' keeps_settings
check 'a sentence is said again' says
check 'the monitor ends' ends "$monitor"
check 'the service ends' ends "$service"
check 'the service manager ends' ends "$manager"
