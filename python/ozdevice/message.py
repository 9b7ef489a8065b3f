"""The text form of the tree's messages."""

from __future__ import annotations

import base64
import json
import re
from typing import Any

_ESCAPE = re.compile(rb"\\(x[0-9A-Fa-f]{2}|.)", re.DOTALL)
_ESCAPED = {b"n": b"\n", b"t": b"\t", b"r": b"\r"}


def encode(attributes: dict[str, Any]) -> bytes:
    """Writes attributes as a message. Each value is sent as JSON."""
    lines = (f"{name}:json:{json.dumps(value)}\n" for name, value in attributes.items())
    return "".join(lines).encode()


def decode(message: bytes) -> dict[str, Any]:
    """Returns the attributes of a message without its header; ValueError for a malformed one."""
    attributes: dict[str, Any] = {}
    for line in message.decode().split("\n"):
        if not line or line.startswith(("@", "-")):
            continue
        name, qualifier, text = line.split(":", 2)
        attributes[name] = _value(qualifier, text)
    return attributes


def _value(qualifier: str, text: str) -> Any:
    if qualifier == "":
        return text
    if qualifier == "c":
        return _ESCAPE.sub(_unescape, text.encode()).decode()
    if qualifier in ("n", "json"):
        return json.loads(text)
    if qualifier == "b":
        return {"true": True, "false": False}[text]
    if qualifier == "b64":
        return base64.b64decode(text, validate=True)
    raise ValueError(f"unknown qualifier {qualifier!r}")


def _unescape(match: re.Match[bytes]) -> bytes:
    code = match.group(1)
    return bytes.fromhex(code[1:].decode()) if len(code) == 3 else _ESCAPED.get(code, code)
