"""The videos and pictures of kelo-service: the files, their routes and their rate."""

import os
import time
import unittest

from route_case import MEDIA, RouteCase
from service import Service

SECONDS = 3  # that each video lasts


def files(folder):
    """The files of a folder by their names, without endings."""
    found = {}
    for name in os.listdir(f"{MEDIA}/{folder}"):
        with open(f"{MEDIA}/{folder}/{name}", "rb") as file:
            found[os.path.splitext(name)[0]] = file.read()
    return found


def number(content, place=0, count=4):
    return int.from_bytes(content[place:place + count], "big")


def boxes(content):
    """The boxes of an MP4 file one after the other, each as (kind, content)."""
    found = []
    while content:
        size = number(content)
        if not 8 <= size <= len(content):
            raise AssertionError("there is more than whole boxes")
        found.append((content[4:8].decode(), content[8:size]))
        content = content[size:]
    return found


def kinds(content):
    return " ".join(kind for kind, _ in boxes(content))


def box(content, path):
    """The content of the box at a path like "moov/trak/mdia"."""
    for kind in path.split("/"):
        content = dict(reversed(boxes(content)))[kind]
    return content


class Checks:
    """What every video and every picture is."""

    def is_video(self, file, side):
        header = box(file, "moov/trak/tkhd")
        # In pixels, with 16 bits behind the point.
        self.assertEqual((number(header, 76), number(header, 80)), (side << 16, side << 16))
        self.assertEqual(box(file, "moov/trak/mdia/minf/stbl/stsd")[12:16], b"avc1")

    def is_picture(self, file, side):
        self.assertTrue(file.startswith(b"\x89PNG\r\n\x1A\n"))
        self.assertEqual(file[12:16], b"IHDR")
        self.assertEqual((number(file, 16), number(file, 20)), (side, side))
        self.assertTrue(file.endswith(b"IEND\xAE\x42\x60\x82"))


class MediaFiles(Checks, unittest.TestCase):
    def test_videos_are_whole_files_whose_index_comes_first(self):
        videos = files("videos/480")
        self.assertEqual(len(videos), 24)
        for name, file in videos.items():
            with self.subTest(name=name):
                self.assertEqual(kinds(file), "ftyp moov free mdat")
                self.is_video(file, 480)
                header = box(file, "moov/mvhd")
                self.assertEqual(number(header, 16), SECONDS * number(header, 12))
                self.assertGreater(len(file), 10000)

    def test_small_videos_are_in_pieces_of_one_second(self):
        for name, file in files("videos/128").items():
            with self.subTest(name=name):
                self.assertEqual(kinds(file), "ftyp moov" + SECONDS * " moof mdat")
                self.is_video(file, 128)
                timescale = number(box(file, "moov/trak/mdia/mdhd"), 12)
                pieces = [content for kind, content in boxes(file) if kind == "moof"]
                for index, piece in enumerate(pieces):
                    self.assertEqual(number(box(piece, "mfhd"), 4), index + 1)
                    self.assertEqual(number(box(piece, "traf/tfdt"), 4, 8), index * timescale)
                    # Flags that say what is there; track, duration, size and flags of its samples.
                    track = box(piece, "traf/tfhd")
                    self.assertEqual(number(track), 0x020038)
                    # The same for the run; count, place and flags of its first sample.
                    run = box(piece, "traf/trun")
                    self.assertEqual(number(run), 0x205)
                    self.assertEqual(number(run, 4) * number(track, 8), timescale)
                    self.assertEqual(number(run, 12), 0x02000000, "it is no key frame")

    def test_pictures_are_as_large_as_they_shall_be(self):
        for side in 480, 300, 240, 160, 120, 60, 40, 32:
            pictures = files(f"pictures/{side}")
            for name, file in pictures.items():
                with self.subTest(side=side, name=name):
                    self.is_picture(file, side)
            self.assertEqual(len(set(pictures.values())), len(pictures))
            self.assertGreaterEqual(len(pictures), 10)

    def test_sizes_of_a_video_have_one_name(self):
        for folder in "videos/128", "pictures/480":
            self.assertEqual(files(folder).keys(), files("videos/480").keys())


class MediaCase(RouteCase):
    def get(self, path, **headers):
        """The answer without a session."""
        return self.ask(f"GET {path}", None, **headers)

    def newest(self, count):
        return self.records(f"/timelines/latest?size={count}")

    def default_video(self, post):
        offer, = (one for one in post["videoUrls"] if (one["format"], one["rate"]) == ("h264", 0))
        return self.path_of(offer["videoUrl"])

    def video(self):
        """The path of the newest post's."""
        return self.default_video(self.newest(1)[0])


class Media(Checks, MediaCase):
    def fetch(self, path, kind):
        reply = self.get(path)
        self.assertEqual(reply.status, 200, path)
        self.assertEqual(reply.headers["Content-Type"], kind, path)
        self.assertEqual(reply.headers["Content-Length"], str(len(reply.body)), path)
        self.assertEqual(reply.headers["Accept-Ranges"], "bytes", path)
        return reply.body

    def fetch_part(self, path, kind):
        """A part of a video, without the box behind it that holds its path."""
        body = self.fetch(path, kind)
        self.assertEqual(boxes(body)[-1], ("free", path.encode()))
        return body[:-8 - len(path)]

    def test_what_a_post_names_is_there(self):
        types = {"h264": "video/mp4", "h264-preview": "video/mp4",
                 "hls": "application/vnd.apple.mpegurl"}
        tags, videos, fetched = set(), set(), 0
        for post in self.newest(60):
            offers = post["videoUrls"]
            self.assertEqual(len({offer["id"] for offer in offers}), len(offers))
            for offer in offers:
                path, kind = self.path_of(offer["videoUrl"]), types[offer["format"]]
                tags.add(self.ask(f"HEAD {path}", None).headers["ETag"])
                if offer["format"] == "hls":
                    self.assertNotEqual(self.fetch(path, kind), b"")
                    continue
                video = self.fetch_part(path, kind)
                self.is_video(video, 128 if path.endswith(("_low.mp4", "_preview.mp4")) else 480)
                videos.add(video)
                fetched += 1
            self.is_picture(self.fetch(self.path_of(post["avatarUrl"]), "image/png"), 160)
        # Each video file is its own, although there are but 24 videos in two sizes; playlists are
        # all the same.
        self.assertGreater(fetched, 120)
        self.assertEqual(len(tags), fetched + 1)
        self.assertTrue(videos == {*files("videos/480").values(), *files("videos/128").values()})

    def test_thumbnails_show_the_video(self):
        names = {file: name for name, file in files("videos/480").items()}
        pictures = files("pictures/480")
        for post in self.newest(5):
            name = names[self.fetch_part(self.default_video(post), "video/mp4")]
            thumbnail = self.fetch(self.path_of(post["thumbnailUrl"]), "image/png")
            self.assertTrue(thumbnail == pictures[name], name)

    def test_channels_have_their_icons(self):
        images = set()
        for channel in 3, 4:
            record = self.data(f"/channels/{channel}")
            for key, side in (("iconFullUrl", 60), ("retinaIconFullUrl", 120),
                              ("exploreRetinaIconFullUrl", 240)):
                image = self.fetch(self.path_of(record[key]), "image/png")
                self.is_picture(image, side)
                images.add(image)
        self.assertEqual(len(images), 6)

    def test_playlists_name_the_parts_of_the_small_video(self):
        offers = next(post["videoUrls"] for post in self.newest(20)
                      if post["videoUrls"][-1]["format"] == "hls")
        small, path = (self.path_of(offer["videoUrl"]) for offer in offers[-2:])
        self.assertTrue(small.endswith("_preview.mp4"))
        playlist = self.fetch(path, "application/vnd.apple.mpegurl").decode()
        self.assertTrue(playlist.startswith("#EXTM3U\n"))
        self.assertTrue(playlist.endswith("#EXT-X-ENDLIST\n"))
        self.assertIn('#EXT-X-MAP:URI="init.mp4"\n', playlist)
        folder = path.rpartition("/")[0]
        joined = self.fetch_part(f"{folder}/init.mp4", "video/mp4")
        self.assertEqual(kinds(joined), "ftyp moov")
        for name in (line for line in playlist.splitlines() if not line.startswith("#")):
            part = self.fetch_part(f"{folder}/{name}", "video/iso.segment")
            self.assertEqual(kinds(part), "moof mdat")
            joined += part
        self.assertTrue(self.fetch_part(small, "video/mp4") == joined)
        self.assertEqual(len(boxes(joined)), 2 + 2 * SECONDS)
        for name in "segment0.m4s", "segment4.m4s", "segment01.m4s", "":
            self.assertEqual(self.get(f"{folder}/{name}").status, 404, name)

    def test_are_the_same_each_time_and_in_each_service(self):
        path = self.video()
        whole, head = self.get(path), self.ask(f"HEAD {path}", None)
        self.assertTrue(self.get(path).body == whole.body)
        self.assertEqual(head.body, b"")
        for header in "Content-Length", "ETag":
            self.assertEqual(head.headers[header], whole.headers[header])
        other = Service()
        self.addCleanup(other.stop)
        self.assertTrue(other.fetch(path[1:]) == whole.body)

    def test_sends_the_range_that_is_asked_for(self):
        path = self.video()
        whole = self.get(path).body
        size = len(whole)
        for wanted, first, end in (("0-0", 0, 1), ("100-1099", 100, 1100), ("5000-", 5000, size),
                                   ("-10", size - 10, size), ("-999999999", 0, size),
                                   ("0-999999999", 0, size), (f"{size - 1}-", size - 1, size)):
            with self.subTest(wanted=wanted):
                part = self.get(path, Range=f"bytes={wanted}")
                self.assertEqual(part.status, 206)
                self.assertTrue(part.body == whole[first:end])
                self.assertEqual(part.headers["Content-Length"], str(end - first))
                self.assertEqual(part.headers["Content-Range"], f"bytes {first}-{end - 1}/{size}")
                self.assertEqual(part.headers["Content-Type"], "video/mp4")
        for wanted in f"{size}-", f"{size}-9999999", "-0":
            with self.subTest(wanted=wanted):
                refused = self.get(path, Range=f"bytes={wanted}")
                self.assertEqual((refused.status, refused.code), (416, 416))
                self.assertEqual(refused.headers["Content-Range"], f"bytes */{size}")

    def test_sends_the_whole_file_where_a_range_does_not_apply(self):
        path = self.video()
        whole = self.get(path)
        for headers in {"Range": "bytes=0-1,5-6"}, {"Range": "bytes=0-1", "If_Range": '"other"'}:
            reply = self.get(path, **headers)
            self.assertEqual(reply.status, 200)
            self.assertTrue(reply.body == whole.body)
        same = self.get(path, Range="bytes=0-1", If_Range=whole.headers["ETag"])
        self.assertEqual(same.status, 206)
        page = self.get("/timelines/empty", Range="bytes=0-1")
        self.assertEqual(page.status, 200)
        self.assertIn("data", page.json)

    def test_refuses_a_range_that_cannot_be_read(self):
        path = self.video()
        for wanted in "bytes=abc", "lines=0-1", "bytes=5-2":
            # The connection is closed.
            came = self.exchange(f"GET {path} HTTP/1.1\r\nRange: {wanted}\r\n\r\n".encode())
            self.assertTrue(came.startswith(b"HTTP/1.1 416"), wanted)

    def test_refuses_what_is_not_there(self):
        thumbnail = self.path_of(self.newest(1)[0]["thumbnailUrl"])
        for path in ("/media/videos/k1.mp4", "/media/videos/k1/index.m3u8",
                     "/media/videos/k1/init.mp4", "/media/videos/",
                     "/media/thumbnails/k1.png", "/media/thumbnails/x", f"{thumbnail}x",
                     "/media/avatars/9.png", "/media/", "/media/icons", "/media/icons/x.png",
                     "/media/icons/byline-pick.jpg", "/media/albums/", "/media/albums/1.png",
                     "/media/channels/99.png", "/media/channels/0.png", "/media/channels/x.png",
                     "/media/channels/.png", "/media/channels/3.jpg", "/media/channels/3@3x.png"):
            for method in "GET", "HEAD":
                self.assertEqual(self.ask(f"{method} {path}", None).status, 404, path)
        self.assertEqual(self.ask(f"POST {thumbnail}", None).status, 405)

    def test_needs_no_session(self):
        for key in None, "an unknown key":
            self.assertEqual(self.ask(f"GET {self.video()}", key).status, 200)

    def test_is_logged_and_meets_faults(self):
        path = self.video()
        self.service.forget_requests()
        self.service.fault("/media/videos/*", type="close", afterBytes=2000)
        self.service.fault("/media/*", type="status", status=503)
        self.assertEqual(len(self.exchange(f"GET {path} HTTP/1.1\r\n\r\n".encode())), 2000)
        self.assertEqual([self.get(path).status, self.get(path).status], [503, 200])
        self.assertEqual([one["path"] for one in self.service.seen()], [path] * 3)


class MediaRate(MediaCase):
    def set_rate(self, rate):
        value = {"bytesPerSecond": rate}
        self.assertEqual(self.service.control("POST", "_service/media-rate", value), value)

    def timed(self, path, **headers):
        """The answer, and how long it took."""
        start = time.monotonic()
        reply = self.get(path, **headers)
        return reply, time.monotonic() - start

    def test_decides_how_long_a_file_takes(self):
        path = self.video()
        size = len(self.get(path).body)
        for seconds in 0.5, 1:
            self.set_rate(int(size / seconds))
            reply, took = self.timed(path)
            self.assertEqual((reply.status, len(reply.body)), (200, size))
            # The last of twenty slices per second need not be waited for.
            self.assertTrue(seconds - 0.15 < took < 4 * seconds + 10, took)

    def test_arrives_bit_by_bit(self):
        path = self.video()
        self.set_rate(20000)
        self.connection.request("GET", path)
        answer = self.connection.getresponse()
        parts = [len(answer.read1(65536)) for _ in range(6)]
        self.assertGreater(min(parts), 0)
        self.assertLess(sum(parts), 20000)

    def test_holds_for_small_answers_in_a_row(self):
        path = self.video()
        self.set_rate(10000)
        answers = [self.timed(path, Range="bytes=0-999") for _ in range(4)]
        self.assertEqual([reply.status for reply, _ in answers], [206] * 4)
        # 4000 bytes, of which the last slice need not be waited for.
        self.assertGreater(sum(took for _, took in answers), 0.3)

    def test_holds_up_nothing_else(self):
        path = self.video()
        self.set_rate(1)
        slow = self.raw(f"GET {path} HTTP/1.1\r\nConnection: close\r\n\r\n".encode())
        self.assertTrue(slow.recv(300).startswith(b"HTTP/1.1 200"))
        self.assertEqual(self.data("/users/me")["username"], "mara")
        self.assertEqual(len(self.records("/timelines/all?size=100")), 100)
        self.assertEqual(self.get("/media/nothing").status, 404)
        start = time.monotonic()
        self.service.stop()
        self.assertLess(time.monotonic() - start, 20)

    def test_changes_while_a_file_is_being_sent(self):
        path = self.video()
        size = len(self.get(path).body)
        self.set_rate(100)
        raw = self.raw(f"GET {path} HTTP/1.1\r\nConnection: close\r\n\r\n".encode())
        came = len(raw.recv(65536))
        # At the rate it began with it would take longer than a minute.
        self.assertGreater(size - came, 6000)
        start = time.monotonic()
        self.set_rate(0)
        came += sum(map(len, iter(lambda: raw.recv(65536), b"")))
        self.assertGreater(came, size)
        self.assertLess(time.monotonic() - start, 20)

    def test_lets_faults_cut_in(self):
        path = self.video()
        self.set_rate(10000)
        self.service.fault(path, type="close", afterBytes=5000)
        start = time.monotonic()
        self.assertEqual(len(self.exchange(f"GET {path} HTTP/1.1\r\n\r\n".encode())), 5000)
        self.assertGreater(time.monotonic() - start, 0.4)


if __name__ == "__main__":
    unittest.main()
