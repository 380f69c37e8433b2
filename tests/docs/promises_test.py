"""The promises in SECURITY.md and docs/reliability.md: each names its tests, and those exist."""

import ast
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ("SECURITY.md", "docs/reliability.md")


def sources(*suffixes):
    return [path for path in sorted((ROOT / "tests").rglob("*")) if path.suffix in suffixes]


def google_tests():
    """Each suite, and each test as SUITE.TEST."""
    for source in sources(".cpp", ".mm"):
        for suite, test in re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)",
                                      source.read_text(), re.M):
            yield from (suite, f"{suite}.{test}")


def python_tests():
    """Each class with tests, and each test as CLASS.test_NAME."""
    for source in sources(".py"):
        for node in ast.parse(source.read_text()).body:
            if isinstance(node, ast.ClassDef):
                for test in (part.name for part in node.body if isinstance(part, ast.FunctionDef)):
                    if test.startswith("test_"):
                        yield from (node.name, f"{node.name}.{test}")


TESTS = {*google_tests(), *python_tests()}


def exists(name):
    """A test by its name; a script or a folder of tests by its path."""
    return name in TESTS or "/" in name and (ROOT / name).exists()


def promises(page):
    """The rows of the tables whose last column is "tests": the promise, and the names."""
    for table in re.findall(r"(?:^\|.*\|\n)+", page, re.M):
        head, _, *rows = [line[2:-2].split(" | ") for line in table.splitlines()]
        if head[-1] == "tests":
            yield from ((row[0], re.findall(r"`([^`]+)`", row[-1])) for row in rows)


class Promises(unittest.TestCase):
    def test_each_names_tests_that_exist(self):
        for page in PAGES:
            rows = list(promises((ROOT / page).read_text()))
            self.assertGreater(len(rows), 20, page)
            for promise, names in rows:
                with self.subTest(page=page, promise=promise):
                    self.assertTrue(names)
                    self.assertEqual([name for name in names if not exists(name)], [])

    def test_a_name_that_does_not_exist_is_noticed(self):
        table = "| promise | tests |\n| --- | --- |\n| a thing | `Promises`, {} |\n"
        for name in ("Promise", "Promises.test_nothing", "TrustTest.Nothing", "tests/nothing"):
            [(promise, names)] = promises(table.format(f"`{name}`"))
            self.assertEqual(promise, "a thing")
            self.assertEqual([name for name in names if not exists(name)], [name])


if __name__ == "__main__":
    unittest.main()
