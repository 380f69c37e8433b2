"""Builds once what all packages are made of, as scripts/packages does; installs it, and moves the
installed tree away: what the other tests use must not depend on where it was made. Then packs it."""

import shutil
import unittest

import package


class Build(unittest.TestCase):
    def build(self, skip_rpath):
        package.configure(
            package.SOURCE, package.BUILD, "--preset", "packages",
            f"-DCMAKE_SKIP_INSTALL_RPATH={skip_rpath}",
        )
        package.run("cmake", "--build", package.BUILD)

    def test_builds_installs_and_packs(self):
        self.build(skip_rpath="OFF")
        package.fresh(package.PREFIX)
        package.run("cmake", "--install", package.BUILD, "--prefix", package.PREFIX)
        shutil.rmtree(package.MOVED, ignore_errors=True)
        package.PREFIX.rename(package.MOVED)
        # A package's library is where the loader looks: only linking is done once more.
        self.build(skip_rpath="ON")
        package.fresh(package.DEBIAN)
        package.run("cpack", "--config", package.BUILD / "CPackConfig.cmake", "-B", package.DEBIAN)


if __name__ == "__main__":
    unittest.main()
