"""The sheets over a feed, the banner, and the other pages."""

import json

from viewer import Viewer
from viewer_case import Case

PASSWORD = "loop-the-loop"


class Sheets(Case):
    def expire(self):
        self.service.control("POST", "_service/sessions/kelo-development-session/expire", {})

    def sign_in(self, password):
        viewer = self.viewer
        viewer.wait("signIn")
        viewer.eval("user", 'text = "mara"')
        viewer.eval("password", f'text = "{password}"')
        viewer.click("signInNow")

    def test_signing_in_sends_what_waited(self):
        viewer = self.start("latest")
        key = self.key()
        self.plays(key)
        self.expire()
        viewer.click(f"like-{key}")
        self.sign_in("wrong")
        viewer.until(lambda: "assword" in viewer.eval("problem", "text"), "the service says no")
        self.sign_in(PASSWORD)
        viewer.wait_gone("signIn")
        viewer.until(lambda: self.service.kept("likes"), "the like is sent")
        self.assertEqual(viewer.eval(f"like-{key}", "on"), "true")
        self.close()
        # The key is kept for the next start.
        self.start("latest")
        self.viewer.until(lambda: self.viewer.eval(f"like-{key}", "on") == "true", "it is liked")
        self.assertFalse(self.viewer.shown("signIn"))
        self.close()

    def test_what_waits_is_given_up_with_the_sheet(self):
        viewer = self.start("latest")
        key = self.key()
        self.expire()
        viewer.click(f"like-{key}")
        viewer.wait("signIn")
        self.assertEqual(viewer.eval(f"like-{key}", "on"), "true")
        viewer.click("signInLater")
        viewer.wait_gone("signIn")
        viewer.wait_for(f"like-{key}", "on", "false")
        self.assertEqual(self.service.kept("likes"), [])
        self.close()

    def test_a_captcha_holds_calls_until_it_is_solved(self):
        viewer = self.start("latest")
        key = self.key()
        url = self.service.control(
            "POST", "_service/sessions/kelo-development-session/captcha", {})["url"]
        viewer.click(f"like-{key}")
        viewer.wait("captcha")
        self.assertEqual(viewer.eval("captchaUrl", "text"), url)
        self.service.solve(url)
        viewer.click("captchaSolved")
        viewer.until(lambda: self.service.kept("likes"), "the like is sent")
        viewer.wait_gone("captcha")
        self.close()

    def test_a_start_without_a_session(self):
        self.expire()
        self.viewer = viewer = Viewer(self.home, self.service.host)
        self.sign_in(PASSWORD)
        viewer.until(lambda: int(viewer.eval("feed", "count")) > 2, "there are posts")
        self.close()


class Network(Case):
    def test_without_a_network_there_is_a_banner(self):
        viewer = self.start("latest")
        self.plays(self.key())
        self.service.fault(times=0, type="reset", afterBytes=0)
        viewer.click("tab-popular")
        viewer.wait("banner")
        self.assertEqual(viewer.eval("feed", "count"), "0")
        # The window lives: another page opens.
        viewer.click("tab-upload")
        viewer.wait("uploadNow")
        viewer.click("tab-popular")
        viewer.wait_for("footer", "text", "This could not be read.")
        self.service.forget()
        viewer.click("retry")
        viewer.until(lambda: int(viewer.eval("feed", "count")) > 5, "the feed is read")
        viewer.wait_gone("banner")
        self.plays(self.key())
        self.close()


    def test_a_file_that_does_not_come_brings_the_banner_too(self):
        viewer = self.start("latest")
        self.plays(self.key())
        self.service.fault("/media/*", times=0, type="reset", afterBytes=0)
        self.reach(12)
        key = self.key()
        viewer.wait("banner")
        self.assertEqual(viewer.eval(f"thumbnail-{key}", "implicitWidth"), "0")
        self.service.forget()
        viewer.click("retry")
        thumbnail = "parent.children[0].implicitWidth"  # it is hidden as soon as the video plays
        viewer.until(lambda: int(viewer.eval(f"loop-{key}", thumbnail)) > 0, "the thumbnail comes")
        self.plays(key)
        viewer.wait_gone("banner")
        self.close()


class Pages(Case):
    def test_the_soundboard(self):
        viewer = self.start()
        viewer.click("tab-sounds")
        viewer.until(lambda: viewer.eval("sounds", "count") == "14", "14 sounds")
        self.close()

    def test_a_channel_has_its_colours(self):
        # Whether its posts come before it or behind it.
        for late in ("/channels/*", "/timelines/channels/*"):
            with self.subTest(late=late):
                self.service.fault(late, type="delay", milliseconds=500)
                self.open_a_channel()

    def open_a_channel(self):
        viewer = self.start()
        for row in range(20):
            self.reach(row)
            key = self.key()
            if viewer.shown(f"channel-{key}"):
                break
        name = viewer.eval(f"channel-{key}", "text")
        channel = next(one for one in json.loads(self.service.fetch("channels"))["data"]["records"]
                       if one["channel"] == name)
        viewer.click(f"channel-{key}")
        viewer.wait_for("channelHeader", "color", "#" + channel["backgroundColor"].lower())
        viewer.until(lambda: int(viewer.eval("feed", "count")) > 2, "its posts")
        top = viewer.ask("rect", "pages").split()[1]
        viewer.until(lambda: viewer.ask("rect", "channelHeader").split()[1] == top, "it is on top")
        self.close()

    def test_an_upload(self):
        viewer = self.start()
        video = self.home.folder / "video.mp4"
        page = json.loads(self.service.fetch("timelines/latest?size=1"))
        url = page["data"]["records"][0]["videoUrls"][0]["videoUrl"]
        video.write_bytes(self.service.fetch(url.split("/", 3)[3]))
        viewer.click("tab-upload")
        viewer.eval("file", f'text = "{video}"')
        viewer.click("uploadNow")
        viewer.wait_for("uploadState", "text", "It is there.")
        self.close()

    def test_an_upload_can_be_cancelled(self):
        self.service.set("upload-rate", bytesPerSecond=100_000)
        viewer = self.start()
        video = self.home.folder / "video.mp4"
        video.write_bytes(bytes(2_000_000))
        viewer.click("tab-upload")
        viewer.eval("file", f'text = "{video}"')
        viewer.click("uploadNow")
        viewer.until(lambda: float(viewer.eval("bar", "width")) > 4, "the bar moves")
        viewer.click("uploadCancel")
        viewer.wait_for("uploadState", "text", "Cancelled.")
        self.assertFalse(self.service.control("GET", "_service/uploads")["uploads"][0]["finalized"])
        self.close()
