"""What the package's tests share: where things lie, how commands are run, and how a host takes the
installed library in."""

import os
import pathlib
import shlex
import shutil
import subprocess

SOURCE = pathlib.Path(os.environ["KELO_SOURCE"])
WORK = pathlib.Path(os.environ["KELO_WORK"])
CXX = os.environ["KELO_CXX"]
OBJC = os.environ.get("OBJC", "gcc")
CONSUMER = SOURCE / "tests" / "package" / "consumer"
BUILD = WORK / "build"
PREFIX = WORK / "prefix"
MOVED = WORK / "moved"
DEBIAN = WORK / "debian"
LIBRARY = BUILD / "lib" / "libKeloAPI.so"
# Where only the way matters in which the sources are taken in.
QUICKLY = ("-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=16")


def run(*command, **options):
    """The command's output; an AssertionError with all that it said where it fails."""
    command = [str(word) for word in command]
    done = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options
    )
    assert done.returncode == 0, f"{' '.join(command)}:\n{done.stdout}"
    return done.stdout


def last_line(program, **options):
    """What the host itself says; the library's trace of its request stands before it."""
    return run(program, **options).splitlines()[-1]


def fresh(directory):
    """The directory, made empty."""
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    return directory


def configure(source, build, *definitions):
    """Configures a release build with this build's compiler."""
    launcher = os.environ.get("KELO_LAUNCHER") or shutil.which("ccache")
    launchers = [f"-DCMAKE_{language}_COMPILER_LAUNCHER={launcher}" for language in ("CXX", "OBJCXX")]
    run(
        "cmake", "-S", source, "-B", build, "-G", "Ninja",
        "-DCMAKE_BUILD_TYPE=Release",
        f"-DCMAKE_CXX_COMPILER={CXX}",
        *(launchers if launcher else []),
        *definitions,
        cwd=source,
    )


def version():
    """The project's version, as its numbers."""
    text = (SOURCE / "CMakeLists.txt").read_text()
    return text.split("project(KeloAPI VERSION ")[1].split()[0].split(".")


def installed(pattern, tree=MOVED):
    """The one installed file that the pattern finds."""
    found = list(tree.rglob(pattern))
    assert len(found) == 1, f"{pattern}: {found}"
    return found[0]


def built_with_cmake(tree, *definitions):
    """A host that finds the library in the tree with CMake."""
    build = fresh(WORK / f"find_package_{tree.name}")
    configure(CONSUMER, build, f"-DCMAKE_PREFIX_PATH={tree}", *definitions)
    run("cmake", "--build", build)
    return build / "consumer"


def pkg_config(tree, package, *arguments):
    """What pkg-config says of a package in the tree, in words."""
    folder = installed("kelo-api.pc", tree).parent
    environment = {**os.environ, "PKG_CONFIG_PATH": str(folder)}
    return shlex.split(run("pkg-config", *arguments, package, env=environment))


def built_with_pkg_config(tree, *arguments, source=CONSUMER / "main.cpp"):
    """A host that is compiled with what pkg-config says."""
    made = fresh(WORK / f"pkg_config_{tree.name}") / "consumer"
    flags = pkg_config(tree, "kelo-api", "--cflags", "--libs", *arguments)
    run(CXX, "-std=c++20", source, "-o", made, *flags, f"-Wl,-rpath,{library_folder(tree)}")
    return made


def built_in_objective_c(tree, *arguments):
    """The same in Objective-C: pkg-config's flags are all that it is compiled and linked with."""
    made = fresh(WORK / f"objective_c_{tree.name}") / "consumer"
    flags = pkg_config(tree, "kelo-api-objc", "--cflags", "--libs", *arguments)
    run(OBJC, "-Wall", "-Wextra", "-Werror", CONSUMER / "main.m", "-o", made, *flags,
        f"-Wl,-rpath,{library_folder(tree)}")
    assert not any("GNUstep/Library" in flag for flag in flags)  # of whoever built the package
    return made


def library_folder(tree):
    return pathlib.Path(pkg_config(tree, "kelo-api", "--variable=libdir")[0]).resolve()
