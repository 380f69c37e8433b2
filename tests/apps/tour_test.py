"""The tour of scripts/demo, and how scripts/tour checks it."""

import os
import tempfile
import unittest

from case import Case
from service import BIN

SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts")


class TourCase(Case):
    def tour(self, *files, **environment):
        """The exit code, the steps, those that failed, and all that was printed."""
        done = self.run_program(f"{SCRIPTS}/tour", *files,
                                PATH=f"{BIN}:{os.environ['PATH']}", **environment)
        last = done.stdout.splitlines()[-1]
        self.assertRegex(last, r"^demo: \d+ steps, \d+ failed$", done)
        _, steps, _, failed, _ = last.split()
        self.assertEqual(done.stdout.count("\n    ok\n"), int(steps) - int(failed))
        return done.returncode, int(steps), int(failed), done.stdout


class Tour(TourCase):
    FILE = f"{SCRIPTS}/demo.tour"

    def test_every_step(self):
        self.service.control("POST", "_service/processing-time", {"seconds": 0.5})
        code, steps, failed, text = self.tour(self.FILE)
        self.assertEqual((code, failed), (0, 0), text)
        self.assertGreaterEqual(steps, 48)

    def test_a_service_that_is_not_there(self):
        code, steps, failed, _ = self.tour(self.FILE, KELO_HOST="localhost:1")
        self.assertEqual(code, 1)
        self.assertGreater(failed, steps // 2)

    @unittest.skipUnless(os.path.exists(f"{BIN}/example-objc-feed"),
                         "there is no Objective-C face")
    def test_the_host_in_objective_c(self):
        code, steps, failed, text = self.tour(f"{SCRIPTS}/demo-objc.tour")
        self.assertEqual((code, steps, failed), (0, 1, 0), text)


class Checks(TourCase):
    """Each kind of line passes where it should, and fails where it should."""

    def steps(self, *lines):
        with tempfile.NamedTemporaryFile("w", suffix=".tour") as file:
            for line in lines:
                file.write(f"== A step\n$ printf 'one\\ntwo 2\\n'; exit 3\n{line}\n")
            file.flush()
            return self.tour(file.name)

    GOOD = ("exit 3", "exit 3\nlines 2", "exit 3\n> one\n> two 2", "exit 3\n~ ^t.o",
            "exit 3\n! three", "exit 3\nN = ([0-9])\n~ $((N + 1))|two $N",
            "exit 3\nN = ([0-9])\n$ echo $N $((N + 3))\n> 2 5")
    BAD = ("# nothing is said of the exit code", "exit 0", "exit 3\nlines 1", "exit 3\n> on",
           "exit 3\n> two 2\n> one", "exit 3\n~ ^wo", "exit 3\n! wo", "exit 3\nN = ([3-9])",
           "exit 3\n$ false\n> one", "exit 3\n> three\n> one")

    def test_what_holds(self):
        code, steps, failed, text = self.steps(*self.GOOD)
        self.assertEqual((code, steps, failed), (0, len(self.GOOD), 0), text)

    def test_what_does_not_hold(self):
        code, steps, failed, text = self.steps(*self.BAD)
        self.assertEqual((code, steps, failed), (1, len(self.BAD), len(self.BAD)), text)
        self.assertIn("expected the line: three; what came is\n      one\n      two 2\n", text)

    def test_what_cannot_be_read(self):
        for arguments, environment in (([], {}), (["/nowhere"], {}),
                                       ([f"{SCRIPTS}/tour"], {}),
                                       ([f"{SCRIPTS}/demo.tour"], {"KELO_HOST": ""})):
            with self.subTest(arguments=arguments):
                done = self.run_program(f"{SCRIPTS}/tour", *arguments, **environment)
                self.assertEqual((done.returncode, done.stdout), (2, ""))


if __name__ == "__main__":
    unittest.main()
