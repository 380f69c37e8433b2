#!/usr/bin/env python3
"""Counts what noise plays no part in: the library's size, and what a call costs.

    benchmarks/counts.py BUILD_FOLDER

Prints a line for each figure, with its bound where it has one; fails where a bound is missed.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

CALLS = 5000  # of one row of bench-calls


def output_of(*command):
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}:\n{done.stdout}")
    return done.stdout


def stripped_size(library):
    with tempfile.NamedTemporaryFile() as copy:
        output_of("strip", "-o", copy.name, library)
        return os.path.getsize(copy.name)


def relocations(library):
    return len(re.findall(r"R_\w+_", output_of("readelf", "-rW", library)))


def exported_names(library):
    return len(output_of("nm", "-D", "--defined-only", library).splitlines())


def one_row(program, client):
    """Sequential calls over HTTP/2, once."""
    return (program, f"--benchmark_filter=calls/{client}/1/", "--benchmark_repetitions=1",
            "--benchmark_min_time=0.001")


def instructions(program, client):
    tool = ("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null")
    counted = re.search(r"refs:\s+([\d,]+)", output_of(*tool, *one_row(program, client)))
    return int(counted[1].replace(",", ""))


def futex_calls(program):
    table = output_of("strace", "-f", "-c", "-e", "trace=futex", *one_row(program, "http2"))
    # Share, seconds, microseconds a call, calls, errors where there were any, and the name.
    return int(re.search(r"^(.*) futex$", table, re.MULTILINE)[1].split()[3])


def main():
    folder = pathlib.Path(sys.argv[1])
    library = str((folder / "lib/libKeloAPI.so").resolve())
    calls = str(folder / "bin/bench-calls")
    compared = instructions(calls, "http2") / instructions(calls, "http2ByCurl")
    figures = [("stripped bytes", stripped_size(library), 1_100_000),
               ("relocations", relocations(library), None),
               ("exported names", exported_names(library), None),
               ("instructions of a call/curl", round(compared, 2), 1.35),
               ("futex calls of a call", round(futex_calls(calls) / CALLS, 1), 5)]
    missed = False
    for name, value, bound in figures:
        held = bound is None or value <= bound
        missed = missed or not held
        verdict = "" if bound is None else f" {bound} {'ok' if held else 'SHORT'}"
        print(f"count {name} {value}{verdict}")
    sys.exit(1 if missed else 0)


main()
