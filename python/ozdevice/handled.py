"""How far the applications of a phone are: marks that each of their threads answers in the device root."""

from __future__ import annotations

import contextlib
import fcntl
import itertools
import os
import time
from pathlib import Path

__tracebackhide__ = True  # reports of pytest end at the line of the test

_PAUSE = 0.002  # seconds between looks at the answers
_numbers = itertools.count(1)  # of the marks of this process


def wait_until_handled(root: Path, within: float) -> list[str]:
    """Waits until applications have handled everything that was published before.

    Returns the threads that have not after `within` seconds, in words.
    """
    folder = root / "handled"
    # All marks have the same length, so that one replaces the other as a whole in the files of the threads.
    mark = b"%010d %020d" % (os.getpid(), next(_numbers))
    file = folder / f"mark-{mark.decode().replace(' ', '-')}"
    file.write_bytes(mark)
    file.replace(folder / "mark")
    end = time.monotonic() + within
    # A thread that answers a newer mark, of another test or of a scenario, has handled what came before this one.
    sufficient = {mark}
    while True:
        sufficient.add((folder / "mark").read_bytes())
        busy = sorted(each.name for each in folder.glob("[0-9]*-*") if _is_busy(each, sufficient))
        if not busy or time.monotonic() > end:
            return [_thread_text(name) for name in busy]
        time.sleep(_PAUSE)


def _is_busy(file: Path, sufficient: set[bytes]) -> bool:
    with contextlib.suppress(FileNotFoundError), file.open("rb") as answer:
        return answer.read() not in sufficient and _is_locked(answer.fileno())
    return False


def _is_locked(file: int) -> bool:
    # A thread that answers marks holds a lock on its file as long as it lives.
    try:
        fcntl.flock(file, fcntl.LOCK_SH | fcntl.LOCK_NB)
    except BlockingIOError:
        return True
    return False


def _thread_text(name: str) -> str:
    process, thread = name.split("-")
    text = f"process {process}"
    with contextlib.suppress(OSError):
        text += f" ({Path('/proc', process, 'comm').read_text().strip()})"
    return text if thread == process else f"{text}, thread {thread}"
