"""The end of processes that the package has started."""

from __future__ import annotations

import contextlib
import os
import signal
import subprocess
import time
from pathlib import Path
from typing import Any

__tracebackhide__ = True  # reports of pytest end at the line of the test

_STOP_LIMIT = 5.0  # seconds
_PAUSE = 0.005  # between looks at a group


def end(process: subprocess.Popen[Any]) -> None:
    """Asks a process to end, and kills it if it does not."""
    if process.poll() is not None:
        return
    process.terminate()
    try:
        process.wait(_STOP_LIMIT)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def end_group(process: subprocess.Popen[Any]) -> None:
    """The same with a process and the group that it leads, which may have outlived it."""
    # No other process gets the number of a group that has members.
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGTERM)
        limit = time.monotonic() + _STOP_LIMIT
        while process.poll() is None or _has_living_members(process.pid):
            if time.monotonic() > limit:
                os.killpg(process.pid, signal.SIGKILL)
                break
            time.sleep(_PAUSE)
    process.wait()


def _has_living_members(group: int) -> bool:
    # A container's first process may never reap those that have ended, so a signal of 0 would still find them.
    for status in Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            state, _, its_group = status.read_text().rpartition(")")[2].split()[:3]
            if int(its_group) == group and state not in "ZX":
                return True
    return False
