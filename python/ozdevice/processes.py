"""The end of processes that the package has started."""

from __future__ import annotations

import os
import signal
import subprocess
from collections.abc import Callable
from typing import Any

__tracebackhide__ = True  # reports of pytest end at the line of the test

_STOP_LIMIT = 5.0  # seconds


def end(process: subprocess.Popen[Any], send: Callable[[int, int], None] = os.kill) -> None:
    """Asks a process to end, and kills it if it does not; `send` sends a signal to it, or to its group too."""
    if process.poll() is not None:
        return
    send(process.pid, signal.SIGTERM)
    try:
        process.wait(_STOP_LIMIT)
    except subprocess.TimeoutExpired:
        send(process.pid, signal.SIGKILL)
        process.wait()
