"""What kelo shows of the models beside posts: channels, venues, bylines, music, tags, links, cards."""

import json
import os
import plistlib
import tempfile
import unittest

from case import Case

CHANNEL_FIELDS = {"channelId", "name", "fontColorHex", "backgroundColorHex", "iconUrl",
                  "iconRetinaUrl", "exploreIconRetinaUrl", "following", "created",
                  "channelDescription", "vanityPathSuffix", "timelineData", "showRecent"}
VENUE_FIELDS = {"foursquareVenueId", "name", "address", "city", "state", "country", "latitude",
                "longitude", "category"}
STATION = "50a1f0c2e4b0000000000005"


def stretch(text, entity):
    """The part of the text that an entity's range, in UTF-16 units, covers."""
    first = entity["range"]["location"] * 2
    units = text.encode("utf-16-le")[first:first + entity["range"]["length"] * 2]
    return units.decode("utf-16-le")


class Models(Case):
    def test_users_by_name_and_identifier(self):
        for name in ("lucía", "theo.loops", "the_weather_in_bergen"):
            user, = self.json("user", name)
            self.assertEqual((set(user), user["username"]),
                             ({"userId", "username", "loopData"}, name))
            self.assertEqual(self.succeeds("user", name).splitlines()[:2],
                             [name, f"user {user['userId']}"])
            self.assertEqual(self.succeeds("user", user["userId"]), self.succeeds("user", name))
        self.assertEqual(self.succeeds("user", "mara"), self.succeeds("me"))

    def test_users_that_are_not_there(self):
        self.fails(1, "There is no such user", "user", "5")
        for name in ("nobody", "me", "a/b", "http://x", "x&username=mara", "..", "-"):
            with self.subTest(name=name):
                self.fails(1, f"there is no user named {name}", "user", name)

    def test_channels(self):
        channels = self.json("channels")
        self.assertEqual(len(channels), 10)
        for channel, line in zip(channels, self.succeeds("channels").splitlines(), strict=True):
            self.assertEqual(set(channel), CHANNEL_FIELDS)
            self.assertIsNone(channel["timelineData"])
            self.assertEqual(line, f"{channel['channelId']:4}{channel['name']:16} "
                                   f"{channel['channelDescription']}")
        self.service.answer("/channels", {"records": []})
        self.assertEqual(self.succeeds("channels"), "There are no channels.\n")

    def test_channel(self):
        lines = self.succeeds("channel", "3").splitlines()
        self.assertEqual(lines[:2], ["Animals", "Mostly cats"])
        self.assertEqual(lines[2:], self.succeeds("timeline", "channels/3").splitlines()[1:])
        self.assertEqual(self.service.seen("/channels/3")[0]["query"], "size=5")
        self.assertEqual(len(self.succeeds("channel", "3", "--size", "12").splitlines()), 14)

    def test_channel_as_json(self):
        channel, = self.json("channel", "3", "--size", "4")
        self.assertEqual(set(channel), CHANNEL_FIELDS)
        self.assertEqual((channel["channelId"], channel["name"]), ("3", "Animals"))
        self.assertEqual(channel["timelineData"],
                         [{**post, "user": channel["timelineData"][i]["user"]}
                          for i, post in enumerate(self.json("timeline", "channels/3",
                                                             "--size", "4"))])
        self.assertTrue(all(post["channel"] == "Animals" for post in channel["timelineData"]))

    def test_a_channel_that_tells_little(self):
        self.service.answer("/channels/7",
                            {"channelId": 7, "channel": "a\x1b[2Jb", "following": True})
        self.assertEqual(self.succeeds("channel", "7"), "a [2Jb (followed)\n")
        self.service.answer("/channels/7", {"channelId": 7, "channel": "a", "timeline": 5})
        channel, = self.json("channel", "7")
        self.assertIsNone(channel["timelineData"])
        self.assertEqual(channel["fontColorHex"], "000000")

    def test_channels_that_are_none(self):
        self.fails(1, "There is no such channel", "channel", "99")
        self.service.answer("/channels/7", {"channel": "nameless number"})
        self.fails(1, "sent an invalid response", "channel", "7")
        self.service.answer("/channels/7", {})
        self.fails(1, "the service sent no channel", "channel", "7")

    def test_a_channels_timeline_has_its_name_once(self):
        lines = self.succeeds("timeline", "channels/3", "--pages", "3", "--size", "4").splitlines()
        self.assertEqual(len(lines), 13)
        self.assertEqual(lines.count("Animals"), 1)
        self.assertEqual(lines[0], "Animals")
        self.assertNotIn("Animals", self.succeeds("timeline", "all").splitlines())

    def test_details_say_what_json_says(self):
        posts = self.json("timeline", "all", "--size", "200")
        text = self.succeeds("timeline", "all", "--size", "200", "--details")
        kinds = {"channel": 0, "venue": 0, "byline": 0, "audio": 0, "tags": 0, "entities": 0}
        for post in posts:
            self.assertIn(f"by {post['user']['username']}, user {post['user']['userId']}\n", text)
            for kind in kinds:
                kinds[kind] += 1 if post[kind] else 0
            if post["venue"]:
                self.assertEqual(set(post["venue"]), VENUE_FIELDS)
                self.assertEqual((post["venue"]["country"], post["venue"]["latitude"]), (None, 0))
                self.assertIn(f"at {post['venue']['name']}, ", text)
                self.assertIn(f", venue {post['venue']['foursquareVenueId']}\n", text)
            if post["byline"]:
                self.assertIn(f"                     {post['byline']['text']}\n", text)
            if post["audio"]:
                self.assertIn(f"♪ {post['audio']['trackName']} – {post['audio']['artistName']}\n",
                              text)
            for tag in post["tags"]:
                self.assertIn(f"{tag['name']} ({tag['count']} posts)", text)
            if post["channel"]:
                self.assertIn(f"                     in {post['channel']}\n", text)
        for kind, count in kinds.items():
            self.assertGreater(count, 5, kind)

    def test_entities_cut_their_words_out_of_captions(self):
        linked = 0
        for post in self.json("timeline", "all", "--size", "300"):
            texts = [(post["caption"], entity) for entity in post["entities"]]
            if post["byline"]:
                texts += [(post["byline"]["text"], e) for e in post["byline"]["entities"]]
            for text, entity in texts:
                sign = {"tag": "#", "mention": "@"}.get(entity["type"], "")
                if text is not post["caption"]:
                    sign = ""
                self.assertEqual(stretch(text, entity), sign + entity["title"])
                self.assertTrue(entity["link"].startswith(" | kelo://"), entity)
                linked += 1
        self.assertGreater(linked, 300)

    def test_details_that_are_spoilt_are_left_out(self):
        self.service.answer("/timelines/popular", {"records": [{
            "postId": 1, "username": "x", "description": "#a", "channel": 5, "venueName": "y",
            "byline": {"body": "no icon"}, "audio": {"trackId": "1"}, "tags": [{"tag": "a"}, 5],
            "entities": [{"range": [0, 99]}, {"range": [0, 2], "title": "a", "link": "b\x07"}]}]})
        lines = self.succeeds("timeline", "popular", "--details").splitlines()
        self.assertEqual(lines[1:], ["                     #a → b"])

    def test_venue(self):
        venue, = self.json("venue", STATION)
        self.assertEqual(set(venue), VENUE_FIELDS)
        self.assertEqual((venue["latitude"], venue["country"]), (46.8533, "Switzerland"))
        self.assertTrue(venue["category"]["iconUrl"].endswith("_32.png"))
        self.fails(1, "There is no such venue", "venue", "nowhere")

    def test_inserts_as_json(self):
        people, action = self.json("inserts", "home")
        self.assertEqual((people["kind"], len(people["users"])), ("userMosaic", 6))
        self.assertEqual((action["kind"], action["actionUrl"]),
                         ("urlAction", "kelo://upload-longform"))
        self.assertEqual(action["closeUrlPath"], "inserts/longform-launch/close")
        names = ", ".join(f"{user['username']} ({user['userId']})" for user in people["users"])
        self.assertTrue(self.succeeds("inserts", "home").splitlines()[0].endswith(f": {names}"))
        words = self.succeeds("inserts", "home").split()
        for columns in (80, 40):
            console = self.console("inserts", "home", columns=columns)
            self.finishes(console, 0)
            self.assertEqual(console.output.split(), words)
            lines = console.output.splitlines()
            self.assertGreater(len(lines), 4)
            self.assertLessEqual(max(map(len, lines)), columns)
        posts, prompt = self.json("inserts", "popular")
        self.assertEqual((posts["kind"], len(posts["posts"]), posts["type"]), ("postsMosaic", 6, 3))
        self.assertIs(posts["closeable"], False)
        self.assertEqual(prompt["kind"], "solicitation")

    def test_a_card_of_an_unknown_type_spoils_nothing(self):
        self.service.answer("/inserts/home", {"records": [
            {"type": "weather", "reference": "rain", "closeable": True},
            {"type": "solicitation", "reference": "rate"}]})
        lines = self.succeeds("inserts", "home").splitlines()
        self.assertEqual([line.split() for line in lines],
                         [["rain", "unknown", "×"], ["rate", "prompt"]])
        self.service.answer("/inserts/home",
                            {"records": [{"type": "urlAction", "reference": "broken"}]})
        self.fails(1, "sent an invalid response", "inserts", "home")


class Archives(Case):
    def setUp(self):
        super().setUp()
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "kept")

    def shown(self):
        return json.loads(self.succeeds("show", self.path, "--json"))

    def saved(self, kind, *identifier):
        text = self.succeeds("save", self.path, kind, *identifier)
        self.assertEqual(text, f"saved {kind} in {self.path}\n")
        with open(self.path, "rb") as file:
            archive = plistlib.load(file)
        self.assertEqual((archive["$archiver"], archive["$version"]), ("NSKeyedArchiver", 100000))
        return self.shown()

    def test_channel(self):
        kept = self.saved("channel", "3")
        self.assertEqual(kept.pop("class"), "KLChannel")
        channel, = self.json("channel", "3")
        self.assertEqual(set(kept), {"channelId", "name", "created", "iconUrl", "iconRetinaUrl",
                                     "fontColorHex", "backgroundColorHex", "channelDescription"})
        self.assertEqual(kept, {key: channel[key] for key in kept})
        lines = self.succeeds("show", self.path).splitlines()
        self.assertEqual(lines[0], "KLChannel")
        self.assertIn("  name: Animals", lines)

    def test_venue_with_its_category(self):
        kept = self.saved("venue", STATION)
        self.assertEqual(kept.pop("class"), "KLVenue")
        self.assertEqual([kept], self.json("venue", STATION))
        self.assertIsNotNone(kept["category"])
        self.assertIn("  category:", self.succeeds("show", self.path).splitlines())

    def test_category_of_a_venue(self):
        venue, = self.json("venue", STATION)
        self.assertEqual(self.saved("category", STATION),
                         {"class": "KLVenueCategory", **venue["category"]})

    def test_thumbnail_of_a_post(self):
        post, = self.json("timeline", "all", "--size", "1", "--pages", "1")
        self.assertEqual(self.saved("thumbnail", post["postId"]),
                         {"class": "PostThumbnail", "url": post["thumbnailUrl"], "width": 0,
                          "height": 0})

    def test_an_archive_of_a_phone(self):
        with open(self.path, "wb") as file:
            plistlib.dump({
                "$version": 100000, "$archiver": "NSKeyedArchiver",
                "$top": {"root": plistlib.UID(1)},
                "$objects": ["$null", {"$class": plistlib.UID(2), "url": plistlib.UID(3),
                                       "width": 480, "height": 270},
                             {"$classname": "KeloAPI.PostThumbnail",
                              "$classes": ["KeloAPI.PostThumbnail", "NSObject"]},
                             {"$class": plistlib.UID(4), "NS.base": plistlib.UID(0),
                              "NS.relative": "https://a.example/t.png"},
                             {"$classname": "NSURL", "$classes": ["NSURL", "NSObject"]}]},
                file, fmt=plistlib.FMT_BINARY)
        self.assertEqual(self.shown(), {"class": "PostThumbnail", "width": 480, "height": 270,
                                        "url": "https://a.example/t.png"})

    def test_a_link_is_followed_and_other_files_stay(self):
        other = os.path.join(self.folder.name, "other")
        for name in (other, self.path + ".new", self.path + ".part"):
            with open(name, "w", encoding="utf-8") as file:
                file.write("mine")
        os.symlink(other, self.path)
        self.saved("channel", "3")
        self.assertTrue(os.path.islink(self.path))
        self.assertEqual(sorted(os.listdir(self.folder.name)),
                         ["kept", "kept.new", "kept.part", "other"])
        for name in (self.path + ".new", self.path + ".part"):
            with open(name, encoding="utf-8") as file:
                self.assertEqual(file.read(), "mine")

    def test_sound(self):
        sound = self.json("sounds")[-1]
        self.assertEqual(self.saved("sound", sound["soundId"]),
                         {"class": "SoundboardSound", **sound})

    def test_parts_of_a_post(self):
        post = next(one for one in self.json("timeline", "all", "--size", "100")
                    if one["tags"] and one["entities"])
        tag = self.saved("tag", post["postId"])
        self.assertEqual(tag, {"class": "KLTag", "tagId": post["tags"][0]["tagId"],
                               "name": post["tags"][0]["name"]})
        self.assertEqual(self.saved("entity", post["postId"]),
                         {"class": "KLEntity", **post["entities"][0]})

    def test_loops(self):
        loops = self.saved("loops")
        self.assertEqual(loops["class"], "KLLoopData")
        me, = self.json("me")
        self.assertEqual((loops["count"], loops["velocity"]),
                         (me["loopData"]["count"], me["loopData"]["velocity"]))

    def test_what_is_not_there_leaves_the_file(self):
        self.saved("channel", "3")
        for kind, identifier, line in (("channel", "99", "There is no such channel"),
                                       ("sound", "none", "the service has no such sound")):
            self.fails(1, line, "save", self.path, kind, identifier)
        self.assertEqual(self.shown()["channelId"], "3")
        self.assertEqual(os.listdir(self.folder.name), ["kept"])

    def test_places_that_cannot_be_written(self):
        self.fails(1, "No such file or directory", "save",
                   os.path.join(self.folder.name, "missing", "kept"), "channel", "3")
        self.fails(1, "cannot write", "save", self.folder.name, "channel", "3")

    def test_files_that_are_no_archives(self):
        def file(content):
            with open(self.path, "wb") as out:
                out.write(content)
        self.fails(1, "No such file or directory", "show", self.path)
        self.fails(1, "it is not a file", "show", self.folder.name)
        for content in (b"", b"bplist00", os.urandom(1000), plistlib.dumps({"a": 1})):
            file(content)
            self.fails(1, "it is not an archive of a model", "show", self.path)
        self.saved("channel", "3")
        with open(self.path, "rb") as kept:
            archive = kept.read()
        file(archive[:-1])
        self.fails(1, "it is not an archive of a model", "show", self.path)
        file(archive.replace(b"KLChannel", b"KLChannex"))
        self.fails(1, "an archive of KLChannex, which is unknown here", "show", self.path)
        file(archive.replace(b"channelId", b"channelIx"))
        self.assertEqual(self.shown()["channelId"], "")
        sound = self.json("sounds")[0]
        self.saved("sound", sound["soundId"])
        with open(self.path, "rb") as kept:
            archive = kept.read()
        file(archive.replace(b"soundId", b"soundIx"))
        self.fails(1, "a field that every SoundboardSound has is missing", "show", self.path)


if __name__ == "__main__":
    unittest.main()
