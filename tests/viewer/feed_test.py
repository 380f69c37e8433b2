"""What a feed shows, by the names of its items and by pictures."""

import json
import time

from viewer_case import Case, difference


class Feed(Case):
    def test_the_loop_in_view_moves_and_comes_round(self):
        viewer = self.start()
        key = self.key()
        self.plays(key)
        first = viewer.shot(f"loop-{key}")
        viewer.until(lambda: difference(first, viewer.shot(f"loop-{key}")) > 2, "it moves")
        viewer.until(lambda: difference(first, viewer.shot(f"loop-{key}")) < 0.5, "it comes round")
        self.close()

    def test_the_video_and_the_next_two_are_fetched(self):
        viewer = self.start("home")
        self.plays(self.key())
        names = [json.loads(viewer.eval("feed", f"JSON.stringify(itemAtIndex({row}).record)"))
                 ["thumbnail"].split("/")[-1].split(".")[0] for row in range(2)]

        def fetched():
            return [one["path"].split("/")[-1].split(".")[0] for one in self.service.seen()
                    if one["path"].startswith("/media/videos/")]
        viewer.until(lambda: len(fetched()) >= 3, "three videos are fetched")
        self.assertEqual(fetched()[:2], names)
        self.assertEqual(len(fetched()), 3)
        self.close()

    def test_a_thumbnail_stands_in(self):
        self.service.fault("/media/videos/*", times=0, type="stall", afterBytes=0)
        viewer = self.start("latest")
        key = self.key()
        viewer.until(lambda: len(set(viewer.shot(f"loop-{key}")[2][::41])) > 20,
                     "there is a picture")
        self.assertEqual(viewer.eval(f"loop-{key}", "hasPicture"), "false")
        self.close()

    def test_links_lead_on(self):
        viewer = self.start()
        for row in range(20):
            self.reach(row)
            key = self.key()
            caption = viewer.eval(f"caption-{key}", "text")
            if 'href="kelo://tag/' in caption:
                break
        tag = caption.split('href="kelo://tag/')[1].split('"')[0]
        viewer.eval(f"caption-{key}", f'linkActivated("kelo://tag/{tag}")')
        viewer.until(lambda: viewer.eval("pages", "depth") == "2", "the tag's feed opens")
        viewer.until(lambda: self.service.seen(f"/timelines/tags/{tag}"), "it is read")
        viewer.click("back")
        viewer.wait(f"caption-{key}")
        self.close()

    def test_cards_stand_between_posts_and_can_be_closed(self):
        viewer = self.start()
        self.bring(3, "card-editors-picks")
        self.assertFalse(viewer.shown("close-editors-picks"))
        self.bring(9, "close-rate-the-app")
        viewer.click("close-rate-the-app")
        viewer.wait_gone("card-rate-the-app")
        viewer.until(lambda: self.service.seen("/inserts/rate-the-app/close", "POST"), "it is told")
        self.close()

    def test_a_card_whose_closing_is_refused_comes_back(self):
        viewer = self.start()
        self.service.fault("/inserts/rate-the-app/close", type="error", code=500, message="Not now")
        self.bring(9, "close-rate-the-app")
        viewer.click("close-rate-the-app")
        viewer.wait("said")
        self.assertEqual(viewer.eval("said", "text"), "Not now")
        self.bring(9, "card-rate-the-app")
        self.close()

    def test_pages_in_both_directions(self):
        viewer = self.start("latest")
        self.reach(45)
        key = self.key()
        self.plays(key)
        self.close()
        # The next start begins with the same page, and reads those before it.
        self.service.forget_requests()
        viewer = self.start("latest")
        first = self.key()
        viewer.until(lambda: int(viewer.eval("feed", "count")) > 10, "pages before are read")
        self.assertEqual(self.key(), first)
        self.assertIn("anchor=", self.service.seen("/timelines/latest")[0]["query"])

        def reaches_the_top():
            viewer.eval("feed", "positionViewAtBeginning()")
            return int(viewer.eval("feed", "count")) >= 45
        viewer.until(reaches_the_top, "the start is reached")
        self.close()

    def test_pulling_puts_newer_posts_first(self):
        viewer = self.start("latest")
        key = self.key()
        page = json.loads(self.service.fetch("timelines/latest?size=10"))
        fresh = {**page["data"]["records"][0], "postId": 999999, "description": "Brand new"}
        page["data"]["records"] = [fresh, *page["data"]["records"][:9]]
        self.service.fault("/timelines/latest", type="body", body=json.dumps(page))
        viewer.ask("drag", "feed", 300)
        viewer.wait("post-999999")
        self.assertEqual(viewer.eval("caption-999999", "text"), "Brand new")
        self.assertNotEqual(key, "999999")
        self.close()


class Scrolling(Case):
    def row(self):
        return int(self.viewer.eval("feed", "indexAt(width / 2, contentY + height / 2)"))

    def flick_past(self, row, speed):
        viewer = self.viewer
        last = time.monotonic() + 300
        while self.row() < row:
            self.assertLess(time.monotonic(), last)
            viewer.eval("feed", f"flick(0, -{speed})")
            time.sleep(0.1)

    def test_it_is_smooth_and_memory_stays_flat(self):
        viewer = self.start("latest")
        viewer.frames()
        self.flick_past(100, speed=4000)
        count, latest, own = viewer.frames()
        early = viewer.memory()
        self.flick_past(500, speed=6000)
        viewer.until(lambda: viewer.eval("feed", "moving") == "false", "it rests")
        self.plays(self.key())
        print(f"\nviewer: {count} frames past 100 posts, the latest {latest:.0f} ms behind the one "
              f"before it, {own:.0f} ms of them its own; {early:.0f} MiB there and "
              f"{viewer.memory():.0f} MiB past 500")
        self.assertGreater(count, 100)
        # Of the process's own time: on a machine with other work the clock tells of that, too.
        self.assertLess(own, 100)
        self.assertLess(viewer.memory() - early, 40)
        self.close()
