"""What kelo says about itself, held against what it does."""

import os
import re
import shlex
import subprocess
import tempfile
import unittest

from case import KELO, PASSWORD, Case


def section(text, heading):
    """The lines below a heading of a help text."""
    found = re.search(rf"(?m)^{heading}:\n((?:  .*\n)+)", text)
    return found[1].splitlines() if found else []


def names(lines):
    """What stands in the first column: options without their values, commands, ..."""
    return [re.match(r"  (?:-\w, )?(\S+)", line)[1] for line in lines
            if re.match(r"  \S", line)]


class Help(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.texts = {}
        cls.read()

    @classmethod
    def read(cls, *words):
        """The help texts of a command and of all below it, by their names."""
        text = subprocess.run([KELO, "help", *words], capture_output=True, text=True, check=True,
                              env=cls.environment).stdout
        cls.texts[" ".join(words)] = text
        for heading in ("Commands",) if words else (
                "Signing in", "Reading", "Acting", "Videos", "Files", "Developing", "Help"):
            for name in names(section(text, heading)):
                cls.read(*words, name)

    def test_every_command_tells_all_its_options_and_two_examples(self):
        common = section(self.texts[""], "Options")
        self.assertGreater(len(names(common)), 9)
        self.assertGreater(len(self.texts), 25)
        for command, text in self.texts.items():
            with self.subTest(command=command):
                self.assertIn(f"\nUsage: kelo {command}".rstrip(), text)
                if command not in ("", "serve"):
                    self.assertEqual(section(text, "Common options"), common)
                examples = [line for line in section(text, "Examples") if line[:7] == "  kelo "]
                self.assertEqual(len(examples), 2, text)
                for example in examples:
                    self.assertTrue(example.startswith(f"  kelo {command}"), example)

    def test_examples_work(self):
        with tempfile.TemporaryDirectory() as folder:
            head = (8).to_bytes(4, "big") + b"ftyp" + (8).to_bytes(4, "big") + b"moov"
            with open(f"{folder}/video.mp4", "wb") as video:
                video.write(head + (5000 + 8).to_bytes(4, "big") + b"mdat" + bytes(5000))
            for command, text in self.texts.items():
                for line in section(text, "Examples"):
                    if not line.startswith("  kelo ") or line.startswith("  kelo serve"):
                        continue
                    words = shlex.split(re.split("  +", line.strip())[0])[1:]
                    before = {"unrekelo": ["rekelo", *words[1:]],
                              "logout": ["login", "--user", "mara"]}.get(command)
                    for one in filter(None, (before, words)):
                        with self.subTest(line=line):
                            done = subprocess.run(
                                [os.path.abspath(KELO), *one], cwd=folder, capture_output=True,
                                text=True, timeout=60, stdin=subprocess.DEVNULL,
                                env={**self.environment, "XDG_DATA_HOME": folder,
                                     "KELO_PASSWORD": PASSWORD})
                            self.assertEqual((done.returncode, done.stderr), (0, ""), done)

    def test_ways_to_the_same_text(self):
        for one, *others in (("help", "--help", "-h", "--host localhost:1 --help"),
                             ("help timeline", "timeline --help", "timeline -h", "--help timeline"),
                             ("help cache", "cache --help"),
                             ("help cache trim", "cache trim -h", "cache --help trim"),
                             ("--version", "-V", "me -V")):
            expected = self.succeeds(*one.split())
            for other in others:
                with self.subTest(other=other):
                    self.assertEqual(self.succeeds(*other.split()), expected)

    def test_wrapped_to_the_terminal(self):
        for columns, widest in ((30, 30), (60, 60), (100, 100), (200, 100), (0, 80)):
            for command in ("", "download"):
                with self.subTest(columns=columns, command=command):
                    console = self.console("help", *command.split(), columns=columns)
                    self.finishes(console, 0)
                    # A command line that is to be copied stays as it is, and so does a single word.
                    lines = [line for line in console.output.splitlines()
                             if not line.startswith("  kelo ") and " " in line.strip()]
                    self.assertLessEqual(max(map(len, lines)), widest)
                    self.assertGreater(max(map(len, lines)), widest - 15)
                    self.assertEqual(" ".join(sorted(console.output.split())),
                                     " ".join(sorted(self.texts[command].split())))


class Slips(Case):
    def test_what_may_be_meant(self):
        for line, meant in (("timline home", "timeline"), ("timelien home", "timeline"),
                            ("time home", "timeline"), ("likes 1", "like"), ("unfolow 1", "unfollow"),
                            ("cache lst", "list"), ("help downlaod", "download"),
                            ("timeline home --pagse 3", "--pages"), ("me --jsno", "--json"),
                            ("download 1 --priorty=high", "--priority"),
                            ("--hots localhost:1 me", "--host")):
            with self.subTest(line=line):
                self.assertRegex(self.slips(f"; did you mean {meant}?", *line.split()),
                                 "there is no (command|option) ")

    def test_nothing_is_meant(self):
        for line in ("dance", "x", "me --loud", "me you"):
            with self.subTest(line=line):
                self.assertNotIn("did you mean", self.slips("", *line.split()))

    def test_how_the_command_is_used(self):
        for line, usage in (("dance", "kelo [OPTIONS] COMMAND; kelo help says more"),
                            ("timeline", "kelo timeline [OPTIONS] PATH; kelo help timeline says more"),
                            ("cache trim", "kelo cache trim [OPTIONS] N; kelo help cache trim "
                                           "says more"),
                            ("save x", "kelo save [OPTIONS] FILE KIND [ID]; kelo help save says "
                                       "more")):
            with self.subTest(line=line):
                self.assertTrue(self.slips("", *line.split()).endswith(f"\nUsage: {usage}\n"))


if __name__ == "__main__":
    unittest.main()
