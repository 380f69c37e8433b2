"""The Debian packages: what they hold and ask for, what lintian says of them, and hosts and programs
that work with nothing but what they bring."""

import os
import re
import subprocess
import unittest

import package

ROOT = package.WORK / "unpacked"
TREE = ROOT / "usr"
VERSION = ".".join(package.version())
SONAME = ".".join(package.version()[:2])
LIBRARY, OBJC = f"libkeloapi{SONAME}", f"libkeloapi-objc{SONAME}"


def packages():
    return {path.name.split("_")[0]: path for path in package.DEBIAN.glob("*.deb")}


def field(name, wanted):
    return package.run("dpkg-deb", "--field", packages()[name], wanted).strip()


def files(name):
    """The files of a package, but for its documents."""
    listed = package.run("dpkg-deb", "--contents", packages()[name]).splitlines()
    paths = [line.split(" -> ")[0].split()[5].removeprefix(".") for line in listed]
    return [path for path in paths if path[-1] != "/" and "/share/doc/" not in path]


def control(name, file):
    return package.run("dpkg-deb", "--info", packages()[name], file)


class Debian(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        package.fresh(ROOT)
        for path in packages().values():
            package.run("dpkg-deb", "--extract", path, ROOT)
        cls.library = next(TREE.rglob("libKeloAPI.so"))
        cls.environment = {**os.environ, "LD_LIBRARY_PATH": str(cls.library.parent)}

    def test_are_those_that_are_promised(self):
        wanted = {LIBRARY, "libkeloapi-dev", "kelo-tools"}
        if list(package.MOVED.rglob("libKeloAPIObjC.so")):
            wanted |= {OBJC, "libkeloapi-objc-dev"}
        self.assertEqual(set(packages()), wanted)
        for name in wanted:
            with self.subTest(name):
                self.assertEqual(field(name, "Version"), f"{VERSION}-1")
                if name != LIBRARY:
                    self.assertIn(f"(= {VERSION}-1)", field(name, "Depends"))

    def test_lintian_finds_no_errors(self):
        print(package.run("lintian", "--fail-on", "error", *packages().values()))

    def test_library_holds_nothing_that_another_version_holds(self):
        names = sorted(os.path.basename(path) for path in files(LIBRARY))
        self.assertEqual(names, [f"libKeloAPI.so.{SONAME}", f"libKeloAPI.so.{VERSION}"])

    def test_library_asks_for_what_it_loads(self):
        wanted = {field.split()[0] for field in field(LIBRARY, "Depends").split(", ")}
        self.assertEqual(wanted, {"libc6", "libcurl4", "libgcc-s1", "libsimdjson14", "libssl3",
                                  "libstdc++6", "liburiparser1", "zlib1g"})

    def test_symbols_are_all_that_the_library_exports(self):
        listed = control(LIBRARY, "symbols").splitlines()
        self.assertEqual(listed[0], f"libKeloAPI.so.{SONAME} {LIBRARY}")
        exported = package.run("nm", "-D", "--defined-only", self.library).splitlines()
        names = {line.split()[2] for line in exported}
        self.assertGreater(len(names), 100)
        self.assertEqual(set(listed[1:]), {f" {name}@Base {VERSION}" for name in names})
        self.assertIn("ldconfig", control(LIBRARY, "triggers"))

    def test_cmake_and_pkg_config_find_the_library(self):
        for made in (package.built_with_cmake(TREE), package.built_with_pkg_config(TREE)):
            self.assertEqual(package.last_line(made), "1 post read")

    def test_pkg_config_finds_the_objective_c_library(self):
        if OBJC not in packages():
            self.skipTest("the Objective-C face is not built")
        made = package.built_in_objective_c(TREE)
        self.assertEqual(package.last_line(made, env=self.environment), "1 of 3 read")

    def test_library_pins_no_certificates(self):
        source = package.fresh(package.WORK / "pins") / "main.cpp"
        source.write_text("#include <KeloAPI/KeloAPI.hpp>\n#include <cstdio>\n"
                          'int main() { std::printf("%zu pins\\n", '
                          "KeloAPI::Certificates::chain().size()); }\n")
        made = package.built_with_pkg_config(TREE, source=source)
        self.assertEqual(package.last_line(made), "0 pins")

    def test_programs_work(self):
        """A feed from kelo-service to kelo, over a certificate that did not exist before."""
        home = package.fresh(package.WORK / "home")
        environment = {**self.environment, "HOME": str(home), "LC_ALL": "C.UTF-8",
                       "XDG_STATE_HOME": str(home / "state"), "XDG_DATA_HOME": str(home / "data")}
        programs = TREE / "bin"
        service = subprocess.Popen([programs / "kelo-service", "--port", "0", "--exit-with-parent"],
                                   env=environment, stdout=subprocess.PIPE, text=True)
        try:
            address = None
            for line in service.stdout:
                if address := re.search(r"listening on https://(\S+)", line):
                    break
            environment["KELO_HOST"] = address[1]
            said = package.run(programs / "kelo", "timeline", "popular", env=environment)
        finally:
            service.kill()
            service.communicate()
        self.assertGreater(len(said.splitlines()), 3)

    def test_manuals_and_completions(self):
        listed = "\n".join(files("kelo-tools"))
        for path in ("man/man1/kelo.1.gz", "man/man1/kelo-service.1.gz", "zsh/vendor-completions/_kelo",
                     "bash-completion/completions/kelo", "fish/vendor_completions.d/kelo.fish"):
            self.assertIn(f"/usr/share/{path}", listed)
        manual = package.run("zcat", TREE / "share/man/man1/kelo-service.1.gz")
        options = re.findall(r" --([a-z-]+)", package.run(
            TREE / "bin/kelo-service", "--help", env=self.environment))
        self.assertGreater(len(options), 10)
        for option in options:
            self.assertIn("\\-\\-" + option.replace("-", "\\-"), manual)

    def test_nothing_has_a_search_path_or_debug_information(self):
        for path in [*(TREE / "bin").iterdir(), *self.library.parent.glob("*.so.*.*.*")]:
            with self.subTest(path.name):
                sections = package.run("readelf", "--dynamic", "--sections", "--wide", path)
                self.assertIn(".dynsym", sections)
                self.assertNotRegex(sections, r"RUNPATH|RPATH|\.debug_|\.symtab")


if __name__ == "__main__":
    unittest.main()
