"""Builds the library alone in release mode, installs it, and moves the installed tree away: what
the other tests use must not depend on where it was made."""

import shutil
import unittest

import package


class Build(unittest.TestCase):
    def test_builds_and_installs(self):
        off = [
            f"-DKELO_BUILD_{part}=OFF"
            for part in ("SERVICE", "APPS", "EXAMPLES", "TESTS", "BENCHMARKS", "FUZZERS")
        ]
        package.configure(
            package.SOURCE, package.BUILD, *off, "-DKELO_INSTALL=ON", "-DKELO_SANITIZE=",
            f"-DCMAKE_INSTALL_PREFIX={package.PREFIX}",
        )
        package.run("cmake", "--build", package.BUILD)
        package.fresh(package.PREFIX)
        package.run("cmake", "--install", package.BUILD)
        shutil.rmtree(package.MOVED, ignore_errors=True)
        package.PREFIX.rename(package.MOVED)


if __name__ == "__main__":
    unittest.main()
