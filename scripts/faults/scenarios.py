# SPDX-License-Identifier: Apache-2.0
"""What each program does while a call of its own fails."""
import re
import shutil
import subprocess
import time
import wave

from checks import check_end, check_lines, end_in_time
from module import Module
from monitor import Monitor
from tool import Tool
from world import HANG, Broken


class Client:
    """A program on one of the libraries. Only what the fault meets may fail."""

    def __init__(self, program, changes=False):
        self.program = self.name = program
        self.changes = changes

    def run(self, world, point):
        world.ensure_peers()
        times = 3
        before = world.speed
        speed = world.next_speed() if self.changes else before
        arguments = [str(times), str(speed)] if self.changes else [str(times)]
        got = world.run(self.program, arguments, world.injected(self.program, point))
        # The runtime says what it could not do.
        told = [line for line in got.stderr.splitlines() if not line.startswith("binder[")]
        check_lines(0, got.stderr, point)
        if got.returncode != 0 or told:
            raise Broken(f"{self.name} has ended with {got.returncode}: "
                         f"{got.stdout.strip()[-200:]} {got.stderr.strip()[-300:]}")
        done = got.stdout.count("done")
        if done < (times if point.must_succeed else times - 1) and \
                (point.times == 1 or point.must_succeed):
            raise Broken(f"only {done} of {times} times done: {got.stdout.strip()}")
        world.expect_peers(world.manager, world.service)
        world.speed = world.check_served()
        if self.changes:
            self.check_changed(got.stdout, before, speed, world.speed)

    def check_changed(self, said, before, speed, found):
        if f"changed {speed}" in said and found != speed:
            raise Broken(f"speed {speed} was acknowledged and is {found}")
        if found not in (before, speed):
            raise Broken(f"speed is {found}, which nobody has set")
        read = re.findall(r"done (\d+)", said)
        if set(read) - {str(speed)}:
            raise Broken(f"set to {speed}, the speed was read as {read}")


class Service:
    """voxtreld: from its start, through a client's life, to its end."""

    program = "voxtreld"

    def __init__(self, sink="none"):
        self.name = self.program if sink == "none" else f"{self.program} {sink}"
        self.sink = sink

    def run(self, world, point):
        sound = world.folder / "sound"
        shutil.rmtree(sound, ignore_errors=True)
        sound.mkdir()
        if world.manager is None or world.manager.poll() is not None:
            world.start_manager()
        if world.service is not None and world.service.poll() is None:
            end_in_time(world.service, "the service before")
        before = world.speed
        speed = world.next_speed()
        world.start_service(world.injected(self.program, point), self.sink)
        under_test = world.service
        client = world.start_client("1", str(speed))
        try:
            text = self.watch(world, under_test, client)
        finally:
            if client.poll() is None:
                client.kill()
            said, _ = client.communicate()
        if "done" in said and world.service is under_test and self.sink != "none":
            check_sound(sound)
        if point.times == 1:
            text = text or self.outlive_a_holder(world, under_test)
            if under_test.poll() is None:
                text = self.check_serves_on(world, point, under_test) or text
        status = end_in_time(under_test, self.name)
        if world.service is under_test:
            text = world.text("service.log")
        check_end(self.name, status, text)
        if client.returncode != 0 or (point.must_succeed and "done" not in said):
            raise Broken(f"the client beside it has ended with {client.returncode}: {said}")
        check_lines(status, text, point)
        if world.service.poll() is not None:
            world.start_service()
        found = world.check_served()
        world.speed = found
        # A disk that takes nothing keeps nothing: then the service has said so.
        if f"changed {speed}" in said and found != speed and "may not survive" not in text:
            raise Broken(f"speed {speed} was acknowledged and is {found}")
        if found not in (speed, before):
            raise Broken(f"speed is {found}, which nobody has set")
        world.expect_peers(world.manager)

    def check_serves_on(self, world, point, service):
        """Of two visitors one may be whom the fault meets. @return as `watch`."""
        text = ""
        try:
            world.check_served()
        except Broken:
            if point.must_succeed:
                raise
            if service.poll() is not None:
                text = world.text("service.log")
                world.start_service()
            world.check_served()
        return text

    def outlive_a_holder(self, world, service):
        """A process is killed while it has the lock, which the next one gets. @return as `watch`."""
        lock = [world.program("voxtrelctl"), "lock", "--timeout"]
        holder = subprocess.Popen([*lock, "5", "--", "sh", "-c", "echo held; exec cat"], env=world.env,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        holder.stdout.readline()
        holder.kill()
        holder.communicate()
        waiter = subprocess.Popen([*lock, "20", "--", "true"], env=world.env, stdin=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, text=True)
        text = self.watch(world, service, waiter)
        _, said = waiter.communicate()
        if waiter.returncode != 0:
            raise Broken(f"the lock of a killed process is not free: {said}")
        return text

    def watch(self, world, service, client):
        """Starts another service for the client if this one ends. @return what this one has said."""
        end = time.monotonic() + HANG
        text = ""
        while client.poll() is None and time.monotonic() < end:
            if world.service is service and service.poll() is not None:
                text = world.text("service.log")
                world.start_service()
            time.sleep(0.005)
        if client.poll() is None:
            raise Broken("the client beside it hangs")
        return text


def check_sound(folder):
    """Of an utterance that has finished all is in its file, also while the service goes on."""
    files = sorted(folder.rglob("*.wav"))
    if not files:
        raise Broken("an utterance has finished, and there is no sound file")
    try:
        with wave.open(str(files[0])) as file:
            described, rate = file.getnframes(), file.getframerate()
    except (wave.Error, EOFError) as error:
        raise Broken(f"an utterance has finished, and its sound file is broken: {error}") from None
    held = (files[0].stat().st_size - 44) // 2
    # Behind it in the same file comes the client's pause of 1 ms, which may be there in part.
    if described < rate // 10 or not described <= held <= described + rate // 1000:
        raise Broken(f"an utterance has finished, and its sound file tells of {described} samples and "
                     f"has {held}")


class Manager:
    """voxtrel-servicemanager: a service registers, clients come and go."""

    program = name = "voxtrel-servicemanager"

    def run(self, world, point):
        if world.manager is not None and world.manager.poll() is None:
            end_in_time(world.manager, "the manager before")
        world.start_manager(world.injected(self.program, point))
        under_test = world.manager
        if under_test.poll() is not None:
            text = world.text("manager.log")
            world.start_manager()
        else:
            text = ""
        world.ensure_peers()
        client = world.start_client("2")
        end = time.monotonic() + HANG
        while client.poll() is None and time.monotonic() < end:
            if world.manager is under_test and under_test.poll() is not None:
                text = world.text("manager.log")
                world.start_manager()
            time.sleep(0.005)
        hangs = client.poll() is None
        if hangs:
            client.kill()
        said, _ = client.communicate()
        status = end_in_time(under_test, self.name) if world.manager is not under_test or hangs else None
        if status is None:
            if point.times == 1:
                world.check_served()
            status = end_in_time(under_test, self.name)
            text = world.text("manager.log")
        check_end(self.name, status, text)
        check_lines(status, text, point)
        if hangs or client.returncode != 0:
            raise Broken(f"the client beside it has ended with {client.returncode}: {said}")
        if world.manager.poll() is not None:
            world.start_manager()
        world.check_served()
        world.expect_peers(world.service)


SCENARIOS = [
    Service(), Service("wav:sound/all.wav"), Service("wavdir:sound/each"), Manager(), Client("faults_cpp_client", changes=True), Client("faults_c_client"),
    Client("faults_runtime_client"),
    Tool("say", "--wait", "One, two, three."), Tool("say", "--json", "-f", "-", given="One, two, three.\n"),
    Tool("silence", "--wait", "1"), Tool("stop"), Tool("lock", "--", "true"), Tool("break-lock"),
    Tool("status"), Tool("languages"), Tool("voices", "--json"), Tool("doctor"), Tool("get"),
    Tool("set", "speed", "SPEED"), Tool("enable", "speech"), Tool("disable", "speech"),
    Tool("profile", "show", "kept.ini"), Tool("profile", "save", "kept.ini"),
    Tool("profile", "load", "kept.ini"), Tool("profile", "copy", "kept.ini", "copy.ini"),
    Tool("profile", "remove", "copy.ini"), Monitor(), Module(),
]
# Crashes where a call fails; its failure shows that this is seen.
CARELESS = Client("faults_careless_client")
