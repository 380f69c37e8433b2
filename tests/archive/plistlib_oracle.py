#!/usr/bin/env python3
"""Lists of every kind of value, the same ones in every run, for comparison with Python's own reader
and writer of binary property lists.

  plistlib_oracle.py write FOLDER   NAME.plist with a list, and NAME.text, which tells what is in it
  plistlib_oracle.py read FOLDER    judges the same lists as somebody else wrote them, NAME.again
"""
import datetime
import pathlib
import plistlib
import random
import sys

START = datetime.datetime(2001, 1, 1)
PIECES = ["a", "key", "'\"%\\", "\n\t ", "\0", "\u00e9", "\u4e2d", "\U0001f600", "\ufffd", "\x7f",
          "e\u0301"]  # fmt: skip


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
        return f"date({(value - START).total_seconds():.17g})"
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


def characters():
    return "".join(random.choices(PIECES, k=random.randrange(20)))


def scalar():
    bits = random.getrandbits(64)
    return random.choice([
        None, random.random() < 0.5, bits >> random.randrange(1, 64), bits | 1 << 63,
        -(bits >> random.randrange(1, 64)), bits / random.randrange(1, 1000),
        START + datetime.timedelta(seconds=random.randrange(-(10**9), 10**9) / 2),
        random.randbytes(random.randrange(40)), plistlib.UID(bits >> random.randrange(32, 64)),
        characters(),
    ])  # fmt: skip


def container(levels):
    elements = [
        container(levels - 1) if levels > 0 and random.random() < 0.3 else scalar()
        for _ in range(random.randrange(8))
    ]
    if random.random() < 0.5:
        return elements
    return {f"{at}{characters()}": element for at, element in enumerate(elements)}


random.seed(1)
LISTS = [container(4) for _ in range(300)]
# Such as need wide references and offsets.
LISTS += [list(range(1, size)) for size in (255, 256, 257, 65535, 65536, 70000)]

verb, folder = sys.argv[1], pathlib.Path(sys.argv[2])
for number, value in enumerate(LISTS):
    path = folder / str(number)
    if verb == "write":
        path.with_suffix(".text").write_text(text(value), encoding="utf-8")
        data = plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False)
        path.with_suffix(".plist").write_bytes(data)
    else:
        again = path.with_suffix(".again").read_bytes()
        found = text(plistlib.loads(again, fmt=plistlib.FMT_BINARY))
        if found != text(value):
            sys.exit(f"{number}: {text(value)}\nis read as {found}")
