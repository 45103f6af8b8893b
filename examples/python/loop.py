# SPDX-License-Identifier: Apache-2.0
# Speaks its arguments, and tells what becomes of them, in one loop on one thread.
import asyncio
import sys

from voxtrel import Client


async def main(texts: list[str]) -> None:
    async with Client("loop") as client:
        said = {client.say(text).number: text for text in texts}
        async for event in client.events():
            if event.outcome is not None:
                print(f"{said.pop(event.utterance)}: {event.outcome.message}")
            if not said:
                break


asyncio.run(main(sys.argv[1:]))
