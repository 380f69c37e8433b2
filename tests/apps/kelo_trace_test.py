"""kelo --trace: what is in the file, what must not be, and that it is whole however kelo ends."""

import json
import os
import signal
import tempfile
import unittest
import xml.etree.ElementTree

from case import PASSWORD, Case
from service import KEY, wait_until

SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts")


class Trace:
    """The events of a file, each of the form that viewers read."""

    def __init__(self, test, path):
        with open(path, encoding="utf-8") as file:
            self.text = file.read()
        self.events = json.loads(self.text)
        test.assertEqual(self.events.pop(0)["ph"], "M")
        for event in self.events:
            test.assertLessEqual({"name", "ph", "ts", "pid", "tid"}, set(event))
            test.assertIn(event["ph"], "BEX")
            test.assertEqual("dur" in event, event["ph"] == "X", event)
        self.exchanges = self._exchanges(test)

    def _exchanges(self, test):
        """Those of one row follow one another, and hold what happens on it meanwhile."""
        exchanges, open_ones = [], {}
        for event in self.events:
            row = event["tid"]
            if event["ph"] == "B":
                test.assertNotIn(row, open_ones)
                open_ones[row] = {**event, "hops": [], "steps": []}
                exchanges.append(open_ones[row])
            elif event["ph"] == "E":
                exchange = open_ones.pop(row)
                exchange["error"] = event["args"]["error"]
                for inner in exchange["hops"] + exchange["steps"]:
                    test.assertGreaterEqual(inner["ts"], exchange["ts"])
                    test.assertLessEqual(inner["ts"] + inner["dur"], event["ts"])
            else:
                open_ones[row]["hops" if event["cat"] == "hop" else "steps"].append(event)
        return exchanges

    def names(self):
        return [exchange["name"] for exchange in self.exchanges]

    def hops(self):
        return [hop["args"] for exchange in self.exchanges for hop in exchange["hops"]]


class Tracing(Case):
    def setUp(self):
        super().setUp()
        self.path = self.enterContext(tempfile.TemporaryDirectory()) + "/trace.json"

    def trace(self):
        return Trace(self, self.path)

    def traced(self, *arguments, code=0, **more):
        done = self.kelo("--trace", self.path, *arguments, **more)
        self.assertEqual(done.returncode, code, done)
        return self.trace()

    def a_post(self):
        return self.json("timeline", "popular", "--size", "1")[0]["postId"]

    def test_one_connection_for_the_pages_of_a_feed(self):
        with open(self.path, "w", encoding="utf-8") as file:
            file.write("an old trace " * 1000)
        trace = self.traced("timeline", "popular", "--pages", "3")
        self.assertEqual(trace.names(), ["GET /timelines/popular"] * 3)
        self.assertEqual({event["tid"] for event in trace.events}, {1})
        self.assertEqual([hop["reusedConnection"] for hop in trace.hops()], [False, True, True])
        for place, exchange in enumerate(trace.exchanges):
            self.assertEqual((exchange["cat"], exchange["error"]), ("call", None))
            steps = [step["name"] for step in exchange["steps"]]
            new = [] if place else ["name lookup", "connect", "TLS"]
            self.assertEqual(steps, [*new, "send and wait", "receive"])
            self.assertEqual(sum(step["dur"] for step in exchange["steps"]),
                             exchange["hops"][0]["dur"])
        for hop in trace.hops():
            self.assertEqual((hop["protocol"], hop["status"], hop["error"]), ("http/1.1", 200, None))
            self.assertEqual(hop["url"], f"https://{self.service.host}/timelines/popular")
            self.assertGreater(hop["bytesReceived"], 1000)
            self.assertGreater(hop["bytesSent"], 100)

    def test_downloads_and_uploads(self):
        posts = [post["postId"] for post in self.json("timeline", "popular", "--size", "3")]
        folder = os.path.dirname(self.path)
        trace = self.traced("download", *posts, "--directory", folder)
        self.assertEqual([exchange["cat"] for exchange in trace.exchanges],
                         ["call"] * 3 + ["download"] * 3)
        self.assertEqual({exchange["tid"] for exchange in trace.exchanges[:3]}, {1, 2, 3})
        files = [name for name in os.listdir(folder) if name.endswith(".mp4")]
        self.assertEqual(len(files), 3)
        sizes = sorted(os.path.getsize(f"{folder}/{name}") for name in files)
        received = sorted(hop["bytesReceived"] for hop in trace.hops()[3:])
        for size, bytes_received in zip(sizes, received, strict=True):
            self.assertGreater(bytes_received, size)
            self.assertLess(bytes_received, size + 2000)

        self.service.set("processing-time", seconds=0.1)
        size = os.path.getsize(f"{folder}/{files[0]}")
        trace = self.traced("upload", f"{folder}/{files[0]}")
        sent = [hop["bytesSent"] for hop in trace.hops() if hop["bytesSent"] > size]
        self.assertEqual(len(sent), 1)

    def test_redirects_are_hops(self):
        self.service.fault("/users/me", type="redirect", location=f"https://{self.service.host}"
                                                                  "/users/1004")
        trace = self.traced("me")
        self.assertEqual(trace.names(), ["GET /users/me"])
        self.assertEqual([(hop["status"], hop["url"].rpartition("/")[2]) for hop in trace.hops()],
                         [(302, "me"), (200, "1004")])

    def test_no_secrets(self):
        host = self.service.host
        post = self.a_post()
        key = self.service.expired_session()
        self.service.answer(f"/posts/{post}", {"postId": post, "videoUrls": [
            {"videoUrl": f"https://{host}/media/none.mp4?signature=sesame", "format": "h264",
             "rate": 0, "id": 1}]})
        video = f"{os.path.dirname(self.path)}/video.mp4"
        with open(video, "wb") as file:
            file.write(b"no video")
        self.service.set("processing-time", seconds=0.1)
        redirect = {"type": "redirect", "location": f"https://u:sesame@{host}/users/me?t=sesame"}
        elsewhere = {"type": "redirect", "location": "nowhere://u:sesame@h/?t=sesame"}
        user = ("--user", "kofi", "--password", PASSWORD)
        secrets = ["sesame", PASSWORD, key, KEY]
        for code, arguments, faults in (
                (0, ("login", *user), {}),
                (0, ("--session", key, *user, "me"), {}),
                (0, ("timeline", "home", "--pages", "2"), {}),
                (0, ("like", post), {}),
                (1, ("upload", video), {}),
                (1, ("download", post), {}),
                (0, ("--session", KEY, "me"), redirect),
                (1, ("--session", KEY, "me"), elsewhere),
                (0, ("logout",), {})):
            with self.subTest(arguments=arguments):
                if faults:
                    self.service.fault("/users/me", **faults)
                trace = self.traced(*arguments, code=code)
                if arguments[0] != "logout":
                    self.assertGreater(len(trace.exchanges), 0)
                kept = [headers.get("kelo-session-id", "") for path in ("/users/me", "/timelines/home")
                        for headers in self.service.headers(path)]
                for secret in filter(None, {*secrets, *kept}):
                    self.assertNotIn(secret, trace.text)
                for sign in ("?", "Cookie", "session-id", "password"):
                    self.assertNotIn(sign, trace.text)
        self.assertGreater(len({*kept} - {"", KEY, key}), 0, "a session was made, and used")

    def test_whole_after_a_failure(self):
        trace = self.traced("--host", "localhost:1", "me", code=1)
        self.assertEqual([exchange["error"] for exchange in trace.exchanges], ["KeloAPI.HTTP 4"])
        self.assertEqual([hop["error"] for hop in trace.hops()], ["KeloAPI.HTTP 4"])
        self.service.fault("/users/me", type="error", code=5, message="No")
        self.assertEqual(self.traced("me", code=1).exchanges[0]["error"], None)

    def interrupted(self, path, *arguments):
        """What is in the file after Ctrl-C, once the service has this request."""
        self.service.forget()
        self.service.fault(path, type="stall", afterBytes=300)
        program = self.start("--trace", self.path, *arguments)
        wait_until(lambda: self.service.fired() == [1])
        program.send_signal(signal.SIGINT)
        program.communicate(timeout=60)
        self.assertEqual(program.returncode, 130)
        return self.trace()

    def test_whole_after_ctrl_c(self):
        trace = self.interrupted("/timelines/popular", "timeline", "popular")
        self.assertEqual(trace.names(), ["GET /timelines/popular"])
        self.assertNotIn("error", trace.exchanges[0], "it has no end")
        post = self.a_post()
        trace = self.interrupted("/media/*", "download", post)
        self.assertEqual([exchange["error"] for exchange in trace.exchanges],
                         [None, "KeloAPI.HTTP 1"])

    def test_whole_while_kelo_asks(self):
        console = self.console("--trace", self.path, "--session", self.service.expired_session(),
                               "me")
        console.expect("User name (empty to give up): ")
        self.assertEqual(self.trace().names(), ["GET /users/me"])
        console.type("\x03")
        self.finishes(console, 130)
        self.assertEqual(self.trace().names(), ["GET /users/me"])

    def test_a_picture_of_it(self):
        trace = self.traced("timeline", "popular", "--pages", "3")
        drawn = self.run_program(f"{SCRIPTS}/trace-picture", self.path)
        self.assertEqual((drawn.returncode, drawn.stderr), (0, ""))
        rectangles = [one.get("class") for one in xml.etree.ElementTree.fromstring(drawn.stdout)
                      if one.tag.endswith("rect") and one.get("height") == "18"]
        self.assertEqual(rectangles.count("exchange"), 3)
        self.assertEqual(rectangles.count("tls"), 1)
        self.assertEqual(len(rectangles), 3 + sum(len(one["steps"]) for one in trace.exchanges))

    def test_nothing_to_tell(self):
        self.assertEqual(self.traced("cache", "list").events, [])

    def test_a_file_that_cannot_be_written(self):
        for path, why in (("/nowhere/trace", "No such file"), ("/dev/full", "No space left"),
                          (os.path.dirname(self.path), "Is a directory")):
            with self.subTest(path=path):
                self.fails(1, f"cannot write the trace {path}: {why}", "--trace", path, "me")
        self.assertEqual(self.service.seen(), [])


if __name__ == "__main__":
    unittest.main()
