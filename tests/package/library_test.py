"""What the installed headers show to the compiler, and the release library to the linker and the
loader."""

import os
import re
import shutil
import unittest

import package

# Demangled names of what belongs to KeloAPI: its functions and data, and what the compiler makes of
# its classes.
OURS = re.compile(
    r"(typeinfo for |typeinfo name for |vtable for |VTT for |construction vtable for "
    r"|non-virtual thunk to |virtual thunk to )?KeloAPI::"
)

# What the library may load: its stated dependencies and the compiler's run time.
NEEDED = {
    "libcurl.so.4", "libssl.so.3", "libcrypto.so.3", "libsimdjson.so.14", "liburiparser.so.1",
    "libz.so.1", "libstdc++.so.6", "libgcc_s.so.1", "libm.so.6", "libc.so.6",
}

MOST_BYTES = 1_100_000


def dynamic(tag):
    """The values of one tag of the library's dynamic section."""
    lines = package.run("readelf", "--dynamic", "--wide", package.LIBRARY)
    return re.findall(rf"\({tag}\).*\[(.*)\]", lines)


def initialiser_sections(path):
    """The sections of an object file through which code would run at load time."""
    sections = package.run("readelf", "--section-headers", "--wide", path)
    return re.findall(r"\s(\.(?:preinit_array|init_array|ctors)\S*)", sections)


class Library(unittest.TestCase):
    def test_installs_all_public_headers_and_no_others(self):
        # It includes every public header; that each compiles alone is shown before installing.
        everything = package.installed("KeloAPI/KeloAPI.hpp")
        folder = everything.parent
        headers = list(folder.rglob("*.hpp"))
        self.assertGreater(len(headers), 40)
        self.assertEqual([header for header in headers if "internal" in header.parts], [])
        package.run(
            package.CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic",
            "-Werror", f"-I{folder.parent}", "-include", everything, "-x", "c++", os.devnull,
        )

    def test_exports_its_own_names_and_none_of_its_machinery(self):
        exported = package.run("nm", "-DC", "--defined-only", package.LIBRARY)
        names = [line.split(maxsplit=2)[2] for line in exported.splitlines()]
        self.assertGreater(len(names), 100)
        self.assertEqual([name for name in names if not OURS.match(name)], [])
        for name in ("KeloAPI::TimelineEndpoint::create", "KeloAPI::MainQueue::main()",
                     "typeinfo for KeloAPI::JsonParseError", "vtable for KeloAPI::KLWatchPost"):
            self.assertIn(name, exported)
        self.assertNotRegex(exported, "(?i)curl|openssl|simdjson|uriparser")

    def test_is_small(self):
        stripped = package.WORK / "stripped.so"
        package.run("strip", "-o", stripped, package.LIBRARY)
        size = stripped.stat().st_size
        print(f"stripped: {size} bytes")
        self.assertLessEqual(size, MOST_BYTES)

    def test_runs_nothing_at_load_time(self):
        # Several sources are compiled together.
        units = list((package.BUILD / "KeloAPI").rglob("*.cxx"))
        compiled = re.findall('#include "(.*)"', "".join(unit.read_text() for unit in units))
        sources = list((package.SOURCE / "KeloAPI").rglob("*.cpp"))
        self.assertEqual(len(compiled), len(sources))
        objects = list((package.BUILD / "KeloAPI").rglob("*.o"))
        self.assertEqual(len(objects), len(units))
        guilty = {str(path): initialiser_sections(path) for path in objects}
        self.assertEqual({path: found for path, found in guilty.items() if found}, {})

    def test_sees_an_initialiser_where_there_is_one(self):
        source = package.WORK / "initialiser.cpp"
        source.write_text("#include <string>\nstd::string text(100, 'x');\n")
        made = source.with_suffix(".o")
        package.run(package.CXX, "-O2", "-c", source, "-o", made)
        self.assertNotEqual(initialiser_sections(made), [])

    def test_soname_carries_what_may_break(self):
        """Before 1.0 that is the minor version, too."""
        major, minor, _ = package.version()
        stands_for = f"{major}.{minor}" if major == "0" else major
        self.assertEqual(dynamic("SONAME"), [f"libKeloAPI.so.{stands_for}"])

    def test_is_hardened(self):
        program = package.run("readelf", "--program-headers", "--dynamic", "--wide", package.LIBRARY)
        self.assertIn("GNU_RELRO", program)
        self.assertIn("BIND_NOW", program)
        self.assertRegex(program, r"GNU_STACK .* RW ")  # data that cannot be run
        needed = package.run("nm", "-D", "--undefined-only", package.LIBRARY)
        self.assertIn("__stack_chk_fail", needed)
        self.assertRegex(needed, r"__\w+_chk@")  # fortified calls

    def test_loads_only_what_is_stated(self):
        needed = {name for name in dynamic("NEEDED") if not name.startswith("ld-linux")}
        self.assertEqual(needed - NEEDED, set())
        self.assertIn("libcurl.so.4", needed)

    def test_has_no_path_of_the_build_inside(self):
        self.assertEqual(dynamic("RUNPATH") + dynamic("RPATH"), [])
        self.assertIsNotNone(shutil.which("readelf"))

    def test_comes_with_its_documents(self):
        docs = package.installed("getting-started.md").parent
        self.assertTrue((docs.parent / "examples/timeline.cpp").is_file())
        self.assertTrue((docs.parent / "README.md").is_file())
        links = re.findall(r"\]\(([^)]+)\)", (docs / "index.md").read_text())
        self.assertGreater(len(links), 15)
        self.assertEqual([link for link in links if not (docs / link).is_file()], [])


if __name__ == "__main__":
    unittest.main()
