#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/with_example_service.sh PROGRAMS SERVICE
# Runs the program SERVICE, which is examples/service, beside a service manager of the folder PROGRAMS,
# and fails unless voxtrelctl is content with it and it prints what voxtrelctl says.
set -eu
programs=$1
. "$(dirname "$0")/service_manager.sh"

"$2" >"$private/service.log" 2>&1 &
service=$!
"$programs/voxtrelctl" say --wait "Hello from the tools." || give_up "say left with $?"
grep -qx "Hello from the tools." "$private/service.log" || give_up "it was not printed"
