# SPDX-License-Identifier: Apache-2.0
# Speaks one sentence and leaves when it has been spoken.
import sys

import voxtrel

with voxtrel.Client("speak") as client:
    outcome = client.say(sys.argv[1] if len(sys.argv) > 1 else "Hello, world.").wait(60)
    print(outcome.message)
sys.exit(0 if outcome else 1)
