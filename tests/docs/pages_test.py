"""The pages in docs/ against the sources: their code is that of examples that are built and run, these
include what hosts include, the tables of errors have every code, and pictures show what they are drawn
from."""

import pathlib
import re
import subprocess
import tempfile
import textwrap
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Where the code of each kind comes from.
SOURCES = {
    "cpp": sorted((ROOT / "examples").glob("**/*.[ch]pp")),
    "qml": sorted((ROOT / "examples/viewer/qml").glob("*.qml")),
    "objc": sorted((ROOT / "examples/objc").glob("*.[hm]")),
    "cmake": sorted((ROOT / "tests/package/consumer").glob("CMakeLists.txt")),
}


def text(path):
    return (ROOT / path).read_text()


def stands_in(block, source):
    """Whether the lines are lines of the source, deeper or not."""
    return any("\n" + textwrap.indent(block, " " * depth) in "\n" + source
               for depth in range(0, 33, 2))


def rows(page, heading):
    """The tables below a heading, as lists of cells, without the headings of the columns."""
    section = re.split(r"^## ", page, flags=re.M)
    section = next(part for part in section if part.startswith(heading))
    lines = re.findall(r"^\| (.*) \|$", section, re.M)
    return [line.split(" | ") for line in lines if "---" not in line]


def cases(header, enumeration):
    """The codes of an enumeration, by name."""
    body = re.search(rf"enum {enumeration}\b[^{{]*{{(.*?)^ *}};", text(header), re.S | re.M)[1]
    found, following = {}, 0
    for name, value in re.findall(r"^ *([A-Z]\w*)(?: = (-?\d+))?,$", body, re.M):
        found[name] = int(value) if value else following
        following = found[name] + 1
    return found


class Code(unittest.TestCase):
    def test_every_block_is_part_of_an_example(self):
        count = 0
        for page in sorted((ROOT / "docs").glob("*.md")):
            for kind, block in re.findall(r"^```(\w*)\n(.*?)^```$", page.read_text(), re.S | re.M):
                with self.subTest(page=page.name, block=block):
                    count += 1
                    self.assertIn(kind, (*SOURCES, "sh", "text"))
                    self.assertTrue(kind in ("sh", "text") or any(
                        stands_in(block, source.read_text()) for source in SOURCES[kind]))
        self.assertGreater(count, 30)

    def test_no_code_stands_outside_its_fences(self):
        """Indented lines in no list are code of no kind, which nothing compares."""
        for page in sorted((ROOT / "docs").glob("*.md")):
            prose = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.S | re.M)
            with self.subTest(page=page.name):
                self.assertEqual(re.findall(r"(?:^|\n)\n((?: {4}|\t).*)", prose), [])

    def test_every_example_has_its_page(self):
        pages = "".join(page.read_text() for page in (ROOT / "docs").glob("*.md"))
        for example in sorted((ROOT / "examples").glob("*.cpp")):
            self.assertIn(f"(../examples/{example.name})", pages)

    def test_examples_include_the_library_as_hosts_do(self):
        whole, optional = "KeloAPI/KeloAPI.hpp", "KeloAPI/async.hpp"
        users = 0
        for example in sorted((ROOT / "examples").rglob("*")):
            if example.suffix not in (".cpp", ".hpp", ".h", ".m"):
                continue
            found = re.findall(r"^\s*#\s*(?:include|import)\s*[<\"]([^>\"]+)",
                               example.read_text(), re.M)
            library = {name for name in found if re.match(r"(\.\./)*KeloAPI", name)}
            users += len(library)
            allowed = ({"KeloAPIObjC/KeloAPIObjC.h"} if example.parent.name == "objc"
                       else {whole, optional})
            with self.subTest(example=example.name):
                self.assertLessEqual(library, allowed)
        self.assertGreater(users, 8)


class Pictures(unittest.TestCase):
    def drawn(self, figures):
        """The chart of what the benchmarks printed."""
        with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
            file.write(figures)
            file.flush()
            return subprocess.run([ROOT / "scripts/benchmark-picture", file.name], text=True,
                                  capture_output=True)

    def test_of_the_readme(self):
        page = text("README.md")
        pictures = re.findall(r"!\[([^]]+)\]\((docs/[^)]+)\)", page)
        pictures += [(told, path) for path, told
                     in re.findall(r'<img src="([^"]+)"[^>]*? alt="([^"]+)">', page)]
        self.assertEqual({path for _, path in pictures},
                         {"docs/viewer.png", "docs/kelo.svg", "docs/benchmarks.svg"})
        for _, path in pictures:
            with self.subTest(path=path):
                self.assertLess((ROOT / path).stat().st_size, 120_000)
                if path.endswith(".svg"):
                    self.assertIn("prefers-color-scheme: dark", text(path))
                    xml.etree.ElementTree.fromstring(text(path))

    def test_the_chart_is_that_of_the_figures(self):
        drawn = self.drawn(text("docs/benchmarks.txt"))
        self.assertEqual((drawn.stdout, drawn.stderr), (text("docs/benchmarks.svg"), ""))

    def test_bars_go_from_one_twice_as_far_for_the_square(self):
        drawn = self.drawn("2026-01-31T10:00:00+00:00\nRun on (4 X 3000 MHz CPU s)\n"
                           "ratio calls-http1-64/curl 2.00 0.80 ok\n"
                           "ladder calls-http2-1/curl 0.50\n"
                           "ratio timeline-20/nlohmann 4.00 8.00 SHORT\n")
        self.assertIn("2026-01-31, 4 cores at 3 GHz", drawn.stdout)
        bars = [one.attrib for one in xml.etree.ElementTree.fromstring(drawn.stdout).iter()
                if one.get("class") in ("faster", "slower")]
        self.assertEqual([bar["class"] for bar in bars], ["faster", "slower", "faster"])
        double, half, fourfold = [(float(bar["x"]), float(bar["width"])) for bar in bars]
        self.assertAlmostEqual(half[0] + half[1], double[0], delta=0.2)
        self.assertEqual(fourfold[0], double[0])
        self.assertAlmostEqual(half[1], double[1], delta=0.2)
        self.assertAlmostEqual(fourfold[1], 2 * double[1], delta=0.2)

    def test_a_chart_needs_figures_their_day_and_their_machine(self):
        day, machine = "2026-01-31T10:00:00+00:00\n", "Run on (4 X 3000 MHz CPU s)\n"
        for figures in ("", day + machine, day + "ratio calls-http1-64/curl 1.00 0.80 ok\n",
                        machine + "ratio calls-http1-64/curl 1.00 0.80 ok\n"):
            with self.subTest(figures=figures):
                drawn = self.drawn(figures)
                self.assertEqual((drawn.returncode, drawn.stdout), (1, ""))
                self.assertRegex(drawn.stderr, "^scripts/benchmark-picture: .*\n$")


class Errors(unittest.TestCase):
    page = text("docs/errors.md")

    def assert_table(self, heading, header, enumeration):
        codes = cases(header, enumeration)
        self.assertGreater(len(codes), 3)
        table = {row[1].strip("`"): int(row[0]) for row in rows(self.page, heading)
                 if row[0] != "Code"}
        self.assertEqual(table, codes)

    def test_http(self):
        self.assert_table("HTTP", "KeloAPI/http/HTTPError.hpp", "class HTTPErrorCode")

    def test_parsers(self):
        self.assert_table("Parsers", "KeloAPI/parsing/JsonParseError.hpp", "Case")

    def test_cassettes(self):
        self.assert_table("Cassettes", "KeloAPI/fakes/Cassette.hpp", "class CassetteErrorCode")

    def test_every_row_has_a_cause_and_a_cure(self):
        for heading in ("HTTP", "The service", "Parsers", "Cassettes"):
            for row in rows(self.page, heading):
                with self.subTest(row=row):
                    self.assertTrue(all(row) or "reserved" in row[2])

    def test_domains_and_texts_of_the_envelope(self):
        sources = [path.read_text() for path in sorted((ROOT / "KeloAPI").rglob("*.[ch]pp"))]
        domains = set(re.findall(r'[dD]omain\w* = ("[^"]+")', "\n".join(sources)))
        self.assertGreaterEqual(domains, {'"KeloAPI.HTTP"', '"KeloAPI.Exception"', '"libcurl"'})
        envelope = text("KeloAPI/api/ResponseEnvelope.cpp")
        texts = set(re.findall(r'envelopeError\(("[^"]+")', envelope))
        self.assertEqual(len(texts), 3)
        for said in domains | texts:
            self.assertIn(said, self.page)

    def test_service_codes(self):
        """Those on which the library acts."""
        for file in ("api/Endpoint.cpp", "api/ResponseEnvelope.cpp", "endpoints/UserEndpoint.cpp"):
            for code in re.findall(r"\b[1-9]\d\d\b", text(f"KeloAPI/{file}")):
                self.assertRegex(self.page, rf"\| (\d+, )?{code}[ ,]")

    def test_contracts(self):
        """The page has each text of the library's, and no other."""
        library = "\n".join(path.read_text() for path in (ROOT / "KeloAPI").rglob("*.[ch]pp")
                            if path.stem != "Contract") # where the line is written
        contracts = re.findall(r'(?:require|contractViolation)\([^;]*?"((?:[^"\\]|\\.)*)"', library)
        # Where a text holds quotation marks, it stands as code.
        said = [code or quoted for row in rows(self.page, "Contracts")
                for code, quoted in re.findall(r'`([^`]+)`|"([^"]+)"', row[0])]
        self.assertEqual(sorted(said), sorted({text.replace('\\"', '"') for text in contracts}))
        self.assertGreater(len(said), 15)


if __name__ == "__main__":
    unittest.main()
