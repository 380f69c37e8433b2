"""Uploads of long-form videos to kelo-service."""

import base64
import hashlib
import random
import select
import time
import unittest

from route_case import KEY, MEDIA, RouteCase
from service import wait_until

ROUTE = "/upload/longform-videos"

with open(f"{MEDIA}/videos/128/aurora.mp4", "rb") as media:
    VIDEO = media.read()


def any_bytes(count):
    return random.Random(1).randbytes(count)


def segment_head(upload, header):
    """The head of a segment that the test sends byte by byte."""
    return (f"PUT {ROUTE}/{upload}?segmentIndex=0 HTTP/1.1\r\n"
            f"kelo-session-id: {KEY}\r\n{header}\r\n\r\n").encode()


def address(upload):
    return f"/media/longforms/{upload}.mp4"


class Uploads(RouteCase):
    def setUp(self):
        super().setUp()
        self.service.set("processing-time", seconds=0)

    def initiate(self, total_bytes, more="&mediaType=video/mp4"):
        return self.ask(f"POST {ROUTE}?totalBytes={total_bytes}{more}")

    def new_upload(self, total_bytes):
        return self.initiate(total_bytes).data["mediaId"]

    def segment(self, upload, index, content, key=KEY):
        return self.send("PUT", f"{ROUTE}/{upload}?segmentIndex={index}", content, key)

    def finalize(self, upload, key=KEY):
        return self.ask(f"POST {ROUTE}/{upload}", key)

    def status(self, upload, key=KEY):
        return self.ask(f"GET {ROUTE}/{upload}/status", key)

    def each_call(self, upload, key=KEY):
        """What each call of an upload is answered with."""
        return (self.segment(upload, 0, b"abcd", key), self.finalize(upload, key),
                self.status(upload, key))

    def segments(self, upload):
        """Those that the service has."""
        uploads = self.service.control("GET", "_service/uploads")["uploads"]
        return next(one for one in uploads if one["mediaId"] == upload)["segments"]

    def uploaded(self, content):
        """An upload that was made of these bytes."""
        upload = self.new_upload(len(content))
        self.assertEqual(self.segment(upload, 0, content).status, 200)
        self.assertEqual(self.finalize(upload).status, 200)
        return upload

    def is_served(self, upload):
        served = self.ask(f"GET {address(upload)}", None)
        self.assertEqual((served.status, served.headers["Content-Type"]), (200, "video/mp4"))
        self.assertTrue(served.body == VIDEO)

    def test_is_served_as_it_was_sent_and_in_ranges(self):
        size, part = len(VIDEO), len(VIDEO) // 3 + 1
        begun = self.initiate(size)
        self.assertEqual((begun.status, begun.data["expiresAfterSecs"]), (200, 3600))
        upload = begun.data["mediaId"]
        for index in 2, 0, 1:
            reply = self.segment(upload, index, VIDEO[index * part:(index + 1) * part])
            self.assertEqual((reply.status, reply.json), (200, {"data": {}}))
        done = self.finalize(upload)
        self.assertEqual(done.status, 200)
        self.assertEqual(done.data, {
            "mediaId": upload, "size": size, "videoUrl": self.address + address(upload),
            "processingInfo": {"state": "succeeded", "progressPercent": 100.0}})
        self.assertEqual(self.status(upload).data, done.data)
        self.is_served(upload)
        for wanted, first, end in ((f"{part - 10}-{2 * part + 9}", part - 10, 2 * part + 10),
                                   ("-7", size - 7, size)):
            reply = self.ask(f"GET {address(upload)}", None, Range=f"bytes={wanted}")
            self.assertEqual(reply.status, 206)
            self.assertEqual(reply.headers["Content-Range"], f"bytes {first}-{end - 1}/{size}")
            self.assertTrue(reply.body == VIDEO[first:end])
        head = self.ask(f"HEAD {address(upload)}", None)
        self.assertEqual(head.headers["Content-Length"], str(size))
        for tag, status in (head.headers["ETag"], 206), ('"x"', 200):
            reply = self.ask(f"GET {address(upload)}", None, Range="bytes=0-0", If_Range=tag)
            self.assertEqual(reply.status, status)
        beyond = self.ask(f"GET {address(upload)}", None, Range=f"bytes={size}-")
        self.assertEqual(beyond.status, 416)

    def test_segments_count_from_one_too(self):
        upload = self.new_upload(len(VIDEO))
        for index, content in ((3, VIDEO[150:]), (1, VIDEO[:100]), (2, VIDEO[100:150])):
            self.segment(upload, index, content)
        self.assertEqual(self.finalize(upload).status, 200)
        self.is_served(upload)

    def test_the_later_segment_replaces_the_earlier(self):
        upload = self.new_upload(len(VIDEO))
        for content in any_bytes(len(VIDEO)), VIDEO:
            self.assertEqual(self.segment(upload, 0, content).status, 200)
        self.assertEqual(self.segments(upload), [{"index": 0, "bytes": len(VIDEO)}])
        told = self.status(upload).data
        self.assertEqual(told["size"], len(VIDEO))
        self.assertNotIn("processingInfo", told)
        self.assertTrue(3590 < told["expiresAfterSecs"] <= 3600, told)
        self.assertEqual(self.finalize(upload).status, 200)
        self.is_served(upload)

    def test_what_is_missing_is_named_and_leaves_the_upload_open(self):
        size = len(VIDEO)
        upload = self.new_upload(size)
        self.assertEqual(self.finalize(upload).error, "The upload has no segments")
        self.segment(upload, 2, VIDEO[20:])
        self.assertEqual(self.finalize(upload).error, "Segment 0 is missing")
        self.segment(upload, 0, VIDEO[:10])
        self.assertEqual(self.finalize(upload).error, "Segment 1 is missing")
        self.segment(upload, 1, VIDEO[10:19])
        refused = self.finalize(upload)
        self.assertEqual((refused.status, refused.code), (400, 400))
        self.assertEqual(refused.error, f"The segments have {size - 1} bytes, not the {size} that "
                                        "were announced")
        self.segment(upload, 1, VIDEO[10:20])
        self.assertEqual(self.finalize(upload).status, 200)

    def test_takes_no_segments_once_finalized(self):
        upload = self.uploaded(b"abc")
        refused = self.segment(upload, 1, b"d")
        self.assertEqual((refused.status, refused.error),
                         (409, "The upload takes no segments any more"))
        self.assertEqual(self.finalize(upload).status, 200)
        self.assertEqual(len(self.segments(upload)), 1)

    def test_is_not_served_unless_it_is_processed_well(self):
        pending = {"state": "pending", "progressPercent": 0.0, "checkAfterSecs": 5.0}
        failed = {"state": "failed"}
        for seconds, content, info in ((1000, VIDEO, pending), (0, b"no video", failed),
                                       (0, VIDEO + b"x", failed)):
            self.service.set("processing-time", seconds=seconds)
            upload = self.uploaded(content)
            told = self.status(upload).data
            self.assertEqual(told["processingInfo"], info)
            self.assertNotIn("videoUrl", told)
            self.assertEqual(self.ask(f"GET {address(upload)}", None).status, 404)

    def test_an_upload_has_an_owner(self):
        upload = self.new_upload(4)
        other = self.service.session("kofi")
        for reply in self.each_call(upload, other) + self.each_call("unknown"):
            self.assertEqual((reply.status, reply.error), (404, "There is no such upload"))
        for reply in self.each_call(upload, None):
            self.assertEqual((reply.status, reply.code), (401, 100))
        self.service.control("POST", f"_service/sessions/{other}/expire", {})
        self.assertEqual(self.segment(upload, 0, b"abcd", other).code, 103)
        self.assertEqual(self.segments(upload), [])

    def test_an_expired_upload_is_gone(self):
        upload = self.new_upload(4)
        self.segment(upload, 0, b"abcd")
        self.service.control("POST", f"_service/uploads/{upload}/expire", {})
        for reply in self.each_call(upload):
            self.assertEqual((reply.status, reply.error), (410, "The upload has expired"))
        self.new_upload(4)  # throws away what expired
        self.assertEqual(self.segments(upload), [])
        finished = self.uploaded(b"abcd")
        self.service.control("POST", f"_service/uploads/{finished}/expire", {})
        self.assertEqual(self.status(finished).status, 200)

    def test_the_setting_decides_when_it_expires(self):
        self.start("--upload-expiry", "0")
        begun = self.initiate(4).data
        self.assertEqual(begun["expiresAfterSecs"], 0)
        self.assertEqual(self.status(begun["mediaId"]).status, 410)

    def test_refuses_bad_requests(self):
        for total_bytes in "", "0", "-1", "1.5", "many", "1099511627777":
            self.assertEqual(self.initiate(total_bytes).status, 400, total_bytes)
        for more in "", "&mediaType=", "&mediaType=video/webm":
            self.assertEqual(self.initiate(4, more).error, "mediaType must be video/mp4", more)
        upload = self.new_upload(4)
        for index in "", "-1", "x", "1000001":
            self.assertEqual(self.segment(upload, index, b"abcd").status, 400, index)
        for content, error in ((b"", "The segment is empty"),
                               (b"abcde", "The segment is larger than the video was said to be")):
            self.assertEqual(self.segment(upload, 0, content).error, error)
        self.assertEqual(self.ask(f"DELETE {ROUTE}/{upload}", None).status, 405)
        self.assertEqual(self.segments(upload), [])

    def peak_bytes(self):
        with open(f"/proc/{self.service.process.pid}/status", encoding="utf-8") as status:
            line, = (line for line in status if line.startswith("VmHWM:"))
        return int(line.split()[1]) * 1024

    def test_a_large_segment_is_not_held_in_memory(self):
        content = any_bytes(64 << 20)
        upload = self.new_upload(len(content))
        with open(f"/proc/{self.service.process.pid}/clear_refs", "w", encoding="utf-8") as refs:
            refs.write("5")  # the peak is what is in use now
        before = self.peak_bytes()
        self.assertEqual(self.segment(upload, 0, content).status, 200)
        self.assertLess(self.peak_bytes() - before, 8 << 20)
        request = self.service.seen()[-1]
        self.assertEqual(request["bodyBytes"], len(content))
        self.assertEqual(request["bodySha256"], hashlib.sha256(content).hexdigest())
        self.assertTrue(base64.b64decode(request["body"]) == content[:64 << 10])
        self.assertEqual(self.segments(upload)[0]["bytes"], len(content))

    def test_chunked_segments_are_taken(self):
        upload = self.new_upload(6)
        raw = self.raw(segment_head(upload, "Transfer-Encoding: chunked")
                       + b"3\r\nabc\r\n3\r\ndef\r\n0\r\n\r\n")
        self.assertTrue(raw.recv(1000).startswith(b"HTTP/1.1 200 OK\r\n"))
        self.assertEqual(self.segments(upload)[0]["bytes"], 6)

    def test_a_refused_segment_leaves_the_connection_usable(self):
        self.ask("GET /users/me")
        used = self.connection.sock
        for _ in range(2):
            self.assertEqual(self.segment("none", 0, any_bytes(100_000)).status, 404)
            self.assertIs(self.connection.sock, used)

    def test_a_segment_that_breaks_off_is_not_kept(self):
        upload = self.new_upload(1000)
        self.service.forget_requests()
        self.raw(segment_head(upload, "Content-Length: 1000") + any_bytes(500)).close()
        wait_until(self.service.seen)
        self.assertEqual(self.service.seen()[0]["bodyBytes"], 500)
        self.assertEqual(self.segments(upload), [])

    def test_faults_act_in_the_middle_of_a_segment(self):
        upload = self.new_upload(200_000)
        self.service.fault(method="PUT", type="reset", afterBodyBytes=100_000)
        # Nothing more is sent that a reset could hit on its way.
        raw = self.raw(segment_head(upload, "Content-Length: 200000") + any_bytes(100_001))
        end = select.poll()
        end.register(raw, 0)  # a connection that is closed is no event then, one that is reset is
        self.assertTrue(dict(end.poll(20_000))[raw.fileno()] & select.POLLERR)
        with self.assertRaises(OSError):
            raw.recv(1)
        self.assertEqual(self.service.fired(), [1])
        self.assertEqual(self.segments(upload), [])
        # An answer of the script's own asks the route nothing, and takes the body off the wire.
        self.service.fault(method="PUT", type="error", code=103)
        self.assertEqual(self.segment(upload, 0, any_bytes(200_000)).code, 103)
        self.assertEqual(self.segments(upload), [])
        self.assertEqual(self.segment(upload, 0, any_bytes(200_000)).status, 200)

    def test_bodies_that_are_held_meet_such_faults_at_their_end(self):
        self.service.fault("/loops", type="close", afterBodyBytes=1)
        self.assertEqual(
            self.exchange(b"POST /loops HTTP/1.1\r\nContent-Length: 4\r\n\r\nabcd"), b"")
        self.assertEqual(self.service.fired(), [1])

    def test_an_upload_rate_holds_for_segments(self):
        upload = self.new_upload(200_000)
        for rates, least in ((400_000,), 0.4), ((1000, 0), 0):
            for rate in rates:
                self.service.set("upload-rate", bytesPerSecond=rate)
            start = time.monotonic()
            self.assertEqual(self.segment(upload, 0, any_bytes(200_000)).status, 200)
            # At a thousand bytes a second it would take minutes.
            self.assertTrue(least < time.monotonic() - start < 20)


if __name__ == "__main__":
    unittest.main()
