"""What the package's tests share: where things lie, and how commands are run."""

import os
import pathlib
import shutil
import subprocess

SOURCE = pathlib.Path(os.environ["KELO_SOURCE"])
WORK = pathlib.Path(os.environ["KELO_WORK"])
CXX = os.environ["KELO_CXX"]
BUILD = WORK / "build"
PREFIX = WORK / "prefix"
MOVED = WORK / "moved"
LIBRARY = BUILD / "lib" / "libKeloAPI.so"


def run(*command, **options):
    """The command's output; an AssertionError with all that it said where it fails."""
    command = [str(word) for word in command]
    done = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options
    )
    assert done.returncode == 0, f"{' '.join(command)}:\n{done.stdout}"
    return done.stdout


def fresh(directory):
    """The directory, made empty."""
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    return directory


def configure(source, build, *definitions):
    """Configures a release build with this build's compiler and certificates."""
    first, second = os.environ["KELO_CERTIFICATES"].split(":")
    launcher = os.environ.get("KELO_LAUNCHER") or shutil.which("ccache")
    run(
        "cmake", "-S", source, "-B", build, "-G", "Ninja",
        "-DCMAKE_BUILD_TYPE=Release",
        f"-DCMAKE_CXX_COMPILER={CXX}",
        f"-DKELO_CERTIFICATE_1={first}",
        f"-DKELO_CERTIFICATE_2={second}",
        *([f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}"] if launcher else []),
        *definitions,
    )


def version():
    """The project's version, as its numbers."""
    text = (SOURCE / "CMakeLists.txt").read_text()
    return text.split("project(KeloAPI VERSION ")[1].split()[0].split(".")


def installed(pattern):
    """The one installed file that the pattern finds, in the moved tree."""
    found = list(MOVED.rglob(pattern))
    assert len(found) == 1, f"{pattern}: {found}"
    return found[0]
