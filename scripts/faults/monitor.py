# SPDX-License-Identifier: Apache-2.0
"""voxtrelctl monitor, which goes on until something has happened."""
import time

from checks import check_end, end_in_time, lines_of
from world import HANG, Broken


class Monitor:
    """Hears of a change as soon as there is one, or says what keeps it from that."""

    program = "voxtrelctl"
    name = "voxtrelctl monitor"

    def run(self, world, point):
        world.ensure_peers()
        monitor = world.start("voxtrelctl", ["monitor", "--timeout", "5", "--count", "1"], "monitor.log",
                              world.injected(self.program, point))
        hears = self.change_until_heard(world, monitor)
        status = end_in_time(monitor, self.name)
        text = world.text("monitor.log")
        check_end(self.name, status, text)
        told = [line for line in lines_of(text) if line.startswith("voxtrelctl: ")]
        if status == 1 and hears and len(told) != 1:
            raise Broken(f"status 1 with these lines: {text!r}")
        if status == 0 and hears and "speed" not in text:
            raise Broken(f"status 0, and told no change: {text!r}")
        if point.must_succeed and status != 0:
            raise Broken(f"without a fault: {text}")
        world.expect_peers(world.manager, world.service)
        world.speed = world.check_served()

    def change_until_heard(self, world, monitor):
        """It hears of nothing before it is connected, and of one change less if that one is lost.
        @return False where it has said that it may hear of none."""
        end = time.monotonic() + HANG
        while monitor.poll() is None:
            if "what changes may not be told" in world.text("monitor.log"):
                return False
            if time.monotonic() > end:
                monitor.kill()
                monitor.wait()
                raise Broken(f"{self.name} hangs")
            changed = world.run("voxtrelctl", ["set", "speed", str(world.next_speed())])
            if changed.returncode != 0:
                raise Broken(f"nobody can change a setting beside it: {changed.stderr}")
        return True
