"""The public headers as they are installed."""

import concurrent.futures
import os
import re
import unittest

import package

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"].*[>"])', re.MULTILINE)
STANDARD = re.compile(r"<[a-z_0-9]+>")


def root():
    return package.installed("KeloAPI/api/Api.hpp").parents[2]


def headers():
    return sorted((root() / "KeloAPI").rglob("*.hpp"))


def includes(header):
    return INCLUDE.findall(header.read_text())


class Headers(unittest.TestCase):
    def test_include_the_standard_library_and_one_another_alone(self):
        names = {f"<{header.relative_to(root())}>" for header in headers()}
        self.assertGreater(len(names), 40)
        for header in headers():
            for include in includes(header):
                with self.subTest(header=header.name, include=include):
                    self.assertTrue(include in names or STANDARD.fullmatch(include))

    def test_form_no_circle(self):
        graph = {
            f"<{header.relative_to(root())}>": includes(header) for header in headers()
        }
        done, open_now = set(), []

        def visit(name):
            self.assertNotIn(name, open_now, " includes ".join([*open_now, name]))
            if name in done or name not in graph:
                return
            open_now.append(name)
            for include in graph[name]:
                visit(include)
            open_now.pop()
            done.add(name)

        for name in graph:
            visit(name)
        self.assertEqual(done, set(graph))

    def test_compile_alone(self):
        def compile_alone(header):
            package.run(
                package.CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic",
                "-Werror", f"-I{root()}", "-include", header, "-x", "c++", os.devnull,
            )

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            self.assertEqual(len(list(pool.map(compile_alone, headers()))), len(headers()))


if __name__ == "__main__":
    unittest.main()
