#!/usr/bin/env python3
"""Judges what the library's files include.

usage: check_includes.py FOLDER PUBLIC_HEADERS

FOLDER is KeloAPI/, PUBLIC_HEADERS a file that lists the public headers, one a line. Prints one line
for each fault and ends with 1 when there is one:
- a public header includes the C++20 standard library and public headers, nothing else;
- includes point downwards from room to room, but for the sources named below;
- headers form no circle;
- libcurl and OpenSSL are the business of platform/curl alone.
"""
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

RANKS = {
    "platform": 0, "parsing": 1, "model": 2, "api": 3,
    "endpoints": 4, "files": 4, "loops": 4, "fakes": 4,
}  # fmt: skip
# Models that rooms below their own need: they stand between parsing and the models.
LEAVES = {"loops/LoopData.hpp": 1.5, "model/KLChannel.hpp": 1.5, "model/KLRekelo.hpp": 1.5}
# Sources that include a leaf above their own room, whose header only names the leaf's class.
MAKERS = {"parsing/KLPagingMetadata.cpp": "model/KLChannel.hpp"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"][^>"]+[>"])', re.MULTILINE)
PREFIX = "KeloAPI/"


def includes_of(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


def rank(name):
    return LEAVES.get(name, RANKS.get(name.split("/")[0]))


def points_downwards(source, target):
    room = source.split("/")[0]
    if target.split("/")[0] == room or MAKERS.get(source) == target:
        return True
    # A leaf's own source file stands where the leaf stands.
    leaf = str(Path(source).with_suffix(".hpp"))
    height = LEAVES.get(leaf, RANKS.get(room))
    return rank(target) is not None and height is not None and rank(target) < height


def circle(graph):
    """A circle in the graph as a list of names, or none."""
    done, path = set(), []

    def visit(name):
        if name in path:
            return path[path.index(name):] + [name]
        if name in done:
            return None
        path.append(name)
        for target in graph.get(name, ()):
            found = visit(target)
            if found:
                return found
        path.pop()
        done.add(name)
        return None

    for name in sorted(graph):
        found = visit(name)
        if found:
            return found
    return None


def faults(folder, public):
    found = []
    graph = {}
    files = sorted(p for p in folder.rglob("*") if p.suffix in (".hpp", ".cpp"))
    names = {str(p.relative_to(folder)) for p in files}
    for name in sorted(set(public) - names):
        found.append(f"{name}: listed as public, and not there")
    for path in files:
        name = str(path.relative_to(folder))
        own = []
        for include in includes_of(path):
            bare = include[1:-1]
            if include[0] == '"':
                found.append(f"{name}: {include} is not included by its whole name")
            elif bare.startswith(PREFIX):
                target = bare[len(PREFIX):]
                if target == "Settings.hpp":  # made by the build
                    if path.suffix == ".hpp":
                        found.append(f"{name}: the build's settings are no header's business")
                    continue
                own.append(target)
                if target not in names:
                    found.append(f"{name}: {include} does not exist")
                elif not points_downwards(name, target):
                    found.append(f"{name}: {include} points upwards")
                elif name in public and target not in public:
                    found.append(f"{name}: public, and includes {include}, which is not")
            elif name in public and bare not in STANDARD:
                found.append(f"{name}: public, and includes {include}")
            elif re.match(r"(curl|openssl)/", bare) and not name.startswith("platform/curl/"):
                found.append(f"{name}: {include} belongs to platform/curl")
        if path.suffix == ".hpp":
            graph[name] = own
            if "#pragma once" not in path.read_text(encoding="utf-8"):
                found.append(f"{name}: has no include guard")
    around = circle(graph)
    if around:
        found.append("circle: " + " -> ".join(around))
    return found


def main():
    folder = Path(sys.argv[1]).resolve()
    public = [line.strip() for line in open(sys.argv[2], encoding="utf-8") if line.strip()]
    public = [str(Path(p).relative_to(folder)) if Path(p).is_absolute() else p for p in public]
    found = faults(folder, public)
    for fault in found:
        print(fault)
    print(f"{len(public)} public headers, {len(found)} faults")
    return 1 if found or not public else 0


if __name__ == "__main__":
    sys.exit(main())
