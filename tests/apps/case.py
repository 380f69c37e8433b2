"""What the tests of kelo share: a service of their own, and kelo run against it."""

import json
import os
import shlex
import subprocess
import tempfile
import unittest

from console import Console
from service import BIN, Service

KELO = f"{BIN}/kelo"
PASSWORD = "loop-the-loop"


def environment(**more):
    """The caller's, without what would steer kelo elsewhere."""
    kept = {name: value for name, value in os.environ.items()
            if not name.startswith("KELO_") and not name.lower().endswith("_proxy")}
    return {**kept, "LC_ALL": "C.UTF-8", "TERM": "xterm", "NO_COLOR": "1", **more}


class Case(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.service = Service()
        # Not the developer's own.
        home = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.environment = environment(KELO_HOST=cls.service.host, XDG_DATA_HOME=home,
                                      XDG_STATE_HOME=home)

    @classmethod
    def tearDownClass(cls):
        cls.service.stop()

    def setUp(self):
        self.service.forget()

    def run_program(self, program, *arguments, input="", **more):
        """With this text on standard input, and more variables."""
        return subprocess.run([program, *arguments], input=input,
                              capture_output=True, text=True, timeout=60,
                              env={**self.environment, **more})

    def kelo(self, *arguments, **more):
        return self.run_program(KELO, *arguments, **more)

    def succeeds(self, *arguments, **more):
        done = self.kelo(*arguments, **more)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done)
        return done.stdout

    def json(self, *arguments, **more):
        """What it prints with --json: one object a line."""
        return [json.loads(line) for line in
                self.succeeds(*arguments, "--json", **more).splitlines()]

    def fails(self, code, line, *arguments, **more):
        """Nothing on standard output, exactly one line on standard error."""
        done = self.kelo(*arguments, **more)
        self.assertEqual((done.returncode, done.stdout), (code, ""), done)
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        self.assertTrue(done.stderr.startswith("kelo: "), done.stderr)
        self.assertIn(line, done.stderr)

    def slips(self, line, *arguments, **more):
        """A command line that cannot be used: one line about it, and how the command is used."""
        done = self.kelo(*arguments, **more)
        self.assertEqual((done.returncode, done.stdout), (2, ""), done)
        self.assertRegex(done.stderr, r"^kelo: .*\nUsage: kelo.*; kelo help.* says more\n$")
        self.assertIn(line, done.stderr.splitlines()[0])
        return done.stderr

    def refuses(self, command_lines):
        """Command lines that cannot be used, by what is said of them."""
        for line, commands in command_lines.items():
            for command in commands:
                with self.subTest(command=command):
                    self.slips(line, *shlex.split(command))
        self.assertEqual(self.service.seen(), [])

    def start(self, *arguments):
        """kelo, which goes on meanwhile."""
        return subprocess.Popen([KELO, *arguments], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, env=self.environment)

    def console(self, *arguments, columns=0, **more):
        return Console([KELO, *arguments], {**self.environment, **more}, columns)

    def finishes(self, console, code):
        self.assertEqual(console.finish(), code, console.output)
