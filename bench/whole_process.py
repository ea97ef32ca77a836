"""Runs a program with its output to /dev/null and measures its time and memory."""
import os
import select
import sys
import time
from typing import NamedTuple


class Took(NamedTuple):
    seconds: float
    processor: float  # seconds of processor time, including the system
    memory: float  # peak, in megabytes


def most_memory(process):
    """Peak memory of the program so far, in kilobytes. The value of wait4 includes this script, before the start."""
    try:
        with open(f"/proc/{process}/status", encoding="ascii") as status:
            return max((int(line.split()[1]) for line in status if line.startswith("VmHWM")), default=0)
    except ProcessLookupError:
        return 0


def run(arguments):
    begin = time.monotonic()
    process = os.posix_spawn(arguments[0], arguments, os.environ,
                             file_actions=[(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
    end = select.poll()
    handle = os.pidfd_open(process)
    end.register(handle, select.POLLIN)
    memory = 0
    while not end.poll(2):
        memory = max(memory, most_memory(process))
    seconds = time.monotonic() - begin
    os.close(handle)
    _, status, usage = os.wait4(process, 0)
    if status != 0:
        sys.exit(f"{arguments[0]} failed with status {status}")
    return Took(seconds, usage.ru_utime + usage.ru_stime, memory / 1024)


def run_in_turn(ways, runs):
    """Runs each program (a name and its arguments) in turn, so that a busy moment of the machine affects all."""
    found = {name: [] for name in ways}
    for _ in range(runs):
        for name, arguments in ways.items():
            found[name].append(run(arguments))
    return found
