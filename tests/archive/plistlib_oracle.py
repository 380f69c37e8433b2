#!/usr/bin/env python3
"""Reads every NAME.plist of a folder with Python's own reader, and leaves beside it NAME.text, which
tells what is in it, and NAME.again, which holds the same as Python's own writer writes it."""
import datetime
import pathlib
import plistlib
import sys


def text(value):
    if value is None:
        return "null"
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return str(value)
    if isinstance(value, float):
        return f"real({value:.17g})"
    if isinstance(value, datetime.datetime):
        seconds = (value - datetime.datetime(2001, 1, 1)).total_seconds()
        return f"date({seconds:.17g})"
    if isinstance(value, bytes):
        return f"data({value.hex().upper()})"
    if isinstance(value, str):
        characters = "".join(
            chr(byte) if 0x20 <= byte < 0x7F and byte not in b"'%" else f"%{byte:02X}"
            for byte in value.encode("utf-8")
        )
        return f"'{characters}'"
    if isinstance(value, plistlib.UID):
        return f"UID({value.data})"
    if isinstance(value, list):
        return f"[{', '.join(text(element) for element in value)}]"
    return "{" + ", ".join(f"{text(key)}: {text(element)}" for key, element in value.items()) + "}"


for path in pathlib.Path(sys.argv[1]).glob("*.plist"):
    value = plistlib.loads(path.read_bytes(), fmt=plistlib.FMT_BINARY)
    path.with_suffix(".text").write_text(text(value), encoding="utf-8")
    again = plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False)
    path.with_suffix(".again").write_bytes(again)
