"""scripts/terminal-picture, of kelo at a real service and of screens made by hand."""

import importlib.machinery
import importlib.util
import os
import pathlib
import re
import sys
import unittest
import xml.etree.ElementTree

from case import BIN, Case

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))


def script():
    loader = importlib.machinery.SourceFileLoader("terminal_picture", f"{SCRIPTS}/terminal-picture")
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


class Drawing:
    """What is in a picture: its rows, as (words, whether they have gone at the end, when they show)."""

    def __init__(self, svg):
        frames = {name: re.findall(r"([\d.]+)%\{visibility:(\w+)", steps)
                  for name, steps in re.findall(r"@keyframes (r\d+)\{(.*)\}$", svg, re.M)}
        self.rows = []
        for group in xml.etree.ElementTree.fromstring(svg):
            if group.tag.endswith("}g") and group.get("class") != "cover":
                words = [text.text for text in group]
                when = frames[group.get("style").removeprefix("animation-name:")]
                self.rows.append((words, group.get("class") == "past", when))

    def end(self):
        """The words that are left, by rows."""
        return [words for words, is_past, _ in self.rows if not is_past]


class TerminalPicture(Case):
    def draw(self, *commands):
        path = f"{os.path.abspath(BIN)}:{os.environ['PATH']}"
        return self.run_program(f"{SCRIPTS}/terminal-picture", *commands, PATH=path)

    def test_what_kelo_shows(self):
        drawn = self.draw("kelo me", "kelo channels")
        self.assertEqual((drawn.returncode, drawn.stderr), (0, ""))
        rows = [["$", "kelo me"], *([line] for line in self.succeeds("me").splitlines()),
                ["$", "kelo channels"],
                *(re.split("  +", line) for line in self.succeeds("channels").splitlines())]
        self.assertEqual(Drawing(drawn.stdout).end(), rows)
        self.assertGreater(len(rows), 10)
        self.assertIn('class="dim"', self.draw("kelo timeline popular").stdout)

    def test_a_command_that_fails_is_not_drawn(self):
        drawn = self.draw("kelo user nobody-of-this-name")
        self.assertEqual((drawn.returncode, drawn.stdout), (1, ""))
        self.assertIn("ended with 1:\n", drawn.stderr)
        self.assertIn("kelo:", drawn.stderr)


class Screens(unittest.TestCase):
    def recorded(self, *shown):
        """The picture of a command that shows these texts, each a pause after the last."""
        module = script()
        module.run = lambda command: shown
        recording = module.Recording()
        recording.take("x")
        svg = recording.svg(["x"])
        return Drawing(svg), recording

    def test_what_is_written_over_shows_for_its_time(self):
        drawing, recording = self.recorded((0.1, "half"), (0.3, "\r\x1b[Jwhole\r\n"))
        self.assertEqual(drawing.end(), [["$", "x"], ["whole"]])
        (shown, gone), = [when[-2:] for words, is_past, when in drawing.rows if is_past]
        (after,) = [when[-1] for words, _, when in drawing.rows if words == ["whole"]]
        self.assertEqual((shown[1], gone[1], after), ("visible", "hidden", (gone[0], "visible")))
        self.assertAlmostEqual((float(gone[0]) - float(shown[0])) * recording.now / 100, 0.3,
                               delta=0.01)

    def test_pauses_are_shortened(self):
        _, recording = self.recorded((0.1, "a"), (0.2, "b"))
        _, longer = self.recorded((0.1, "a"), (30, "b"))
        self.assertAlmostEqual(longer.now - recording.now, 0.2)

    def test_columns(self):
        """Wide letters, emoji of several parts, marks, colours and what is too long for a row."""
        drawing, recording = self.recorded(
            (0, "ru\u0308n 日本 \U0001f937\U0001f3fb\u200d\u2640\ufe0f x\r\n"),
            (0, "\x1b[1;31mred\x1b[m plain\r\n" + "y" * 92 + "z\r\n"))
        rows = recording.screen.rows
        self.assertEqual([len(row) for row in rows[1:]], [13, 9, 92, 1, 0])
        self.assertEqual(rows[2][0], ("r", "bold red"))
        self.assertEqual(drawing.end()[2], ["red", "plain"])


if __name__ == "__main__":
    unittest.main()
