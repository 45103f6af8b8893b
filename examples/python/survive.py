# SPDX-License-Identifier: Apache-2.0
# Speaks one sentence, from its beginning again if the service dies meanwhile.
import sys

from voxtrel import Client, Event, EventKind, OnLoss


def tell(event: Event) -> None:
    if event.kind is EventKind.DISCONNECTED:
        print("the service is gone: it is said again")


with Client("survive") as client:
    client.on_event(tell)
    text = sys.argv[1] if len(sys.argv) > 1 else "Hello, world."
    outcome = client.say(text, on_loss=OnLoss.SAY_AGAIN_WHATEVER).wait()  # as long as it takes
    client.dispatch()
    print(outcome.message)
sys.exit(0 if outcome else 1)
