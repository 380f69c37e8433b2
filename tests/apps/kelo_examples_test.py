"""The example hosts, run against the real stand-in as their readers would run them."""

import os
import re
import shutil
import tempfile
import unittest
import urllib.parse

from case import PASSWORD, Case
from service import BIN, CERTIFICATES, KEY

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# The GLib host is built where GLib is.
LOOPS = ["poll-loop", "executor"]
if os.path.exists(f"{BIN}/example-glib-loop"):
    LOOPS.append("glib-loop")


class Examples(Case):
    def test_the_first_program_of_the_readme(self):
        with open(f"{ROOT}/README.md") as readme, open(f"{ROOT}/examples/timeline.cpp") as source:
            printed = re.search(r"```cpp\n(.*?)```", readme.read(), re.S)[1]
            self.assertEqual(printed, source.read())
        # Without an argument it looks where kelo serve listens without one.
        self.assertIn('"localhost:8443"; // kelo serve', printed)
        self.assertIn("8443", self.succeeds("serve", "--help"))
        done = self.run_program(f"{BIN}/example-timeline", self.service.host,
                                KELO_PIN=f"{CERTIFICATES}/development-1.pem")
        trace, *said = done.stdout.splitlines()
        captions = [post["caption"] for post in self.json("timeline", "popular")]
        self.assertRegex(trace, "^GET https://")
        self.assertEqual((done.returncode, done.stderr, said), (0, "", captions))

    def test_loops(self):
        for example in LOOPS:
            with self.subTest(example=example):
                done = self.run_program(f"{BIN}/example-{example}",
                                        KELO_SESSION=self.service.session("kofi"))
                self.assertEqual((done.returncode, done.stdout), (0, "Signed in as kofi\n"))

    def test_failure(self):
        for example in ("timeline", *LOOPS):
            with self.subTest(example=example):
                done = self.run_program(f"{BIN}/example-{example}", "localhost:1",
                                        KELO_HOST="localhost:1")
                self.assertEqual(done.returncode, 1)

    def test_offline(self):
        done = self.run_program(f"{BIN}/example-offline-test", KELO_HOST="localhost:1")
        self.assertEqual((done.returncode, done.stdout.count("ok  "), done.stderr), (0, 3, ""))


# Built where the Objective-C face is.
@unittest.skipUnless(os.path.exists(f"{BIN}/example-objc-feed"), "there is no Objective-C face")
class ObjcExample(Case):
    def setUp(self):
        super().setUp()
        self.folder = tempfile.mkdtemp(prefix="kelo-")
        self.addCleanup(shutil.rmtree, self.folder)

    def feed(self, **environment):
        return self.run_program(f"{BIN}/example-objc-feed", self.folder, **environment)

    def test_signs_in_pages_and_downloads(self):
        done = self.feed(KELO_USER="kofi", KELO_PASSWORD=PASSWORD)
        posts = self.json("timeline", "popular", "--pages", "2")
        self.assertGreater(len(posts), 5)  # more than a page
        path = urllib.parse.urlsplit(posts[0]["videoUrl"]).path
        name = path.rsplit("/", 1)[1]
        with open(f"{self.folder}/{name}", "rb") as file:
            video = file.read()
        self.assertEqual(video[4:8], b"ftyp")
        told = ["Signed in as kofi", *(post["caption"] for post in posts),
                f"{name}: {len(video)} bytes"]
        self.assertEqual((done.returncode, done.stdout), (0, "".join(f"{t}\n" for t in told)))
        self.assertEqual(os.listdir(self.folder), [name])
        keys = [headers["kelo-session-id"] for headers in self.service.headers("/users/me")]
        self.assertEqual(len(keys), 1)
        self.assertNotEqual(keys, [KEY])
        self.assertEqual(len(self.service.seen(path)), 1)

    def test_failures(self):
        for environment in ({"KELO_HOST": "localhost:1"}, {"KELO_PASSWORD": "no"}):
            with self.subTest(**environment):
                done = self.feed(**environment)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertEqual(os.listdir(self.folder), [])
        self.assertEqual(done.stderr, "The service gave no session.\n")

    def test_a_video_that_breaks_off(self):
        video = self.json("timeline", "popular")[0]
        path = urllib.parse.urlsplit(video["videoUrl"]).path
        self.service.fault(path, type="reset", afterBodyBytes=10)
        done = self.feed()
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stdout.startswith("Signed in as mara\n"))
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == "__main__":
    unittest.main()
