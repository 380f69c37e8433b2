"""What kelo-service's timelines, posts, channels, venues and cards say."""

import re
import unittest
import urllib.parse
from collections import Counter

from route_case import RouteCase


def ids(page):
    return [record["postId"] for record in page["records"]]


def escaped(anchor):
    """An anchor as it stands in a query."""
    return urllib.parse.quote(str(anchor), safe="")


class Paging(RouteCase):
    def page(self, feed, query=""):
        return self.data(f"/timelines/{feed}?{query}")

    def after(self, feed, size, page):
        """What the anchor of a page leads to."""
        return self.page(feed, f"size={size}&anchor={escaped(page['anchor'])}")

    def before(self, feed, size, anchor):
        return self.page(feed, f"size={size}&backAnchor={escaped(anchor)}")

    def walk(self, feed, size):
        """All pages, walked the way the client library does."""
        pages = [self.page(feed, f"size={size}")]
        while len(pages) < 2000:
            query = {name: pages[-1][key] for name, key in (("page", "nextPage"),
                     ("anchor", "anchor")) if key in pages[-1]}
            if not query:
                break
            pages.append(self.page(feed, urllib.parse.urlencode({"size": size, **query})))
        return pages

    def test_whole_feeds_are_walked_exactly_once(self):
        for feed, size in (("all", 100), ("home", 17), ("popular", 97), ("latest", 80),
                           ("editors-picks", 5), ("editors-picks", 23), ("editors-picks", 1),
                           ("empty", 20), ("users/1001", 3), ("users/1001/likes", 20),
                           ("channels/1", 7), ("channels/10", 50), ("tags/cats", 4),
                           ("tags/nobody-uses-this", 4)):
            with self.subTest(feed=feed, size=size):
                pages = self.walk(feed, size)
                count = pages[0]["count"]
                for page in pages:
                    self.assertEqual((page["count"], page["size"]), (count, size))
                    if page is not pages[-1]:
                        self.assertEqual(len(ids(page)), size)
                self.assertEqual(bool(ids(pages[-1])), count != 0)
                walked = [post for page in pages for post in ids(page)]
                self.assertEqual((len(walked), len(set(walked))), (count, count))
                # The walk in small steps gives the same order as one step over everything.
                self.assertEqual(walked[:1000], ids(self.page(feed, "size=1000")))

    def test_pages_know_their_neighbours(self):
        for query, records, neighbours in (
                ("", 10, {"nextPage": 2, "nextAfter": 10}),
                ("&page=2", 10, {"nextPage": 3, "nextAfter": 20, "previousPage": 1}),
                ("&page=3", 3, {"previousPage": 2}), ("&page=999", 0, {"previousPage": 3})):
            page = self.page("editors-picks", f"size=10{query}")
            self.assertEqual(len(page.pop("records")), records)
            self.assertEqual(page, {"title": "Editors' picks", "count": 23, "displayCount": 23,
                                    "size": 10, **neighbours})

    def test_pages_begin_at_one(self):
        first = ids(self.page("all", "size=4"))
        for number in "1", "0", "-7":
            self.assertEqual(ids(self.page("all", f"size=4&page={number}")), first, number)
        self.assertEqual(ids(self.page("all", "size=1000&page=9223372036854775807")), [])

    def test_sizes_are_kept_in_bounds(self):
        for query, size in (("", 20), ("size=0", 1), ("size=-3", 1), ("size=5000", 1000)):
            page = self.page("all", query)
            self.assertEqual((page["size"], len(page["records"])), (size, size), query)

    def test_an_empty_feed_has_records_but_none(self):
        self.assertEqual(self.page("empty"), {"title": "Nothing here yet", "count": 0,
                                              "displayCount": 0, "size": 20, "records": []})

    def test_the_forward_anchor_under_back_anchor_leads_back(self):
        for feed in "popular", "latest", "channels/2":
            with self.subTest(feed=feed):
                pages = self.walk(feed, 10)
                self.assertGreater(len(pages), 4)
                self.assertNotIn("anchor", pages[-1])
                for earlier, page in zip(pages[:4], pages[1:-1]):
                    back = self.before(feed, 10, page["anchor"])
                    self.assertEqual(ids(back), ids(earlier))
                    self.assertEqual(back["anchor"], earlier["anchor"])
                # Nothing lies before the first page.
                self.assertNotIn("backAnchor", pages[0])
                nothing = self.before(feed, 10, pages[0]["anchor"])
                self.assertEqual(nothing["records"], [])
                self.assertTrue(nothing.keys().isdisjoint({"anchor", "backAnchor"}))
                # An anchor that the feed never gave is refused.
                for query in "anchor=nonsense", "backAnchor=AAAA", "anchor=":
                    reply = self.ask(f"GET /timelines/{feed}?size=10&{query}")
                    self.assertEqual(reply.status, 400, query)

    def test_text_anchors_come_with_a_back_anchor_of_their_own(self):
        first = self.page("popular", "size=10")
        self.assertIs(type(first["anchor"]), str)
        second = self.after("popular", 10, first)
        self.assertNotEqual(second["backAnchor"], second["anchor"])
        self.assertEqual(ids(self.before("popular", 10, second["backAnchor"])), ids(first))
        # An anchor is good for its own direction and feed only.
        for feed, anchor in (("popular", second["backAnchor"]), ("channels/2", first["anchor"])):
            reply = self.ask(f"GET /timelines/{feed}?size=10&anchor={escaped(anchor)}")
            self.assertEqual(reply.status, 400, feed)

    def test_number_anchors_are_numbers(self):
        page = self.page("latest", "size=3")
        self.assertIs(type(page["anchor"]), int)
        self.assertEqual(page["anchor"], ids(page)[-1])

    def test_sizes_may_change_on_the_way(self):
        rest = self.after("popular", 20, self.page("popular", "size=10"))
        self.assertEqual(ids(rest), ids(self.page("popular", "size=30"))[10:])

    def test_tag_feeds_are_found_in_any_form(self):
        cats = self.page("tags/cats")
        self.assertEqual(len(ids(cats)), 20)
        for tag in "%23cats", "CATS":
            self.assertEqual(ids(self.page(f"tags/{tag}")), ids(cats))
        counts = {tag["tag"]: tag["postCount"]
                  for tag in self.page("tags/cats", "size=1")["records"][0]["tags"]}
        self.assertGreater(min(counts.values()), 0)
        self.assertEqual(counts["cats"], cats["count"])

    def test_feeds_hold_what_they_say(self):
        for post in self.page("users/1004")["records"]:
            self.assertEqual(post["userId"], 1004)
        for post in self.page("users/1001/likes", "size=1000")["records"]:
            self.assertIs(post["liked"], True)
        self.assertEqual(self.page("channels/3")["channel"]["channel"], "Animals")
        self.assertNotIn("channel", self.page("popular"))


class Posts(RouteCase):
    def entities_in(self, text, entities, sign):
        """Checks that each stretch, in code points, is the entity's title behind its sign."""
        for entity in entities:
            start, end = entity["range"]
            self.assertEqual(text[start:end], sign.get(entity["type"], "") + entity["title"])

    def test_have_the_wires_types(self):
        for post in self.many_posts():
            self.assertIs(type(post["postId"]), int)
            self.assertGreater(post["postId"], 1 << 53)
            self.assertRegex(post["created"],
                             r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}000\Z")
            for key in "description", "username":
                self.assertIs(type(post[key]), str)
            for flag in post["liked"], post["loops"]["onFire"]:
                self.assertIs(type(flag), bool)
            self.assertIs(type(post.get("myRepostId", 0)), int)
            for key in "loopCount", "loopVelocity":
                self.assertIn(type(post[key]), (int, float))
            self.path_of(post["thumbnailUrl"])

    def test_have_several_renditions_and_one_default(self):
        for post in self.many_posts():
            offers = post["videoUrls"]
            self.assertGreaterEqual(len(offers), 2)
            for offer in offers:
                self.assertTrue(self.path_of(offer["videoUrl"]).startswith("/media/"))
                self.assertIs(type(offer["id"]), str)
            self.assertEqual([(offer["rate"], offer["format"]) for offer in offers].count(
                (0, "h264")), 1)

    def test_are_as_large_as_real_ones(self):
        body = self.ask("GET /timelines/all?size=1000").body
        self.assertTrue(1000 * 1500 < len(body) < 1000 * 3000, len(body))

    def test_entities_point_at_their_words(self):
        entities = behind_emoji = 0
        for post in self.many_posts():
            caption = post["description"]
            self.entities_in(caption, post["entities"], {"tag": "#", "mention": "@"})
            entities += len(post["entities"])
            behind_emoji += sum(bool(re.search("[🔥😂🎩]", caption[:entity["range"][0]]))
                                for entity in post["entities"])
            self.assertLessEqual({entity["type"] for entity in post["entities"]},
                                 {"tag", "mention"})
        self.assertGreater(entities, 1000)
        self.assertGreater(behind_emoji, 100)

    def test_bylines_point_at_their_words(self):
        bylines = [post["byline"] for post in self.many_posts() if "byline" in post]
        for byline in bylines:
            self.assertNotEqual(byline["body"], "")
            self.entities_in(byline["body"], byline["entities"], {})
            for entity in byline["entities"]:
                # The words stand at the body's end.
                self.assertEqual(entity["range"][1], len(byline["body"]))
                self.assertTrue(entity["link"].startswith("kelo://"), entity)
        linked = sum(len(byline["entities"]) for byline in bylines)
        self.assertTrue(50 < linked < len(bylines), linked)

    def test_carry_no_more_likes_and_comments_than_asked(self):
        for query, key, most in (("", "likes", 3), ("&l_max=1&c_max=2", "likes", 1),
                                 ("&l_max=1&c_max=2", "comments", 2), ("&l_max=0", "likes", 0)):
            posts = self.records(f"/timelines/all?size=1000{query}")
            self.assertEqual(max(len(post[key]["records"]) for post in posts), most, query)

    def test_are_liked_and_reposted_by_the_viewer(self):
        posts = [post for page in (1, 2)
                 for post in self.records(f"/timelines/all?size=1000&page={page}")]
        liked = sum(post["liked"] for post in posts)
        self.assertEqual(liked, self.data("/users/me")["likeCount"])
        self.assertGreater(liked, 50)
        self.assertGreater(sum("myRepostId" in post for post in posts), 20)
        for post in self.records("/timelines/all?size=1000", None):
            self.assertIs(post["liked"], False)
            self.assertNotIn("myRepostId", post)

    def test_are_the_same_in_a_timeline_and_alone(self):
        for query in "", "?c_max=0&l_max=1", "?c_max=10&l_max=10":
            for post in self.records(f"/timelines/popular{query}"):
                path = f"/posts/{post['postId']}{query}"
                self.assertEqual(self.data(path), post)
                self.assertEqual(self.ask(f"GET {path}", "nobody").status, 401)

    def test_some_have_more(self):
        counts = Counter()
        sides = {}  # of pictures, by their addresses
        for post in self.many_posts():
            counts.update({"channel", "venueName", "venueCategoryId", "byline", "audio"}
                          & post.keys())
            self.assertEqual("channelId" in post, "channel" in post)
            for key in "foursquareVenueId", "venueCity":
                self.assertEqual(key in post, "venueName" in post)
            # The nested form is that of a venue on its own.
            self.assertTrue(post.keys().isdisjoint(
                {"country", "lat", "lng", "location", "categories"}))
            if "venueCategoryId" in post:
                sides[post["venueCategoryIconUrl"]] = 32
            if "byline" in post:
                sides[post["byline"]["iconUrl"]] = 40
            if "audio" in post:
                track = post["audio"]["track"]
                self.assertIs(type(post["audio"]["trackId"]), int)
                self.assertIs(type(track["hasAudioTrackTimeline"]), bool)
                self.assertEqual("itunesId" in track, "albumArtUrl" in track)
                if "albumArtUrl" in track:
                    counts["sold"] += 1
                    sides[track["albumArtUrl"]] = 300
        for key, least, most in (("channel", 500, 950), ("venueName", 200, 500),
                                 ("venueCategoryId", 190, 490), ("byline", 80, 500),
                                 ("audio", 150, 500), ("sold", 100, 400)):
            self.assertTrue(least < counts[key] < most, (key, counts[key]))
        self.assertLess(counts["venueCategoryId"] + 10, counts["venueName"])
        self.assertLess(counts["sold"] + 50, counts["audio"])
        self.assertGreaterEqual(len(sides), 11)
        for url, side in sides.items():
            # A PNG's width and height stand behind its signature and the first chunk's head.
            self.assertEqual(self.fetched(url)[16:24], 2 * side.to_bytes(4, "big"), url)


class Extras(RouteCase):
    """The routes beside timelines and posts."""

    def references(self, feed, **key):
        return [card["reference"] for card in self.records(f"/inserts/{feed}", **key)]

    def test_a_venue_of_its_own_is_in_the_nested_form(self):
        venue = self.data("/venues/50a1f0c2e4b0000000000005")
        icon = venue["categories"][0].pop("icon")
        self.fetched(icon["prefix"] + "32" + icon["suffix"])
        self.assertEqual(venue, {
            "id": "50a1f0c2e4b0000000000005", "name": "Bahnhof Chur",
            "location": {"city": "Chur", "lat": 46.8533, "lng": 9.5288,
                         "address": "Bahnhofplatz 1", "state": "GR", "country": "Switzerland"},
            "categories": [{"id": "4bf58dd8d48988d129951735", "shortName": "Train station",
                            "primary": True}]})
        sofa = self.data("/venues/50a1f0c2e4b0000000000009")
        self.assertEqual(sofa["categories"], [])
        self.assertNotIn("address", sofa["location"])

    def test_a_channel_carries_the_first_page_of_its_timeline(self):
        channel = self.data("/channels/3?size=7")
        self.assertEqual((channel["channelId"], channel["channel"]), (3, "Animals"))
        self.assertNotIn("records", channel)
        page = self.data("/timelines/channels/3?size=7")
        self.assertEqual(channel["timeline"], page)
        self.assertEqual((len(page["records"]), page["channel"]["channelId"]), (7, 3))

    def test_the_list_of_channels_has_each_without_its_timeline(self):
        page = self.data("/channels", None)
        self.assertEqual((page["count"], len(page["records"])), (10, 10))
        for channel in page["records"]:
            whole = self.data(f"/channels/{channel['channelId']}")
            del whole["timeline"]
            self.assertEqual(channel, whole)

    def test_users_are_found_by_identifier_and_name(self):
        me = self.data("/users/me")
        self.assertEqual(self.data("/users/1001", None), me)
        self.assertEqual(self.data("/users?username=mara", None), {"count": 1, "records": [me]})
        self.assertEqual(self.records("/users?username=luc%C3%ADa"), [self.data("/users/1007")])
        for name in "", "Mara", "me", "mar%25":
            self.assertEqual(self.data(f"/users?username={name}"), {"count": 0, "records": []})

    def test_feeds_have_inserts(self):
        people, launch = self.records("/inserts/home")
        self.assertEqual((people["type"], launch["type"]), ("userMosaic", "urlAction"))
        self.assertEqual(len(people["users"]["records"]), 6)
        for key in "reference", "title", "actionTitle", "actionLink":
            self.assertIs(type(launch[key]), str, key)
        self.fetched(launch["backgroundImage"])
        picks, rating = self.records("/inserts/popular")
        self.assertEqual((picks["type"], rating["type"]), ("postsMosaic", "solicitation"))
        self.assertEqual(picks["posts"]["records"], self.records("/timelines/editors-picks?size=6"))
        self.assertIs(picks["closeable"], False)
        self.assertNotIn("closeUrlPath", picks)
        self.assertEqual(rating["closeUrlPath"], "inserts/rate-the-app/close")
        self.assertEqual(self.records("/inserts/empty"), [])

    def test_a_closed_insert_stays_closed_for_its_user(self):
        both = ["people-to-follow", "longform-launch"]
        self.assertEqual(self.references("home"), both)
        for _ in range(2):
            self.assertEqual(self.ask("POST /inserts/longform-launch/close").status, 200)
        self.assertEqual(self.references("home"), both[:1])
        self.assertEqual(self.references("home", key=None), both)
        self.assertEqual(self.references("home", key=self.service.session("kofi")), both)
        self.assertEqual(self.ask("POST /inserts/editors-picks/close").status, 404)
        self.assertEqual(self.references("popular"), ["editors-picks", "rate-the-app"])

    def test_the_soundboard_names_posts_that_are_there(self):
        page = self.data("/soundboard", None)
        self.assertEqual(page["count"], len(page["records"]))
        for sound in page["records"]:
            self.path_of(sound["soundUrl"])
        sources = [sound["sourcePostId"] for sound in page["records"] if "sourcePostId" in sound]
        self.assertNotEqual(sources, [])
        for post in sources:
            self.data(f"/posts/{post}")


if __name__ == "__main__":
    unittest.main()
