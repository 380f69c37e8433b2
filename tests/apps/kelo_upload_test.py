"""kelo upload: files of all kinds, a service that fails in the middle, and a user who stops it."""

import hashlib
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from case import KELO, PASSWORD, Case
from service import wait_until

MEBIBYTE = 1 << 20
NOT_UPLOADED = "kelo: interrupted; the video is not uploaded\n"


def box(kind, content):
    return (8 + len(content)).to_bytes(4, "big") + kind + content


def mp4(size):
    """A file of that size whose outermost boxes are an MP4's; what is in them is anything."""
    head = box(b"ftyp", b"isom") + box(b"moov", bytes(range(256)))
    pattern = hashlib.sha256(b"kelo").digest() + bytes(5)  # of a length that no segment has
    content = size - len(head) - 8
    return head + box(b"mdat", (pattern * (content // len(pattern) + 1))[:content])


class Upload(Case):
    def setUp(self):
        super().setUp()
        self.service.set("processing-time", seconds=0)
        self.service.set("upload-rate", bytesPerSecond=0)
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def file(self, content, name="video.mp4"):
        path = os.path.join(self.folder.name, name)
        with open(path, "wb") as file:
            file.write(content)
        return path

    def uploads(self):
        return self.service.control("GET", "_service/uploads")["uploads"]

    def puts(self):
        return self.service.seen(method="PUT")

    def served(self, media_id):
        return self.service.fetch(f"media/longforms/{media_id}.mp4")

    def uploaded(self, content, *arguments):
        """Uploads these bytes, compares what is served, and returns the upload's identifier."""
        text = self.succeeds("upload", self.file(content), *arguments)
        match = re.fullmatch(r"video (\w+): succeeded, (\d+) bytes\n", text)
        self.assertIsNotNone(match, text)
        self.assertEqual(int(match[2]), len(content))
        self.assertTrue(self.served(match[1]) == content)
        return match[1]


class UploadFiles(Upload):
    def test_is_served_as_it_was_sent(self):
        content = mp4(1_000_000)
        self.uploaded(content)
        self.uploaded(content, "--segment-size", "1000000")
        self.uploaded(content, "--segment-size", "999999", "--parallel", "1")
        self.uploaded(content, "--segment-size", "10007", "--parallel", "16")

    def test_segments_leave_no_gap(self):
        self.uploaded(mp4(100_001), "--segment-size", "10000", "--parallel", "3")
        segments = self.uploads()[-1]["segments"]
        self.assertEqual([one["index"] for one in segments], list(range(11)))
        self.assertEqual([one["bytes"] for one in segments], [10000] * 10 + [1])
        self.assertEqual(len(self.puts()), 11)

    def test_tiny_segments(self):
        media_id = self.uploaded(mp4(400), "--segment-size", "1", "--parallel", "8")
        self.assertEqual(len(self.puts()), 400)
        self.assertEqual([one["path"] for one in self.service.seen(method="POST")],
                         ["/upload/longform-videos", f"/upload/longform-videos/{media_id}"])

    def test_ends_the_upload_once_however_the_last_segments_end(self):
        content = mp4(800)
        path = self.file(content)
        for run in range(10):
            before = len(self.service.seen(method="POST"))
            self.succeeds("upload", path, "--segment-size", "50", "--parallel", "16")
            self.assertEqual(len(self.service.seen(method="POST")) - before, 2, run)

    def test_waits_as_long_as_the_service_asks(self):
        self.service.set("processing-time", seconds=0.01)
        for info, least in (({"state": "pending", "checkAfterSecs": 2.5}, 2.5),
                            ({"state": "in_progress", "checkAfterSecs": 0}, 0),
                            ({"state": "in_progress", "checkAfterSecs": -5}, 0),
                            ({"state": "pending"}, 1), (None, 1)):
            with self.subTest(info=info):
                self.service.answer("/upload/*", {"mediaId": "m", "processingInfo": info} if info
                                    else {"mediaId": "m"}, method="GET")
                start = time.monotonic()
                self.uploaded(mp4(400))
                self.assertGreaterEqual(time.monotonic() - start, least)
                self.assertLess(time.monotonic() - start, least + 20)
        self.assertEqual(self.service.fired(), [1] * 5)

    def test_json(self):
        content = mp4(5000)
        told = json.loads(self.succeeds("upload", self.file(content), "--json"))
        self.assertEqual(told, {"mediaId": told["mediaId"], "state": "succeeded", "size": 5000})
        self.assertTrue(self.served(told["mediaId"]) == content)

    def test_what_is_no_video_fails(self):
        self.fails(1, "the service cannot process the video", "upload",
                   self.file(b"no video", "notes.txt"))
        self.assertTrue(self.uploads()[-1]["finalized"])

    def test_files_that_cannot_be_uploaded(self):
        for path, line in ((os.path.join(self.folder.name, "missing"), "No such file"),
                           (self.folder.name, "it is not a file"),
                           ("/dev/null", "it is not a file"),
                           (self.file(b"", "empty"), "it is empty")):
            with self.subTest(path=path):
                self.fails(2, line, "upload", path)
        before = len(self.uploads())
        self.fails(2, "No such file", "upload", "")
        self.assertEqual(len(self.uploads()), before)

    def test_a_file_that_becomes_shorter(self):
        path = self.file(mp4(4 * MEBIBYTE))
        self.service.set("upload-rate", bytesPerSecond=1_000_000)
        process = self.start("upload", path, "--segment-size", "300000", "--parallel", "1")
        wait_until(self.puts)
        os.truncate(path, 700_000)
        self.assertIn("became shorter while it was uploaded", process.communicate(timeout=30)[1])
        self.assertEqual(process.returncode, 1)

    def test_waits_as_the_service_asks(self):
        self.service.set("processing-time", seconds=1)
        start = time.monotonic()
        self.uploaded(mp4(5000))
        self.assertGreaterEqual(time.monotonic() - start, 1)
        asked = [one for one in self.service.seen() if one["path"].endswith("/status")]
        # Every eighth of a second.
        self.assertIn(len(asked), range(4, 10))

    def test_segments_are_under_way_together(self):
        self.service.set("upload-rate", bytesPerSecond=1_000_000)
        self.uploaded(mp4(4_000_000), "--segment-size", "500000", "--parallel", "8")
        # One after the other they would need no more than one connection.
        self.assertGreater(len({one["connection"] for one in self.puts()}), 4)

    @unittest.skipIf(os.environ.get("KELO_SANITIZE"), "sanitizers take memory of their own")
    def test_peak_memory(self):
        path = self.file(mp4(64 * MEBIBYTE))
        for parallel in (1, 4):
            # A process of its own, so that no other child counts.
            code = ("import resource, subprocess, sys\n"
                    "done = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL)\n"
                    "print(done.returncode, "
                    "resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
            done = self.run_program(sys.executable, "-c", code, KELO, "upload", path,
                                    "--segment-size", str(4 * MEBIBYTE),
                                    "--parallel", str(parallel))
            code, kibibytes = map(int, done.stdout.split())
            self.assertEqual(code, 0, done)
            print(f"peak memory with {parallel} of 4 MiB under way: {kibibytes / 1024:.1f} MiB")
            self.assertLess(kibibytes * 1024, (2 * 4 * parallel + 32) * MEBIBYTE)


class UploadFailures(Upload):
    def test_a_reset_of_one_segment(self):
        # Each connection's first request is not sent again by the library itself.
        self.service.fault(method="PUT", type="reset", afterBodyBytes=50_000, times=3)
        self.uploaded(mp4(1_000_000), "--segment-size", "100000")
        self.assertEqual(self.service.fired(), [3])
        self.assertGreater(len(self.puts()), 11)

    def test_a_segment_is_sent_three_times_unless_the_service_refuses_it(self):
        for times, error, line, sent in (
                (2, {"code": 500, "status": 500}, None, 3),
                (0, {"code": 500, "status": 500, "message": "Out of order"}, "Out of order", 3),
                (1, {"code": 400, "message": "Not so"}, "Not so", 1)):
            with self.subTest(times=times, error=error):
                self.service.forget()
                self.service.fault(method="PUT", type="error", times=times, **error)
                if line:
                    self.fails(1, f"the service says: {line}", "upload", self.file(mp4(1000)))
                else:
                    self.uploaded(mp4(1000))
                self.assertEqual(len(self.puts()), sent)
                self.assertEqual(self.uploads()[-1]["finalized"], line is None)

    def test_failing_at_the_end(self):
        # The first POST begins the upload.
        path = self.file(mp4(1000))
        end = {"path": "/upload/longform-videos/*", "method": "POST"}
        self.service.fault(**end, type="status", status=503)
        self.succeeds("upload", path)
        self.service.fault(**end, type="error", code=400, message="Segment 3 is missing")
        self.fails(1, "the service says: Segment 3 is missing", "upload", path)
        self.assertEqual(self.service.fired(), [1, 1])

    def test_failing_while_it_asks(self):
        self.service.set("processing-time", seconds=0.5)
        self.service.fault(method="GET", path="/upload/*", type="status", status=502)
        self.uploaded(mp4(1000))
        self.assertEqual(self.service.fired(), [1])

    def test_an_upload_that_expires(self):
        self.service.set("upload-rate", bytesPerSecond=200_000)
        process = self.start("upload", self.file(mp4(600_000)), "--segment-size", "100000",
                             "--parallel", "1")
        wait_until(self.puts)
        self.service.control("POST", f"_service/uploads/{self.uploads()[-1]['mediaId']}/expire",
                             {})
        self.assertEqual(process.communicate(timeout=30)[1],
                         "kelo: the service says: The upload has expired\n")
        self.assertEqual(process.returncode, 1)

    def test_an_answer_that_names_no_upload(self):
        self.service.fault("/upload/longform-videos", type="body", body='{"data": {}}')
        self.fails(1, "the service sent no upload", "upload", self.file(mp4(1000)))
        self.service.fault("/upload/longform-videos", type="body",
                           body='{"data": {"mediaId": "x", "processingInfo": {}}}')
        self.fails(1, "sent an invalid response", "upload", self.file(mp4(1000)))

    def test_nobody_is_signed_in(self):
        self.fails(3, "Please sign in", "--session", "", "upload", self.file(mp4(1000)))


class UploadSessions(Upload):
    """The session is refused in the middle: each refused segment is sent without its bytes by the
    library, and once more by kelo."""

    def signed_in(self, content, *arguments, key):
        text = self.succeeds("--session", key, "--user", "mara", "--password", PASSWORD, "upload",
                             self.file(content), *arguments)
        media_id = text.split()[1][:-1]
        self.assertTrue(self.served(media_id) == content)
        return media_id

    def test_one_segment_is_refused(self):
        content = mp4(50_000)
        for code in (100, 103):
            with self.subTest(code=code):
                self.service.forget()
                self.service.fault(method="PUT", type="error", code=code, message="Again", skip=2)
                self.signed_in(content, "--segment-size", "10000", "--parallel", "1",
                               key=self.service.session())
                sent = [(one["query"], one["bodyBytes"]) for one in self.puts()]
                self.assertEqual(sent, [
                    ("segmentIndex=0", 10000), ("segmentIndex=1", 10000),
                    ("segmentIndex=2", 10000), ("segmentIndex=2", 0), ("segmentIndex=2", 10000),
                    ("segmentIndex=3", 10000), ("segmentIndex=4", 10000)])

    def test_the_session_expires_with_segments_under_way(self):
        self.service.set("upload-rate", bytesPerSecond=400_000)
        content = mp4(2_000_000)
        key = self.service.session()
        process = self.start("--session", key, "--user", "mara", "--password", PASSWORD, "upload",
                             self.file(content), "--segment-size", "100000", "--parallel", "4")
        wait_until(lambda: len(self.puts()) >= 6)
        self.service.control("POST", f"_service/sessions/{key}/expire", {})
        output, errors = process.communicate(timeout=60)
        self.assertEqual((process.returncode, errors), (0, ""))
        self.assertTrue(self.served(output.split()[1][:-1]) == content)
        empty = [one for one in self.puts() if one["bodyBytes"] == 0]
        self.assertIn(len(empty), range(1, 9))
        # Signing in once is enough, however late the last of the old session's segments ends.
        self.assertEqual(len(self.service.calls("/sessions")), 1)

    def test_expires_twice(self):
        self.service.fault(method="PUT", type="error", code=103, message="Again", skip=1)
        self.service.fault(method="PUT", type="error", code=103, message="Again", skip=6)
        self.signed_in(mp4(50_000), "--segment-size", "5000", "--parallel", "1",
                       key=self.service.session())
        self.assertEqual(self.service.fired(), [1, 1])
        self.assertEqual(len(self.service.calls("/sessions")), 2)

    def test_every_other_call_is_refused_once(self):
        for method, path in (("POST", "/upload/longform-videos"),
                             ("POST", "/upload/longform-videos/*"),
                             ("GET", "/upload/longform-videos/*")):
            with self.subTest(method=method, path=path):
                self.service.set("processing-time", seconds=0.3)
                self.service.forget()
                self.service.fault(path, method=method, type="error", code=103, message="Again")
                self.signed_in(mp4(5000), key=self.service.session())
                self.assertEqual(self.service.fired(), [1])

    def test_nobody_can_sign_in_again(self):
        self.service.fault(method="PUT", type="error", code=103, message="Again", skip=1)
        self.fails(3, "Again", "upload", self.file(mp4(50_000)), "--segment-size", "10000")

    def test_a_service_that_refuses_every_session(self):
        self.service.fault(method="PUT", type="error", code=103, message="Again", times=0)
        self.fails(3, "Again", "--user", "mara", "--password", PASSWORD, "--session",
                   self.service.session(), "upload", self.file(mp4(50_000)),
                   "--segment-size", "10000", "--parallel", "2")


class UploadInterrupted(Upload):
    def interrupted(self, *arguments, until):
        process = self.start("upload", *arguments)
        wait_until(until)
        start = time.monotonic()
        process.send_signal(signal.SIGINT)
        output, errors = process.communicate(timeout=20)
        self.assertLess(time.monotonic() - start, 10)
        self.assertEqual((process.returncode, output), (130, ""))
        return errors

    def under_way(self, count):
        """Segments arrive: control requests have connections of their own."""
        return self.service.control("GET", "_service/connections")["open"] > count

    def test_in_the_middle_of_segments(self):
        self.service.set("upload-rate", bytesPerSecond=100_000)
        before = len(self.uploads())
        errors = self.interrupted(self.file(mp4(8 * MEBIBYTE)), "--segment-size", "1000000",
                                  until=lambda: len(self.uploads()) > before
                                  and self.under_way(3))
        self.assertEqual(errors, NOT_UPLOADED)
        self.assertFalse(self.uploads()[-1]["finalized"])

    def test_while_an_answer_is_awaited(self):
        for fault in ({"method": "PUT", "type": "stall", "times": 0},
                      {"method": "POST", "type": "delay", "milliseconds": 30000}):
            with self.subTest(fault=fault):
                self.service.forget()
                self.service.fault(**fault)
                errors = self.interrupted(self.file(mp4(5000)),
                                          until=lambda: self.service.fired() == [1])
                self.assertEqual(errors, NOT_UPLOADED)

    def test_between_two_tries(self):
        self.service.fault(method="PUT", type="error", code=500, status=500, times=0)
        file = self.file(mp4(5000))
        for _ in range(20):  # on a busy machine the moment may pass unseen
            self.service.forget_requests()
            process = self.start("upload", file)
            wait_until(lambda: len(self.puts()) >= 2 or process.poll() is not None)
            if len(self.puts()) == 2:
                process.send_signal(signal.SIGINT)
            output, errors = process.communicate(timeout=20)
            if process.returncode == 130:
                break
        self.assertEqual((process.returncode, output), (130, ""))
        self.assertEqual(errors, NOT_UPLOADED)

    def test_while_the_video_is_processed(self):
        self.service.set("processing-time", seconds=20)
        self.service.forget()
        # Once kelo asks for the state, it has heard that the video is there.
        errors = self.interrupted(self.file(mp4(5000)),
                                  until=lambda: self.service.seen(method="GET"))
        self.assertIn("interrupted; the service has the video and is processing it", errors)

    def test_at_a_terminal(self):
        self.service.set("upload-rate", bytesPerSecond=100_000)
        console = self.console("upload", self.file(mp4(2 * MEBIBYTE)), "--parallel", "2",
                               "--segment-size", "500000")
        console.answer(" MB", "\x03")
        self.finishes(console, 130)
        self.assertTrue(console.output.endswith(
            "\r\x1b[Jkelo: interrupted; the video is not uploaded\r\n"), console.output)

    def test_at_a_question(self):
        self.service.fault(method="PUT", type="error", code=103, message="Again")
        console = self.console("upload", self.file(mp4(5000)))
        console.answer("User name", "\x03")
        self.finishes(console, 130)


class UploadProgress(Upload):
    def test_one_bar_at_a_terminal(self):
        self.service.set("upload-rate", bytesPerSecond=2_000_000)
        self.service.set("processing-time", seconds=1)
        console = self.console("upload", self.file(mp4(2_000_000)), "--segment-size", "200000")
        self.finishes(console, 0)
        shown = [int(one) for one in re.findall(r"[█░] +(\d+) %, [\d.]+ [kM]?B of 2\.0 MB", console.output)]
        self.assertGreater(len(set(shown)), 1)
        self.assertEqual(shown, sorted(shown))
        self.assertEqual(shown[-1], 100)
        self.assertIn("the service is processing it", console.output)
        self.assertRegex(console.output.splitlines()[-1], r"video \w+: succeeded")

    def test_silent_elsewhere(self):
        done = self.kelo("upload", self.file(mp4(100_000)))
        self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
