#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the n-th call of a kind fail, in one program at a time, and sees what becomes of everything.

A library of our own (tests/faults/injection.cpp) is preloaded into the program under test. A first
run counts its calls and where they come from; then the same is done once for each n that is to be
tried, with real processes around the program. What must hold each time:

  no crash, no uncaught exception, no hang; a program ends with status 0 or 1, with 1 after one
  line on standard error; what was acknowledged is there after a restart; a file is whole; each
  utterance has one end; the processes around the program live, and are served again.

The n are those whose call comes from a place (a stack) of its own; --all takes every n. With a
limit of time, or a number of points, each program's points are taken in steps of one size.
"""
import argparse
import concurrent.futures
import os
import pathlib
import queue
import sys
import time

from calls import CALLS, JUMPS, LASTING, Point
from scenarios import CARELESS, SCENARIOS
from tally import Tally
from world import Broken, World


def points_of(scenario, world, every, calls):
    """Counts the calls of a run in which none fails. @return the points, call by call."""
    scenario.run(world, Point("", "ENOMEM"))
    if world.record.calls() == 0:
        raise Broken(f"{scenario.name} has run without the library that has calls fail")
    clock, _ = world.record.places(JUMPS)
    points = [Point(JUMPS, "EAGAIN", 1, 0)] if clock and (not calls or JUMPS in calls) else []
    for call, errors in CALLS.items():
        if calls and call not in calls:
            continue
        count, places = world.record.places(call)
        numbers = list(range(1, count + 1)) if every else places
        points += [Point(call, error, n) for error in errors for n in numbers]
        if call in LASTING:
            points += [Point(call, LASTING[call], n, 0) for n in numbers]
    return points


def work(build, jobs, tally, end):
    world = World(build)
    try:
        while time.monotonic() < end:
            try:
                scenario, point = jobs.get_nowait()
            except queue.Empty:
                return
            why = None
            try:
                scenario.run(world, point)
            except Broken as broken:
                why = str(broken)
            met = world.record.failed() > 0
            tally.note(scenario, point, why, world.record.stack() if why else [], met)
            if why is not None:
                world.close()
                world = World(build)
    finally:
        world.close()


def spread(points, count):
    """`count` of them, in steps of one size."""
    if count >= len(points):
        return points
    return [points[i * len(points) // count] for i in range(count)]


def short(plan):
    """A point of each kind of call of each program, the middle one of its places."""
    kinds = {}
    for scenario, point in plan:
        kinds.setdefault((scenario.program, point.call), []).append((scenario, point))
    return [points[len(points) // 2] for points in kinds.values()]


def count_all(build, scenarios, options):
    """The points of each scenario."""
    def one(scenario):
        world = World(build)
        try:
            return points_of(scenario, world, options.all, options.call)
        finally:
            world.close()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        return dict(zip(scenarios, pool.map(one, scenarios)))


def tell_clocks(found):
    """Timeouts go by the monotonic clock: who does not read the other one cannot notice a jump."""
    readers = dict.fromkeys(scenario.name for scenario, points in found.items()
                            if any(point.call == JUMPS for point in points))
    print("the clock of the day is read by:", ", ".join(readers) or "nobody")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, help="build folder, without sanitizers")
    parser.add_argument("--seconds", type=float, default=0, help="stop after so long (default: never)")
    parser.add_argument("--points", type=int, default=0, help="try so many of all (default: all)")
    parser.add_argument("--short", action="store_true", help="one of each kind of call and program")
    parser.add_argument("--all", action="store_true", help="every n, not one for each place")
    parser.add_argument("--program", action="append", help="only scenarios whose name begins so")
    parser.add_argument("--call", action="append", choices=[*CALLS, JUMPS], help="only this call")
    parser.add_argument("--at", type=int, help="only this n")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1))
    options = parser.parse_args()
    options.build = options.build.resolve()
    end = time.monotonic() + (options.seconds or float("inf"))
    scenarios = SCENARIOS if not options.program else [
        s for s in [*SCENARIOS, CARELESS] if any(s.name.startswith(p) for p in options.program)]
    found = count_all(options.build, scenarios, options)
    plan = [(scenario, point) for scenario, points in found.items() for point in points
            if options.at is None or point.at == options.at]
    total = len(plan)
    print("; ".join(f"{s.name}: {len(points)}" for s, points in found.items()), flush=True)
    if not options.call or JUMPS in options.call:
        tell_clocks(found)
    plan = short(plan) if options.short else spread(plan, options.points or total)
    if options.seconds:  # whatever there is time for is spread over all of them
        steps = 61
        plan = [job for begin in range(steps) for job in plan[begin::steps]]
    jobs = queue.Queue()
    for job in plan:
        jobs.put(job)
    tally = Tally()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(work, options.build, jobs, tally, end) for _ in range(options.jobs)]:
            done.result()
    tried = tally.print(total)
    return 1 if tally.failures or tried == 0 or tally.has_missed_many() else 0


if __name__ == "__main__":
    sys.exit(main())
