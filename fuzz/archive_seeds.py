#!/usr/bin/env python3
"""Writes the seeds of fuzz/corpus/archive: small archives and property lists, good ones and bad ones,
with Python's own writer.

  fuzz/archive_seeds.py"""
import datetime
import pathlib
import plistlib

UID = plistlib.UID
FOLDER = pathlib.Path(__file__).parent / "corpus" / "archive"


def archive(*objects, **outermost):
    return {
        "$version": 100000,
        "$archiver": "NSKeyedArchiver",
        "$top": {"root": UID(1)},
        "$objects": ["$null", *objects],
        **outermost,
    }


def class_of(*names):
    return {"$classname": names[0], "$classes": [*names, "NSObject"]}


EVERYTHING = {
    "text": UID(3), "url": UID(4), "date": UID(7), "number": UID(9), "range": UID(10),
    "integer": -5, "real": 1.5, "flag": True, "other": UID(0), "$class": UID(2),
}  # fmt: skip
PARTS = (
    class_of("Everything"), "caf\u00e9 \U0001f600",
    {"NS.base": UID(0), "NS.relative": UID(6), "$class": UID(5)}, class_of("NSURL"),
    "https://kelo.example/a?b#c",
    {"NS.time": 521692800.123456, "$class": UID(8)}, class_of("NSDate"), 18446744073709551615,
    {"NS.special": 4, "NS.rangeval.location": UID(12), "NS.rangeval.length": UID(13),
     "$class": UID(11)},
    class_of("NSValue"), 3, 4,
)  # fmt: skip

URL_PARTS = ({"NS.base": UID(0), "NS.relative": "https://kelo.example/a", "$class": UID(4)},
             class_of("NSURL"))  # fmt: skip


def model(class_name, /, **entries):
    """A model whose texts are inline; UID(3) is a URL, UID(5) whatever follows."""
    more = entries.pop("more", ())
    return archive({**entries, "$class": UID(2)}, class_of(class_name), *URL_PARTS, *more)


SEEDS = {
    "model-channel": model(
        "KLChannel", channelId="3", name="Animals", created=datetime.datetime(2015, 6, 1),
        iconUrl=UID(3), iconRetinaUrl=UID(0), fontColorHex="ffffff", backgroundColorHex="00ff00",
        channelDescription="cats"),
    "model-entity": model(
        "KLEntity", idString="5", type="mention", title="Ann", link=" | x", range=UID(5),
        more=({"NS.special": 4, "NS.rangeval.location": 3, "NS.rangeval.length": 4,
               "$class": UID(6)}, class_of("NSValue"))),
    "model-tag": model("KLTag", tagId="5", name="#cats"),
    "model-venue": model(
        "KLVenue", foursquareVenueId="4b", name="Harbour", city="Lisbon", latitude=38.5,
        longitude=-9.25, category=UID(5),
        more=({"categoryId": "c", "shortName": "Port", "iconUrl": UID(3), "$class": UID(6)},
              class_of("KLVenueCategory"))),
    "model-loops": model("KLLoopData", count=2**64 - 1, velocity=2.5, onFire=True),
    "model-thumbnail": model("PostThumbnail", url=UID(3), width=480, height=-1),
    "model-sound": model("SoundboardSound", soundUrl=UID(3), name="Boing", soundId="7",
                         sourcePostId="9", featured=True),
    "everything": archive(EVERYTHING, *PARTS),
    "everything-empty": archive({"$class": UID(2)}, class_of("Everything")),
    "everything-nulls": archive(
        {"text": UID(0), "url": UID(0), "date": UID(0), "number": UID(0), "$class": UID(2)},
        class_of("Everything"),
    ),
    "everything-inline": archive(
        {"text": "a", "date": datetime.datetime(2020, 1, 2), "number": 1.5, "flag": 1,
         "integer": True, "real": 7, "$class": UID(2)},
        class_of("Everything"),
    ),
    "everything-odd": archive(
        {"text": UID(3), "url": UID(4), "date": UID(5), "number": UID(6), "range": UID(7),
         "other": UID(1), "$class": UID(2)},
        class_of("Everything"),
        {"NS.bytes": b"caf\xc3\xa9", "$class": UID(8)},
        {"NS.base": UID(4), "NS.relative": "x", "$class": UID(9)},
        datetime.datetime(1999, 1, 1),
        False,
        {"NS.special": 1, "$class": UID(10)},
        class_of("NSMutableString", "NSString"),
        class_of("NSURL"),
        class_of("NSValue"),
    ),
    "everything-base": archive(
        {"url": UID(3), "text": UID(6), "$class": UID(2)},
        class_of("Everything"),
        {"NS.base": UID(4), "NS.relative": "../c?d#e", "$class": UID(5)},
        {"NS.base": UID(0), "NS.relative": "https://kelo.example/a/b", "$class": UID(5)},
        class_of("NSURL"),
        {"NS.string": "a", "$class": UID(7)},
        class_of("NSString"),
    ),
    "everything-dates": archive(
        {"date": UID(3), "number": -1, "$class": UID(2)},
        class_of("Everything"),
        {"NS.time": 1e300, "$class": UID(4)},
        class_of("NSDate"),
    ),
    "nodes": archive(
        {"name": UID(3), "left": UID(4), "right": UID(4), "$class": UID(2)},
        class_of("Node"),
        "root",
        {"name": UID(3), "left": UID(1), "right": UID(0), "$class": UID(5)},
        class_of("SpecialNode", "Node"),
    ),
    "nodes-deep": archive(
        *({"name": "n", "left": UID(at + 2), "right": UID(at + 2), "$class": UID(102)}
          for at in range(101)),
        class_of("Node"),
    ),
    "wrong-class": archive({"$class": UID(1)}),
    "wrong-root": archive(class_of("Node"), **{"$top": {"root": UID(9)}}),
    "wrong-version": archive(EVERYTHING, *PARTS, **{"$version": 1}),
    "no-archive": {"a": [1, 2.5, b"x", "y", None, True, datetime.datetime(2001, 1, 1), UID(70000)]},
    "integers": [0, 255, 256, 65535, 65536, 2**32, -1, -(2**63), 2**63 - 1, 2**64 - 1],
    "nested": [[[[[[[[]]]], {"a": {"b": {}}}]]]],
    "long": {"text": "x" * 300, "data": b"y" * 300, "list": list(range(300))},
}

FOLDER.mkdir(parents=True, exist_ok=True)
for name, value in SEEDS.items():
    data = plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False)
    (FOLDER / name).write_bytes(data)
    print(f"{name}: {len(data)} bytes")
everything = (FOLDER / "everything").read_bytes()
(FOLDER / "truncated").write_bytes(everything[:-40])
(FOLDER / "huge-count").write_bytes(everything[:-24] + b"\xff" * 8 + everything[-16:])
