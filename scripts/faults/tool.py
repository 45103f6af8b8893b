# SPDX-License-Identifier: Apache-2.0
"""The commands of voxtrelctl."""
from checks import check_end, lines_of
from world import Broken


class Tool:
    """One command of voxtrelctl, beside a service in good health."""

    program = "voxtrelctl"

    def __init__(self, *arguments, given=None):
        self.arguments = arguments
        self.given = given
        self.words = 2 if arguments[0] == "profile" else 1
        self.name = "voxtrelctl " + " ".join(arguments[:self.words])

    def prepare(self, world):
        world.ensure_peers()
        profile = world.folder / "kept.ini"
        if not hasattr(world, "profile"):
            saved = world.run("voxtrelctl", ["profile", "save", str(profile)])
            if saved.returncode != 0:
                raise Broken(saved.stderr)
            world.profile = profile.read_text()
        profile.write_text(world.profile)
        (world.folder / "copy.ini").write_text("# the one before\n")

    def run(self, world, point):
        self.prepare(world)
        speed = world.next_speed() if "SPEED" in self.arguments else world.speed
        arguments = [{"SPEED": str(speed)}.get(word, word) for word in self.arguments]
        limit = [] if "copy" in arguments or "remove" in arguments or "show" in arguments \
            else ["--timeout", "5"]
        arguments[self.words:self.words] = limit
        got = world.run("voxtrelctl", arguments, world.injected(self.program, point), self.given)
        if point.must_succeed and got.returncode != 0:
            raise Broken(f"without a fault: {got.stderr}")
        # lock gives 126, as a shell does, where the command cannot be run.
        status = 1 if got.returncode == 126 and "lock" in self.arguments else got.returncode
        check_end(self.name, status, got.stderr)
        lines = lines_of(got.stderr)
        if status == 1 and (len(lines) != 1 or not lines[0].startswith("voxtrelctl: ")):
            raise Broken(f"status 1 with these lines: {got.stderr!r}")
        if got.returncode == 0 and len(lines) > 1:
            raise Broken(f"status 0 with these lines: {got.stderr!r}")
        world.expect_peers(world.manager, world.service)
        self.check_files(world)
        if "disable" in self.arguments:
            refused = world.run("voxtrelctl", ["say", "--wait", "One."])
            if got.returncode == 0 and "voxtrelctl: -1 " not in refused.stderr:
                raise Broken(f"speech is not disabled: {refused.stderr!r}")
            world.run("voxtrelctl", ["enable", "speech"])
        found = world.speed = world.check_served()
        if "SPEED" in self.arguments and got.returncode == 0 and found != speed:
            raise Broken(f"speed {speed} was acknowledged and is {found}")
        if self.arguments[0] == "profile" and got.returncode == 0:
            self.check_profiles(world, found)

    def check_profiles(self, world, speed):
        """What was acknowledged is done; `speed` is the service's."""
        kept, copied = world.folder / "kept.ini", world.folder / "copy.ini"
        done = {
            "show": lambda: True,
            "save": lambda: f"\nspeed={speed}\n" in kept.read_text(),
            "load": lambda: f"\nspeed={speed}\n" in world.profile,
            "copy": lambda: copied.read_text() == world.profile,
            "remove": lambda: not copied.exists(),
        }
        if not done[self.arguments[1]]():
            raise Broken(f"{self.name} was acknowledged and is not done")

    def check_files(self, world):
        for name in ("kept.ini", "copy.ini"):
            path = world.folder / name
            text = path.read_text() if path.exists() else None
            whole = {world.profile, "# the one before\n" if name == "copy.ini" else world.profile}
            removed = name in self.arguments and "remove" in self.arguments
            if text is None and not removed:
                raise Broken(f"{name} is gone")
            # What differs is the values that were saved: their number of lines does not.
            if text is not None and text not in whole and \
                    text.count("\n") != world.profile.count("\n"):
                raise Broken(f"{name} is not whole: {text!r}")
        left = [path.name for path in world.folder.glob("*.ini.*")
                if not path.name.startswith("voxtrel.ini")]
        if left:
            for name in left:
                (world.folder / name).unlink()
            raise Broken(f"left behind: {left}")
