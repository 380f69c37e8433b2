#!/usr/bin/env python3
"""Judges what the library's files include.

usage: check_includes.py FOLDER

FOLDER is KeloAPI/. Prints one line for each fault and ends with 1 when there is one:
- a header outside the folders internal/ is public: it includes the C++20 standard library and public
  headers, nothing else;
- includes point downwards from room to room;
- headers form no circle;
- libcurl and OpenSSL are the business of the room curl alone;
- what a system has beyond POSIX is the business of base/internal/System.cpp alone;
- KeloAPI.hpp includes every public header but async.hpp, which no other includes.
"""
import graphlib
import re
import sys
from pathlib import Path

STANDARD = set(
    """algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list
    locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges
    ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack
    stdexcept stop_token streambuf string string_view strstream syncstream system_error thread tuple
    type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef
    cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype""".split()
)

# Of POSIX what the library uses, and flock's header, which every system has beside it.
POSIX = set(
    """arpa/inet dirent fcntl iconv netinet/in pthread sys/file sys/resource sys/socket sys/stat
    sys/types unistd""".split()
)
# The libraries below this one.
LIBRARIES = re.compile(r"(curl|openssl|uriparser)/|(simdjson|zlib)\.h$")
SYSTEM = "base/internal/System.cpp"

# The rooms, from the lowest up. Rooms of the same height do not know one another.
HEIGHTS = {
    "base": 0, "queues": 1, "json": 2, "archive": 3, "http": 3, "curl": 4, "parsing": 4,
    "model": 5, "api": 6, "endpoints": 7, "files": 7, "fakes": 7,
}  # fmt: skip
ALL = "KeloAPI.hpp"
# Made of everything, and included by nothing.
OPTIONAL = "async.hpp"

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"][^>"]+[>"])', re.MULTILINE)
PREFIX = "KeloAPI/"


def includes_of(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


def is_public(name):
    return name.endswith(".hpp") and "/internal/" not in name


def points_downwards(source, target):
    if source == OPTIONAL:
        return target == ALL
    if source == ALL or target in (ALL, OPTIONAL):
        return source == ALL and target != OPTIONAL
    source, target = source.split("/")[0], target.split("/")[0]
    return source == target or HEIGHTS[target] < HEIGHTS[source]


def circle(graph):
    """A circle in the graph as a list of names, or none."""
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as error:
        return error.args[1]
    return None


def faults_of(path, name, names):
    """The faults of one file, and the headers of the library that it includes."""
    found, own = [], []
    for include in includes_of(path):
        bare = include[1:-1]
        if include[0] == '"':
            found.append(f"{name}: {include} is not included by its whole name")
        elif bare == PREFIX + "Settings.hpp":  # made by the build
            if path.suffix == ".hpp":
                found.append(f"{name}: the build's settings are no header's business")
        elif bare.startswith(PREFIX):
            target = bare[len(PREFIX):]
            own.append(target)
            if target not in names:
                found.append(f"{name}: {include} does not exist")
            elif not points_downwards(name, target):
                found.append(f"{name}: {include} points upwards")
            elif is_public(name) and not is_public(target):
                found.append(f"{name}: public, and includes {include}, which is not")
        elif is_public(name) and bare not in STANDARD:
            found.append(f"{name}: public, and includes {include}")
        elif re.match(r"(curl|openssl)/", bare) and not name.startswith("curl/"):
            found.append(f"{name}: {include} belongs to the room curl")
        elif not (bare in STANDARD or LIBRARIES.match(bare) or bare.removesuffix(".h") in POSIX
                  or name == SYSTEM):
            found.append(f"{name}: {include} is not of POSIX and belongs into {SYSTEM}")
    if path.suffix == ".hpp" and "#pragma once" not in path.read_text(encoding="utf-8"):
        found.append(f"{name}: has no include guard")
    return found, own


def faults(folder):
    files = {str(p.relative_to(folder)): p for p in sorted(folder.rglob("*.[ch]pp"))}
    lost = [name for name in files if name not in (ALL, OPTIONAL) and name.split("/")[0] not in HEIGHTS]
    if lost:
        return [f"{name}: stands in no room" for name in lost]
    found, graph = [], {}
    for name, path in files.items():
        own_faults, own = faults_of(path, name, files)
        found += own_faults
        if path.suffix == ".hpp":
            graph[name] = own
    for name in files:
        if is_public(name) and name not in graph[ALL] + [ALL, OPTIONAL]:
            found.append(f"{ALL}: does not include {name}")
    around = circle(graph)
    if around:
        found.append("circle: " + " -> ".join(around))
    return found


def main():
    found = faults(Path(sys.argv[1]).resolve())
    print("\n".join(found + [f"{len(found)} faults"]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
