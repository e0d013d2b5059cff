"""What a command costs: it, and every process that it started and waited for."""

import os
import subprocess
import tempfile
import time
from collections.abc import Sequence
from dataclasses import dataclass


@dataclass(frozen=True)
class Cost:
    wall: float  # seconds
    cpu: float  # seconds of all processes
    mebibytes: float  # resident in the largest of the processes
    megabytes_read: float  # what read calls of all processes returned, cached or not
    output: str
    status: int


def _bytes_read() -> int:
    """Linux adds what a process has read to its parent's count once it was waited for."""
    with open("/proc/self/io", encoding="ascii") as counters:
        return int(next(line for line in counters if line.startswith("rchar:")).split()[1])


class House:
    """A home of its own for the measured programs: nothing of the user's is seen or touched."""

    def __init__(self) -> None:
        self._folder = tempfile.TemporaryDirectory(prefix="vignar-bench.")
        self.path = self._folder.name
        self.environment = {**os.environ, "HOME": self.path, "LC_ALL": "C.UTF-8"}
        for variable, name in (("TMPDIR", "tmp"), ("XDG_RUNTIME_DIR", "run"),
                               ("XDG_CONFIG_HOME", "config"), ("XDG_STATE_HOME", "state"),
                               ("XDG_DATA_HOME", "data"), ("XDG_CACHE_HOME", "cache")):
            self.environment[variable] = os.path.join(self.path, name)
            os.mkdir(self.environment[variable], 0o700)

    def run(self, command: Sequence[str]) -> Cost:
        read = _bytes_read()
        begin = time.monotonic()
        with (tempfile.TemporaryFile("w+") as output,
              subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                               stderr=subprocess.DEVNULL, env=self.environment) as process):
            _, status, usage = os.wait4(process.pid, 0)
            wall = time.monotonic() - begin
            process.returncode = os.waitstatus_to_exitcode(status)
            output.seek(0)
            return Cost(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024,
                        (_bytes_read() - read) / 1e6, output.read(), process.returncode)
