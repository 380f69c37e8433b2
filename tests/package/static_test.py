"""The static library: what it needs comes with it, nothing of it is lost in linking, and a host's own
shared library does not pass it on."""

import re
import shutil
import subprocess
import unittest

import package

BUILD = package.WORK / "static"
PREFIX = package.WORK / "static_prefix"


class Static(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        off = [f"-DKELO_BUILD_{part}=OFF" for part in ("SERVICE", "APPS", "EXAMPLES", "TESTS")]
        package.configure(
            package.SOURCE, BUILD, "-DBUILD_SHARED_LIBS=OFF", "-DCMAKE_UNITY_BUILD=ON",
            "-DCMAKE_UNITY_BUILD_BATCH_SIZE=16", *off,
            f"-DCMAKE_INSTALL_PREFIX={PREFIX}",
        )
        package.run("cmake", "--build", BUILD)
        package.fresh(PREFIX)
        package.run("cmake", "--install", BUILD)

    def assert_stands_alone(self, program, says):
        self.assertEqual(package.last_line(program), says)
        needed = package.run("readelf", "--dynamic", "--wide", program)
        self.assertNotIn("libKeloAPI", needed)

    def test_find_package(self):
        self.assert_stands_alone(package.built_with_cmake(PREFIX), "1 post read")

    def test_pkg_config(self):
        made = package.built_with_pkg_config(PREFIX, "--static")
        self.assert_stands_alone(made, "1 post read")

    def test_fetch_content(self):
        if not (package.SOURCE / ".git").exists():
            self.skipTest("the sources are not a checkout, so nothing can be cloned")
        clone = package.fresh(package.WORK / "clone")
        package.run("git", "clone", "--quiet", package.SOURCE, clone)
        package.run("git", "-C", clone, "tag", "fetched")
        build = package.fresh(package.WORK / "fetch_content")
        package.configure(
            package.CONSUMER, build, f"-DKELO_REPOSITORY=file://{clone}", "-DKELO_VERSION=fetched",
            "-DBUILD_SHARED_LIBS=OFF", *package.QUICKLY,
        )
        package.run("cmake", "--build", build, "--target", "consumer")
        fetched = build / "_deps" / "keloapi-src"
        self.assertEqual(
            package.run("git", "-C", fetched, "rev-parse", "HEAD"),
            package.run("git", "-C", clone, "rev-parse", "fetched^{commit}"),
        )
        self.assert_stands_alone(build / "consumer", "1 post read")

    def test_parks_its_threads_at_exit(self):
        source = package.CONSUMER / "exits.cpp"
        made = package.built_with_pkg_config(PREFIX, "--static", source=source)
        for _ in range(50):
            ended = subprocess.run([made], stdout=subprocess.DEVNULL, timeout=60, check=False)
            self.assertEqual(ended.returncode, 7)

    def test_is_not_exported_by_a_host_that_has_taken_it_in(self):
        made = package.fresh(package.WORK / "plugin") / "plugin.so"
        flags = package.pkg_config(PREFIX, "kelo-api", "--static", "--cflags", "--libs")
        package.run(package.CXX, "-std=c++20", "-shared", "-fPIC", package.CONSUMER / "main.cpp",
                    "-o", made, *flags)
        exported = package.run("nm", "-DC", "--defined-only", made)
        self.assertIn(" main", exported)
        self.assertEqual(re.findall(r"(?m)^\S+ [TDBR] (KeloAPI::.*)$", exported), [])

    def test_objective_c_with_pkg_config(self):
        self.skip_without_objective_c()
        made = package.built_in_objective_c(PREFIX, "--static")
        self.assert_stands_alone(made, "1 of 3 read")

    def test_objective_c_with_cmake(self):
        self.skip_without_objective_c()
        project = package.fresh(package.WORK / "static_objective_c")
        flags = " ".join(package.pkg_config(PREFIX, "kelo-api-objc", "--cflags-only-other"))
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(consumer LANGUAGES CXX OBJC)\n"
            "find_package(KeloAPI CONFIG REQUIRED)\n"
            f"add_executable(consumer {package.CONSUMER / 'main.m'})\n"
            f"target_compile_options(consumer PRIVATE {flags})\n"
            "target_link_libraries(consumer PRIVATE KeloAPI::KeloAPIObjC gnustep-base objc)\n"
        )
        package.configure(project, project / "build", f"-DCMAKE_PREFIX_PATH={PREFIX}",
                          f"-DCMAKE_OBJC_COMPILER={shutil.which(package.OBJC)}")
        package.run("cmake", "--build", project / "build")
        self.assert_stands_alone(project / "build/consumer", "1 of 3 read")

    def skip_without_objective_c(self):
        if not list(PREFIX.rglob("libKeloAPIObjC.a")):
            self.skipTest("the Objective-C face is not built")


if __name__ == "__main__":
    unittest.main()
