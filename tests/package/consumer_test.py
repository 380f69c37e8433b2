"""A host of a few lines takes the library in, builds and runs, in each of the usual ways."""

import pathlib
import re
import unittest

import package

SAYS = "1 post read"


class InstalledConsumer(unittest.TestCase):
    def test_find_package(self):
        self.assertEqual(package.last_line(package.built_with_cmake(package.MOVED)), SAYS)

    def test_package_asks_for_no_other(self):
        folder = package.installed("KeloAPIConfig.cmake").parent
        texts = "".join(path.read_text() for path in folder.glob("*.cmake"))
        self.assertNotRegex(texts, "(?i)find_dependency|CURL::|OpenSSL::|simdjson|uriparser")

    def test_documentation_is_there(self):
        for name in ("architecture.md", "objective-c.md"):
            self.assertGreater(package.installed(name).stat().st_size, 0)

    def asks_for(self, version):
        project = package.fresh(package.WORK / "asked_version")
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(asked LANGUAGES CXX)\n"
            f"find_package(KeloAPI {version} CONFIG REQUIRED)\n"
        )
        package.configure(project, project / "build", f"-DCMAKE_PREFIX_PATH={package.MOVED}")

    def test_version_stands_for_what_the_soname_does(self):
        major, minor, _ = package.version()
        self.asks_for(f"{major}.{minor}")
        others = [f"{int(major) + 1}.0", f"{major}.{int(minor) + 1}"]
        if major == "0":
            others.append(f"{major}.{int(minor) - 1}")
        for other in others:
            with self.subTest(other), self.assertRaisesRegex(AssertionError, re.escape(other)):
                self.asks_for(other)

    def test_pkg_config(self):
        self.assertEqual(package.last_line(package.built_with_pkg_config(package.MOVED)), SAYS)


class ObjectiveCConsumer(unittest.TestCase):
    """In the other language, where the machine has what it takes."""

    def setUp(self):
        if not list(package.MOVED.rglob("libKeloAPIObjC.so")):
            self.skipTest("the Objective-C face is not built")

    def test_pkg_config(self):
        made = package.built_in_objective_c(package.MOVED)
        self.assertEqual(package.last_line(made), "1 of 3 read")

    def test_find_package(self):
        project = package.fresh(package.WORK / "find_objective_c")
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(objc LANGUAGES CXX)\n"
            "find_package(KeloAPI CONFIG REQUIRED)\n"
            "get_target_property(path KeloAPI::KeloAPIObjC IMPORTED_LOCATION_RELEASE)\n"
            'message(STATUS "found ${path}")\n'
        )
        said = package.run(
            "cmake", "-S", project, "-B", project / "build",
            f"-DCMAKE_PREFIX_PATH={package.MOVED}",
        )
        self.assertRegex(said, "found .*libKeloAPIObjC.so")


class SubdirectoryConsumer(unittest.TestCase):
    def test_add_subdirectory(self):
        build = package.WORK / "add_subdirectory"
        package.configure(
            package.CONSUMER, build, f"-DKELO_SOURCE_DIR={package.SOURCE}", *package.QUICKLY
        )
        package.run("cmake", "--build", build, "--target", "consumer")
        self.assertEqual(package.last_line(build / "consumer"), SAYS)

    def test_brings_nothing_but_the_library(self):
        targets = package.run(
            "ninja", "-C", package.WORK / "add_subdirectory", "-t", "targets", "all"
        )
        linked = re.findall(r"(?m)^(\S+): CXX_\w+_LINKER__", targets)
        names = {pathlib.Path(path).name.split(".so")[0] for path in linked}
        self.assertEqual(names, {"consumer", "libKeloAPI"})


if __name__ == "__main__":
    unittest.main()
