"""kelo's downloads and their cache, against a real kelo-service."""

import fcntl
import json
import os
import re
import shutil
import tempfile
import unittest

from case import Case
from service import wait_until


class Files(Case):
    """Each test has a cache of its own."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kelo-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {**type(self).environment, "XDG_DATA_HOME": self.folder}
        self.cache = self.succeeds("cache", "path").rstrip("\n")
        self.limit_rate(0)
        self.service.forget()

    def limit_rate(self, rate):
        self.service.control("POST", "_service/media-rate", {"bytesPerSecond": rate})

    def offers_in(self, record):
        return {offer["rate"]: offer["videoUrl"].split(self.service.host)[1]
                for offer in record["videoUrls"] if offer["format"] == "h264"}

    def offers(self, post):
        """The MP4 offers of a post as {rate: path}."""
        return self.offers_in(self.service.control("GET", f"posts/{post}")["data"])

    def posts(self, count):
        """Posts with all three MP4 offers; the request log starts here."""
        page = self.service.control("GET", "timelines/popular?size=30")["data"]
        found = [str(record["postId"]) for record in page["records"]
                 if set(self.offers_in(record)) == {0, 200, 900}]
        self.assertGreaterEqual(len(found), count)
        self.service.forget()
        return found[:count]

    def best(self, post):
        """The path of a post's best file, and the name that it is kept under."""
        path = self.offers(post)[900]
        self.service.forget()
        return path, path.rsplit("/", 1)[1]

    def fetched(self):
        """The media paths that were asked for since `forget`, in their order."""
        seen = self.service.seen()
        return [one["path"] for one in seen if one["path"].startswith("/media/")]

    def cached(self, name):
        with open(self.cache + name, "rb") as file:
            return file.read()


class Download(Files):
    def test_the_best_file_comes_into_the_cache(self):
        (post,) = self.posts(1)
        path, name = self.best(post)
        self.assertRegex(self.succeeds("download", post),
                         rf"^post {post}: {self.cache}{name} \(\d+ kB\)\n$")
        self.assertEqual(self.fetched(), [path])
        self.assertEqual(self.cached(name), self.service.fetch(path[1:]))
        self.assertEqual(os.listdir(self.cache), [name])

    def test_the_second_time_it_is_cached(self):
        (post,) = self.posts(1)
        _, name = self.best(post)
        first = json.loads(self.succeeds("download", post, "--json"))
        size = os.path.getsize(self.cache + name)
        self.assertEqual(first, {"postId": post, "path": self.cache + name, "bytes": size,
                                 "cached": False})
        self.service.forget()
        self.assertEqual(json.loads(self.succeeds("download", post, "--json")),
                         {**first, "cached": True})
        self.assertIn(f"post {post}, already cached: ", self.succeeds("download", post))
        self.assertEqual(self.fetched(), [])

    def test_the_bitrate_chooses(self):
        (post,) = self.posts(1)
        offers = self.offers(post)
        for bitrate, rate in (("0", 0), ("199.9", 0), ("200", 200), ("899", 200), ("900", 900),
                              ("1e6", 900)):
            with self.subTest(bitrate=bitrate):
                shutil.rmtree(self.cache)
                self.service.forget()
                self.succeeds("download", post, "--bitrate", bitrate)
                self.assertEqual(self.fetched(), [offers[rate]])

    def test_the_most_wanted_comes_first(self):
        posts = self.posts(6)
        paths = {post: self.best(post)[0] for post in posts}
        low, normal, high, second, last, wanted = posts
        self.succeeds("download", low + ":low", normal, high + ":high", second + ":normal",
                      last + ":low", wanted + ":high")
        self.assertEqual(self.fetched(),
                         [paths[post] for post in (high, wanted, normal, second, low, last)])

    def test_one_priority_for_all(self):
        posts = self.posts(3)
        paths = [self.best(post)[0] for post in posts]
        self.succeeds("download", *posts[:2], posts[2] + ":normal", "--priority", "low")
        self.assertEqual(self.fetched(), [paths[2], paths[0], paths[1]])

    def test_a_post_that_is_named_twice(self):
        posts = self.posts(2)
        paths = [self.best(post)[0] for post in posts]
        text = self.succeeds("download", posts[0], posts[1], posts[0] + ":low")
        self.assertEqual(self.fetched(), [paths[1], paths[0]])
        self.assertEqual(text.count("\n"), 2)

    def test_another_directory(self):
        (post,) = self.posts(1)
        _, name = self.best(post)
        place = os.path.join(self.folder, "elsewhere")
        os.mkdir(place)
        for directory in (place, place + "/", os.path.relpath(place)):
            self.succeeds("download", post, "--directory", directory)
        self.assertEqual(len(self.fetched()), 1)
        self.assertEqual((os.listdir(place), os.listdir(self.cache)), ([name], []))


class DownloadFailures(Files):
    def goes_on(self, line, bad, good):
        """One line about a post, the other one's file all the same, and nothing else."""
        done = self.kelo("download", bad, good)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, rf"^kelo: post {bad}: .*{line}.*\n$")
        self.assertRegex(done.stdout, rf"^post {good}: .*\n$")
        self.assertEqual(os.listdir(self.cache), [self.best(good)[1]])

    def test_unknown_post(self):
        (post,) = self.posts(1)
        self.goes_on("There is no such post", "5", post)

    def test_the_service_fails_at_a_file(self):
        for action, line in (({"type": "status", "status": 503}, "responded with the status 503"),
                             ({"type": "reset", "afterBytes": 8000}, "broke off"),
                             ({"type": "close", "afterBytes": 8000}, "broke off")):
            with self.subTest(action=action):
                bad, good = self.posts(2)
                path, name = self.best(bad)
                self.service.fault(path, **action)
                self.goes_on(f"{self.service.host} {line}", bad, good)
                self.assertIn(f"post {bad}: ", self.succeeds("download", bad, good))
                self.assertEqual(self.cached(name), self.service.fetch(path[1:]))
                shutil.rmtree(self.cache)

    def test_posts_without_a_file_for_us(self):
        bad, good = self.posts(2)
        other = {"videoUrl": "https://x.example/a.m3u8", "format": "hls"}
        for offers, line in (({}, "no MP4 file is offered"),
                             ({"videoUrls": []}, "no MP4 file is offered"),
                             ({"videoUrls": 5}, "no MP4 file is offered"),
                             ({"videoUrls": [other, {"format": "h264"}]}, "no MP4"),
                             ({"videoUrls": [{"videoUrl": "https://x.example/v/?a",
                                              "format": "h264"}]}, "no name"),
                             ({"videoUrls": [{"videoUrl": "https://x.example/v/..",
                                              "format": "h264"}]}, "no name")):
            with self.subTest(offers=offers):
                self.service.forget()
                self.service.fault(f"/posts/{bad}", type="body",
                                   body=json.dumps({"data": offers}))
                self.goes_on(line, bad, good)
                shutil.rmtree(self.cache)

    def test_signing_in(self):
        (post,) = self.posts(1)
        key = self.service.expired_session()
        self.fails(3, "Your session has expired", "--session", key, "download", post)
        self.assertEqual(self.fetched(), [])

    def test_a_cache_that_cannot_be_written(self):
        posts = self.posts(2)
        file = os.path.join(self.folder, "file")
        open(file, "w").close()
        done = self.kelo("download", *posts, XDG_DATA_HOME=file)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 2, lines)
        for post, line in zip(posts, lines, strict=True):
            self.assertRegex(line, rf"^kelo: post {post}: .*{file}.*: Not a directory$")

    @unittest.skipIf(os.geteuid() == 0, "root may write anywhere")
    def test_a_read_only_cache(self):
        (post,) = self.posts(1)
        os.chmod(self.cache, 0o500)
        self.addCleanup(os.chmod, self.cache, 0o700)
        self.fails(1, "Permission denied", "download", post)
        self.assertEqual(os.listdir(self.cache), [])

    def test_no_place_for_a_cache(self):
        (post,) = self.posts(1)
        for arguments in (["download", post], ["cache", "list"], ["cache", "trim", "1"],
                          ["cache", "path"]):
            with self.subTest(arguments=arguments):
                # Neither names a directory: a relative path counts for nothing.
                self.fails(1, "no directory for the cache", *arguments, XDG_DATA_HOME="", HOME="x")
        self.assertEqual(self.service.seen(f"/posts/{post}"), [])


class Cache(Files):
    def fill(self, *ages):
        """Files of a hundred bytes and more, named by their ages in seconds."""
        now = os.stat(self.cache).st_mtime
        for age in ages:
            with open(f"{self.cache}{age}.mp4", "wb") as file:
                file.write(bytes(100 + age))
            os.utime(f"{self.cache}{age}.mp4", (now - age, now - age))

    def test_list(self):
        self.assertEqual(self.succeeds("cache", "list"), "The cache is empty.\n")
        self.assertEqual(self.succeeds("cache", "list", "--json"), "")
        self.fill(90, 200_000, 7200, 3_000_000)
        lines = self.succeeds("cache", "list").splitlines()
        self.assertEqual([line.split() for line in lines],
                         [["1", "min", "190", "B", "90.mp4"],
                          ["2", "h", "7", "kB", "7200.mp4"],
                          ["2", "d", "200", "kB", "200000.mp4"],
                          ["34", "d", "3.0", "MB", "3000000.mp4"],
                          ["4", "files,", "3.2", "MB"]])
        files = self.json("cache", "list")
        self.assertEqual([(file["name"], file["bytes"]) for file in files],
                         [("90.mp4", 190), ("7200.mp4", 7300), ("200000.mp4", 200_100),
                          ("3000000.mp4", 3_000_100)])
        for file in files:
            self.assertRegex(file["modified"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")

    def test_downloads_in_the_making_do_not_count(self):
        self.fill(1, 2)
        name = f"{self.cache}.download-{'0' * 32}.part"
        with open(name, "wb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            self.assertIn("2 files", self.succeeds("cache", "list"))
            self.assertEqual(self.succeeds("cache", "trim", "1"), "removed 0 files, 2 files left\n")
            self.assertTrue(os.path.exists(name))
        self.succeeds("cache", "list")
        self.assertFalse(os.path.exists(name))

    def test_trim_keeps_one_more(self):
        self.fill(1, 2, 3, 4, 5)
        self.assertEqual(self.succeeds("cache", "trim", "9"), "removed 0 files, 5 files left\n")
        self.assertEqual(self.succeeds("cache", "trim", "2"), "removed 2 files, 3 files left\n")
        self.assertEqual(sorted(os.listdir(self.cache)), ["1.mp4", "2.mp4", "3.mp4"])
        self.assertEqual(json.loads(self.succeeds("cache", "trim", "0", "--json")),
                         {"removed": 2, "left": 1})
        self.assertEqual(os.listdir(self.cache), ["1.mp4"])
        self.assertIn("the newest N and one more are kept",
                      " ".join(self.succeeds("cache", "trim", "--help").split()))

    def test_path(self):
        path = self.succeeds("cache", "path")
        self.assertRegex(path, rf"^{self.folder}/.*/videos/\n$")
        self.assertTrue(os.path.isdir(path[:-1]))
        self.assertEqual(json.loads(self.succeeds("cache", "path", "--json")),
                         {"directory": path[:-1]})

    def test_a_cache_that_is_not_there(self):
        file = os.path.join(self.folder, "file")
        open(file, "w").close()
        for arguments in (["list"], ["trim", "1"]):
            self.fails(1, "Not a directory", "cache", *arguments, XDG_DATA_HOME=file)

    def test_needs_no_service(self):
        self.succeeds("cache", "list", KELO_HOST="localhost:1")
        self.assertEqual(self.service.seen(), [])


class Bars(Files):
    """At a terminal."""

    @staticmethod
    def frames(console):
        """What was shown one over the other."""
        return console.output.split("\r\x1b[J")

    def test_one_bar_with_speed_and_time_left(self):
        first, low, high = self.posts(3)
        self.limit_rate(20_000)
        console = self.console("download", first, low + ":low", high + ":high", columns=120)
        self.finishes(console, 0)
        frames = self.frames(console)
        bars = [re.fullmatch(r"[█░]{24} +(\d+) %, \d+ k?B of \d+ kB((?:, \d+ kB/s, \d+ s left)?)"
                             r"(?:, \d+ kB/s)?, post (\d+) \((\d) of 3\)", frame)
                for frame in frames if " %" in frame]
        self.assertNotIn(None, bars, frames)
        shares = [int(bar[1]) for bar in bars]
        self.assertTrue(any(0 < share < 100 for share in shares), shares)
        self.assertTrue(any(bar[2] for bar in bars), frames)
        self.assertEqual(sorted({(bar[4], bar[3]) for bar in bars}),
                         [("1", high), ("2", first), ("3", low)])
        # What stays are the files.
        self.assertEqual([frame.split(":")[0] for frame in frames if frame.startswith("post ")],
                         [f"post {post}" for post in (high, first, low)])

    def test_narrow_terminals(self):
        (post,) = self.posts(1)
        self.limit_rate(20_000)
        for columns, bar in ((60, True), (40, True), (24, False), (5, False)):
            with self.subTest(columns=columns):
                folder = tempfile.mkdtemp(dir=self.folder)
                console = self.console("download", post, columns=columns, XDG_DATA_HOME=folder)
                self.finishes(console, 0)
                bars = [frame for frame in self.frames(console)[1:] if not frame.startswith("post")]
                self.assertTrue(any(bars))
                # Behind the bar there is room for what Ctrl-C leaves there.
                self.assertLess(max(map(len, bars)) + len("^C"), columns, bars)
                self.assertEqual(any("░" in one for one in bars), bar, bars)
                # A bar stays, also when there is a speed to tell.
                self.assertLessEqual({one[0] in "░█" for one in bars if "%" in one}, {bar}, bars)
                self.assertFalse(any("post" in one for one in bars), bars)

    def test_no_bar_where_nothing_can_be_written_over(self):
        (post,) = self.posts(1)
        for kind in ("dumb", ""):
            folder = tempfile.mkdtemp(dir=self.folder)
            console = self.console("download", post, TERM=kind, XDG_DATA_HOME=folder)
            self.finishes(console, 0)
            self.assertRegex(console.output, rf"^post {post}: [^\x1b\r]*\r\n$")

    def test_control_c_leaves_no_half_file(self):
        (post,) = self.posts(1)
        self.limit_rate(10_000)
        console = self.console("download", post)
        console.answer(" %, ", "\x03")
        self.finishes(console, 130)
        self.assertEqual(os.listdir(self.cache), [])
        self.assertEqual(self.frames(console)[-1], "kelo: interrupted; nothing was kept\r\n")

    def test_control_c_where_there_is_no_bar(self):
        (post,) = self.posts(1)
        path = self.best(post)[0]
        self.service.fault(path, type="delay", milliseconds=60000)
        console = self.console("download", post, TERM="dumb")
        wait_until(lambda: path in self.fetched())
        console.type("\x03")
        self.finishes(console, 130)
        self.assertEqual(console.output, "^C\r\nkelo: interrupted; nothing was kept\r\n")

    def test_control_c_tells_what_was_kept(self):
        first, second = self.posts(2)
        name = self.best(first)[1]
        path = self.best(second)[0]
        self.service.fault(path, type="delay", milliseconds=60000)
        console = self.console("download", first, second)
        console.expect(f"post {first}: ")
        wait_until(lambda: path in self.fetched())
        console.type("\x03")
        self.finishes(console, 130)
        self.assertEqual(os.listdir(self.cache), [name])
        self.assertIn("kelo: interrupted; kept 1 file of 2\r\n", console.output)

    def test_control_c_before_the_posts_are_read(self):
        self.service.fault("/posts/*", type="delay", milliseconds=60000)
        console = self.console("download", "1")
        wait_until(lambda: self.service.seen("/posts/1"))
        console.type("\x03")
        self.finishes(console, 130)
        self.assertIn("kelo: interrupted; nothing was kept\r\n", console.output)

    def test_a_failure_at_the_terminal(self):
        (post,) = self.posts(1)
        console = self.console("download", "5", post)
        self.finishes(console, 1)
        self.assertIn("kelo: post 5: the service says: There is no such post\r\n", console.output)


if __name__ == "__main__":
    unittest.main()
