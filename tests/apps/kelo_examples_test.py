"""The example hosts, run against the real stand-in as their readers would run them."""

import json
import os
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest
import urllib.parse

from case import PASSWORD, Case
from service import BIN, CERTIFICATES, KEY, Service

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# The hosts with loops of GLib and Qt are built where these are.
LOOPS = [loop for loop in ("poll-loop", "executor", "glib-loop", "qt-loop")
         if os.path.exists(f"{BIN}/example-{loop}")]


def finds_the_certificate(case, program, *arguments):
    """It is looked for where kelo serve keeps it, with little else in the environment."""
    home = case.enterContext(tempfile.TemporaryDirectory(prefix="kelo-"))
    state = f"{home}/.local/state"
    own = Service(HOME=home, XDG_STATE_HOME="")
    case.addCleanup(own.stop)
    kept = {name: os.environ[name] for name in ("LSAN_OPTIONS",) if name in os.environ}

    def run(host, **environment):
        words = [host] if program.endswith("timeline") else arguments
        return subprocess.run([program, *words], capture_output=True, text=True, timeout=60,
                              env={**kept, "KELO_HOST": host, **environment})

    address = own.host.replace("localhost", "127.0.0.1")
    for code, host, environment in (
            (0, own.host, {"HOME": home}),
            (0, own.host, {"XDG_STATE_HOME": state}),
            (0, own.host, {"HOME": "/nowhere", "XDG_STATE_HOME": state}),
            (0, own.host, {"HOME": home, "XDG_STATE_HOME": "not/absolute"}),
            (0, address, {"HOME": home}),
            (1, own.host, {"HOME": "/nowhere"}),
            (1, own.host, {})):
        with case.subTest(program=program, host=host, **environment):
            done = run(host, **environment)
            case.assertEqual(done.returncode, code, done)
    if program.endswith("timeline"):
        return
    # For a service elsewhere it is not even opened: whoever does waits for good now.
    os.remove(f"{state}/kelo-service/certificate.pem")
    os.mkfifo(f"{state}/kelo-service/certificate.pem")
    for host in ("127.example.com", "kelo.example.com"):
        done = run(host, HOME=home, https_proxy="http://localhost:1")
        case.assertEqual(done.returncode, 1, done)


class Examples(Case):
    def setUp(self):
        super().setUp()
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="kelo-"))

    def example(self, name, *arguments, **environment):
        return self.run_program(f"{BIN}/example-{name}", *arguments, **environment)

    def prints(self, said, name, *arguments, **environment):
        done = self.example(name, *arguments, **environment)
        self.assertEqual((done.returncode, done.stdout), (0, said), done)
        return done

    def refuses_arguments(self, *names):
        for name in names:
            with self.subTest(example=name):
                done = self.example(name)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertIn(f"example-{name} ", done.stderr)

    def test_the_first_program_of_the_readme(self):
        with open(f"{ROOT}/README.md") as readme, open(f"{ROOT}/examples/timeline.cpp") as source:
            printed = re.search(r"```cpp\n(.*?)```", readme.read(), re.S)[1]
            self.assertEqual(printed, source.read())
        # Without an argument it looks where kelo serve listens without one.
        self.assertIn('"localhost:8443"; // kelo serve', printed)
        self.assertIn("8443", self.succeeds("serve", "--help"))
        os.mkdir(f"{self.folder}/kelo-service")
        shutil.copy(f"{CERTIFICATES}/development-1.pem",
                    f"{self.folder}/kelo-service/certificate.pem")
        done = self.run_program(f"{BIN}/example-timeline", self.service.host,
                                XDG_STATE_HOME=self.folder)
        trace, *said = done.stdout.splitlines()
        captions = [post["caption"] for post in self.json("timeline", "popular")]
        self.assertRegex(trace, "^GET https://")
        self.assertEqual((done.returncode, done.stderr, said), (0, "", captions))

    def test_finds_the_certificate_of_kelo_serve(self):
        finds_the_certificate(self, f"{BIN}/example-timeline")
        finds_the_certificate(self, f"{BIN}/example-paging", "popular", "1")

    def test_a_certificate_that_cannot_be_read(self):
        done = self.example("paging", "popular", "1", KELO_PIN=f"{self.folder}/none")
        self.assertEqual(
            (done.returncode, done.stdout, done.stderr),
            (1, "", f"KELO_PIN: no certificate can be read from {self.folder}/none\n"))

    def test_loops(self):
        for example in LOOPS:
            with self.subTest(example=example):
                self.prints("Signed in as kofi\n", example,
                            KELO_SESSION=self.service.session("kofi"))

    def test_failure(self):
        for example in ("timeline", *LOOPS):
            with self.subTest(example=example):
                done = self.run_program(f"{BIN}/example-{example}", "localhost:1",
                                        KELO_HOST="localhost:1")
                self.assertEqual(done.returncode, 1)

    def test_offline(self):
        done = self.example("offline-test", KELO_HOST="localhost:1")
        self.assertEqual((done.returncode, done.stdout.count("ok  "), done.stderr), (0, 3, ""))

    def test_manual_time(self):
        done = self.example("manual-time", KELO_HOST="localhost:1")
        self.assertEqual((done.returncode, done.stdout.count("ok  "), done.stderr), (0, 6, ""))

    def test_cassette(self):
        file = f"{self.folder}/me.json"
        key = self.service.session("kofi")
        self.prints("kofi\n", "cassette", "record", file, KELO_SESSION=key)
        with open(file) as cassette:
            text = cassette.read()
        self.assertNotIn(key, text)
        [exchange] = json.loads(text)["exchanges"]
        self.assertEqual(exchange["request"]["headerFields"]["kelo-session-id"], "BLANKED")
        self.assertEqual(len(self.service.seen("/users/me")), 1)
        self.prints("kofi\n", "cassette", "play", file)
        self.prints("kofi\n", "cassette", "play", file, KELO_HOST="localhost:1")
        self.assertEqual(len(self.service.seen("/users/me")), 1)
        done = self.example("cassette", "play", f"{self.folder}/nowhere")
        self.assertIn("nowhere cannot be read (errno 2: ", done.stdout)

    def test_own_service(self):
        for certificate, told in (("development-1", (0, "Signed in as mara\n")),
                                  ("development-2", (1, ""))):
            done = self.example("own-service", self.service.host,
                                f"{CERTIFICATES}/{certificate}.pem")
            self.assertEqual((done.returncode, done.stdout), told, done)
        self.assertIn("This is not the service that was expected.", done.stderr)
        self.assertEqual([headers["X-Kelo-Client"] for headers in self.service.headers("/users/me")],
                         ["linux/1.0"])

    def test_signing_in(self):
        done = self.prints("Signed in as kofi\n", "signing-in", "kofi", PASSWORD,
                           KELO_SESSION=self.service.expired_session())
        self.assertEqual(len(self.service.seen("/users/me")), 2, done)
        done = self.example("signing-in", "kofi", "no",
                            KELO_SESSION=self.service.expired_session())
        self.assertEqual((done.returncode, done.stdout), (1, ""))

    def test_a_captcha(self):
        key, url = self.service.captcha_session()
        with subprocess.Popen([f"{BIN}/example-signing-in", "mara", PASSWORD],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True,
                              env={**self.environment, "KELO_SESSION": key}) as program:
            self.assertEqual(program.stdout.readline(), f"Solve {url} and press Enter\n")
            self.service.solve(url)
            said, _ = program.communicate("\n", timeout=60)
        self.assertEqual((program.returncode, said), (0, "Signed in as mara\n"))
        # Nobody solves this one.
        key, url = self.service.captcha_session()
        done = self.example("signing-in", "mara", PASSWORD, KELO_SESSION=key)
        self.assertEqual((done.returncode, done.stdout), (1, f"Solve {url} and press Enter\n"))

    def test_paging(self):
        captions = [post["caption"] for post in self.json("timeline", "popular", "--pages", "3")]
        self.assertGreater(len(captions), 10)
        self.prints("".join(f"{caption}\n" for caption in captions), "paging", "popular", "3")
        # A feed that ends before, and one that breaks off behind its first page.
        self.prints("", "paging", "empty", "3")
        self.service.fault("/timelines/popular", skip=1, type="error", code=500, message="No.")
        done = self.example("paging", "popular", "3")
        self.assertEqual((done.returncode, done.stdout.splitlines()), (1, captions[:5]))

    def test_coroutines(self):
        captions = [post["caption"] for post in self.json("timeline", "popular", "--pages", "2")]
        told = ["Signed in as mara", *captions, "14 sounds"]
        self.prints("".join(f"{line}\n" for line in told), "coroutines", "2")
        self.service.fault("/timelines/popular", type="error", code=500, message="No.")
        done = self.example("coroutines", "2")
        self.assertEqual((done.returncode, done.stdout), (1, "Signed in as mara\n"))

    def test_own_endpoint(self):
        post = self.json("timeline", "popular")[0]["postId"]
        done = self.example("own-endpoint", post)
        counts, text = done.stdout.splitlines()
        sent = json.loads(self.service.fetch(f"posts/{post}"))["data"]
        wanted = f"{sent['loops']['count']} loops, {sent['likes']['count']} likes"
        self.assertEqual((done.returncode, counts), (0, wanted))
        self.assertEqual(json.loads(text)["data"]["longformId"], "lf-unseen")
        self.service.answer(f"/posts/{post}", {"loops": {"count": 1}})
        done = self.example("own-endpoint", post)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("KeloAPI.JsonParseError 3", done.stderr)

    def test_downloads(self):
        posts = self.json("timeline", "popular")
        paths = [urllib.parse.urlsplit(post["videoUrl"]).path for post in posts]
        names = [path.rsplit("/", 1)[1] for path in paths]
        done = self.example("downloads", self.folder, "100")
        self.assertEqual((done.returncode, sorted(done.stdout.splitlines())),
                         (0, sorted(f"{self.folder}/{name}" for name in names)))
        self.assertRegex(done.stderr, r"\d+ of \d+ bytes")
        # The second time all are there; afterwards the newest two are, and one more.
        self.example("downloads", self.folder, "2")
        self.assertEqual([len(self.service.seen(path)) for path in paths], [1] * len(paths))
        self.assertEqual(len(os.listdir(self.folder)), 3)

    def test_uploads(self):
        path = urllib.parse.urlsplit(self.json("timeline", "popular")[0]["videoUrl"]).path
        video = self.service.fetch(path[1:])
        # A box that players pass over makes it more than one segment.
        size = 300_000
        video += size.to_bytes(4, "big") + b"free" + bytes(size - 8)
        self.service.set("processing-time", seconds=0.2)
        file = f"{self.folder}/video.mp4"
        for content, told in ((video, (0, "succeeded\n")), (b"no video", (1, "failed\n"))):
            with open(file, "wb") as stream:
                stream.write(content)
            done = self.example("uploads", file)
            self.assertEqual((done.returncode, done.stdout), told, done)
        sizes = [[segment["bytes"] for segment in upload["segments"]]
                 for upload in self.service.control("GET", "_service/uploads")["uploads"]]
        self.assertEqual(sizes, [[256 << 10, len(video) - (256 << 10)], [8]])

    def test_archives(self):
        self.prints("Dance\nThe loop is seamless (Dance)\n#dance\n#loop\n", "archives", self.folder)
        with open(f"{self.folder}/draft", "rb") as file:
            self.assertEqual(plistlib.load(file)["$archiver"], "NSKeyedArchiver")
        done = self.example("archives", f"{self.folder}/nowhere")
        self.assertEqual((done.returncode, done.stdout), (1, ""))

    def test_limits(self):
        self.prints("14 sounds\n", "limits")
        self.prints("Cancelled.\n", "limits", "cancel")
        self.service.fault("/soundboard", times=2, type="status", status=503)
        self.prints("14 sounds\n", "limits")
        self.assertEqual(self.service.fired(), [2])
        self.service.fault("/soundboard", type="stall")
        self.prints("The service is not answering.\n", "limits")

    def test_observing(self):
        first, second = self.example("observing").stdout.splitlines()
        self.assertRegex(first, r"^GET /users/me: \d+ ms, \d+ ms of them to connect$")
        self.assertRegex(second, r"^GET /users/me: \d+ ms, on a connection that was there$")
        failed = self.example("observing", KELO_HOST="localhost:1").stdout.splitlines()
        self.assertEqual(failed[1::2], ["KeloAPI.HTTP 4"] * 2)
        for line in failed[::2]:
            self.assertRegex(line, r"^GET /users/me: \d+ ms$")

    def test_errors(self):
        later = "Something went wrong. Try again later.\n"
        self.prints("Signed in\n", "errors")
        self.prints("Check your connection and try again.\n", "errors", KELO_HOST="localhost:1")
        self.prints("Sign in again.\n", "errors", KELO_SESSION=self.service.expired_session())
        faults = ((later, "KeloAPI.JsonSyntax", {"type": "body", "body": "{"}),
                  (later, "kelo.example -1", {"type": "body", "body": "{}"}),
                  ("It is full.\n", "kelo.example 507",
                   {"type": "error", "code": 507, "message": "It is full."}))
        for said, logged, fault in faults:
            with self.subTest(**fault):
                self.service.fault("/users/me", **fault)
                self.assertIn(logged, self.prints(said, "errors").stderr)

    def test_phone(self):
        place = f"{self.folder}/group.example.kelo/videos/"
        self.prints(f"{place}\n", "phone", self.folder)
        self.assertTrue(os.path.isdir(place))

    def test_arguments(self):
        self.refuses_arguments("own-service", "signing-in", "paging", "own-endpoint", "downloads",
                               "uploads", "archives", "phone", "coroutines", "cassette")


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

    def test_accepts_the_certificate_that_it_is_given(self):
        with tempfile.TemporaryDirectory() as state:
            own = Service(XDG_STATE_HOME=state)
            self.addCleanup(own.stop)
            pem = f"{state}/kelo-service/certificate.pem"
            for code, environment in ((1, {}), (0, {"XDG_STATE_HOME": state}),
                                      (0, {"KELO_PIN": pem})):
                done = self.feed(KELO_HOST=own.host, **environment)
                self.assertEqual(done.returncode, code, done.stderr)

    def test_finds_the_certificate_of_kelo_serve(self):
        finds_the_certificate(self, f"{BIN}/example-objc-feed", self.folder)

    def test_a_certificate_that_cannot_be_read(self):
        done = self.feed(KELO_PIN=f"{self.folder}/none")
        self.assertEqual((done.returncode, done.stderr),
                         (1, f"KELO_PIN: cannot read {self.folder}/none\n"))

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

    def test_uploads(self):
        file = f"{self.folder}/video.mp4"
        with open(file, "wb") as stream:
            stream.write(bytes(300_000))
        done = self.run_program(f"{BIN}/example-objc-upload", file)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, r"(?m)^\d+ %$")
        upload, = self.service.control("GET", "_service/uploads")["uploads"]
        self.assertEqual([segment["bytes"] for segment in upload["segments"]], [300_000])
        done = self.run_program(f"{BIN}/example-objc-upload", file, KELO_SESSION="nobody's")
        self.assertEqual(done.returncode, 1)
        self.assertNotEqual(done.stderr, "")


if __name__ == "__main__":
    unittest.main()
