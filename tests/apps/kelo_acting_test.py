"""kelo's commands that act on the service, and what the service makes of them."""

import json
import time
import unittest

from case import PASSWORD, Case
from service import KEY

USER = "1002"
VIDEO = "lf-unseen"


class Acting(Case):
    def posts(self):
        return self.json("timeline", "all", "--size", "50")

    def untouched(self):
        """A recent post that mara has neither liked nor reposted; the request log starts here."""
        found = next(post["postId"] for post in self.posts()
                     if not post["liked"] and not post["rekeloed"])
        self.service.forget()
        return found

    def again(self, post_id):
        return next(post for post in self.posts() if post["postId"] == post_id)

    def says(self, line, *arguments, **more):
        self.assertRegex(self.succeeds(*arguments, **more), f"^{line}\n$")

    def reports(self, deed, id_, *arguments):
        """With --json; returns the identifier that the service gave the deed."""
        text = self.succeeds(*arguments, "--json")
        self.assertEqual(text.count("\n"), 1)
        done = json.loads(text)
        self.assertEqual(done, {"done": deed, "id": id_, "deedId": done["deedId"]})
        return done["deedId"]

    def commands(self, post):
        """Each acting command that needs a session, with the path that it asks for first."""
        return ((["like", post], f"/posts/{post}/likes"),
                (["unlike", post], f"/posts/{post}/likes"),
                (["rekelo", post], f"/posts/{post}/repost"),
                (["follow", USER], f"/users/{USER}/follow-on-twitter"),
                (["unfollow", USER], f"/users/{USER}/unfollow-on-twitter"),
                (["boost", "user", USER, "neutral"], f"/recommendations/feedback/users/{USER}"),
                (["boost", "post", post, "neutral"], f"/recommendations/feedback/posts/{post}"),
                (["loops", post, "2"], "/loops"),
                (["views", VIDEO, "--submit"], f"/longforms/{VIDEO}/views"))


class Effects(Acting):
    def test_like_and_unlike(self):
        post = self.untouched()
        path = f"/posts/{post}/likes"
        self.says(rf"liked post {post} \(\d+\)", "like", post)
        self.assertEqual(self.service.calls(path), [("POST", "")])
        like = self.service.kept("likes")[-1]
        self.assertEqual((str(like["postId"]), like["userId"]), (post, 1001))
        self.assertTrue(self.again(post)["liked"])
        self.assertEqual(self.reports("liked post", post, "like", post), str(like["likeId"]))
        self.says(f"unliked post {post}", "unlike", post)
        self.assertFalse(self.again(post)["liked"])
        self.assertIsNone(self.reports("unliked post", post, "unlike", post))
        self.assertEqual([method for method, _ in self.service.calls(path)],
                         ["POST", "POST", "DELETE", "DELETE"])

    def test_rekelo_and_unrekelo(self):
        post = self.untouched()
        self.says(rf"reposted post {post} \(\d+\)", "rekelo", post)
        repost = str(self.service.kept("reposts")[-1]["repostId"])
        self.assertEqual(self.again(post)["currentUserRekelo"]["rekeloId"], repost)
        self.assertEqual(self.reports("reposted post", post, "rekelo", post), repost)
        self.says(f"took back the repost of post {post}", "unrekelo", post)
        self.assertEqual(self.service.calls(f"/posts/{post}/repost"), [("POST", "")] * 2)
        self.assertEqual(self.service.calls(f"/posts/{post}/repost/{repost}"), [("DELETE", "")])
        self.assertFalse(self.again(post)["rekeloed"])
        self.succeeds("rekelo", post)
        self.assertIsNone(self.reports("took back the repost of post", post, "unrekelo", post))
        self.assertFalse(self.again(post)["rekeloed"])

    def test_unrekelo_asks_for_the_post_alone(self):
        for feed in ("all", "popular"):
            with self.subTest(feed=feed):
                post = next(post["postId"] for post in reversed([*map(json.loads, self.succeeds(
                    "timeline", feed, "--size", "300", "--json").splitlines())])
                    if not post["rekeloed"])
                self.succeeds("rekelo", post)
                repost = str(self.service.kept("reposts")[-1]["repostId"])
                self.service.forget()
                self.succeeds("unrekelo", post)
                self.assertEqual([(one["method"], one["path"]) for one in self.service.seen()], [
                    ("GET", f"/posts/{post}"), ("DELETE", f"/posts/{post}/repost/{repost}")])
                self.assertEqual([entry for entry in self.service.kept("reposts")
                                  if str(entry["postId"]) == post], [])

    def test_unrekelo_of_what_is_not_reposted(self):
        post = self.untouched()
        self.fails(1, f"post {post} is not reposted by this user", "unrekelo", post)
        self.fails(1, "There is no such post", "unrekelo", "5")

    def test_deeds_without_an_identifier_of_their_own(self):
        post = self.untouched()
        for deed, id_, arguments in (
                ("following user", USER, ["follow", USER]),
                ("no longer following user", USER, ["unfollow", USER]),
                ("positive feedback on user", USER, ["boost", "user", USER, "positive"]),
                ("neutral feedback on post", post, ["boost", "post", post, "neutral"]),
                ("negative feedback on post", post, ["boost", "post", post, "negative"])):
            with self.subTest(deed=deed):
                self.says(f"{deed} {id_}", *arguments)
                self.assertIsNone(self.reports(deed, id_, *arguments))
        self.assertEqual([(entry["kind"], entry["boost"])
                          for entry in self.service.kept("feedback")[::2]],
                         [("user", "positive"), ("post", "neutral"), ("post", "negative")])

    def test_loops(self):
        post = self.untouched()
        before = self.again(post)["user"]["loopData"]["count"]
        start = time.time()
        self.says(f"reported 5 loops of post {post}", "loops", post, "5")
        self.assertIsNone(self.reports("reported 7 loops of post", post, "loops", post, "7"))
        for (method, body), count in zip(self.service.calls("/loops"), (5, 7), strict=True):
            self.assertEqual(method, "POST")
            (record,) = json.loads(body)["loops"]
            self.assertEqual((record["count"], record["postId"]), (count, post))
            self.assertTrue(start - 1 < record["ts"] < time.time() + 1, record)
        self.assertEqual([entry["count"] for entry in self.service.kept("loops")[-2:]], [5, 7])
        self.assertEqual(self.again(post)["user"]["loopData"]["count"] - before, 12)

    def test_views(self):
        before = json.loads(self.succeeds("views", VIDEO, "--json"))
        self.assertEqual(before, {"longformId": VIDEO, "count": before["count"]})
        self.says(f"{before['count']} views", "views", VIDEO)
        self.says(f"reported a view of video {VIDEO}", "views", VIDEO, "--submit")
        self.assertIsNone(self.reports("reported a view of video", VIDEO,
                                       "views", VIDEO, "--submit"))
        calls = self.service.calls(f"/longforms/{VIDEO}/views")
        self.assertEqual([method for method, _ in calls], ["GET", "GET", "POST", "POST"])
        self.assertEqual(set(json.loads(calls[2][1])), {"timestamp"})
        self.assertEqual(json.loads(calls[2][1])["timestamp"],
                         self.service.kept("views")[-2]["timestamp"])
        after = json.loads(self.succeeds("views", VIDEO, "--json"))
        self.assertEqual(after["count"], before["count"] + 2)

    def test_views_that_do_not_come(self):
        self.service.fault(f"/longforms/{VIDEO}/views", type="body", body='{"data": {}}')
        self.fails(1, "the service sent no views", "views", VIDEO)
        self.service.fault(f"/longforms/{VIDEO}/views", type="body",
                           body='{"data": {"longformId": "x", "count": "1"}}')
        self.fails(1, "sent an invalid response", "views", VIDEO)

    def test_sounds(self):
        sounds = self.json("sounds")
        self.assertGreater(len(sounds), 10)
        for sound in sounds:
            self.assertEqual(set(sound),
                             {"soundId", "name", "soundUrl", "featured", "sourcePostId"})
            self.assertTrue(sound["soundUrl"].startswith(f"https://{self.service.host}/"), sound)
        self.assertEqual({sound["featured"] for sound in sounds}, {True, False})
        self.assertTrue(any(sound["sourcePostId"] for sound in sounds))
        lines = self.succeeds("sounds").splitlines()
        for line, sound in zip(lines, sounds, strict=True):
            mark = "★" if sound["featured"] else " "
            self.assertEqual(line, f"{sound['soundId']:10} {mark} {sound['name']}")

    def test_an_empty_soundboard(self):
        for option, text in (([], "The soundboard is empty.\n"), (["--json"], "")):
            self.service.fault("/soundboard", type="body", body='{"data": {"records": []}}')
            self.assertEqual(self.succeeds("sounds", *option), text)

    def test_a_request_of_ones_own(self):
        health = json.loads(self.succeeds("request", "_service/health"))
        self.assertEqual(health["status"], "ok")
        body = '{"username": "kofi", "password": "loop-the-loop"}'
        text = self.succeeds("request", "sessions", "--method", "POST", "--body", body)
        self.assertEqual(json.loads(text)["data"]["username"], "kofi")
        self.assertEqual(self.service.calls("/sessions"), [("POST", body)])
        self.assertEqual(self.service.headers("/sessions")[0]["Content-Type"],
                         "application/json")
        answer = json.loads(self.succeeds("request", "posts/5", "--json"))["answer"]
        self.assertEqual(json.loads(answer)["code"], 404)

    def test_hostile_answers_stay_harmless(self):
        self.service.fault("/soundboard", type="body", body=json.dumps(
            {"data": {"records": [{"soundId": "1\x1b[31m", "name": "a\x07\nb"}]}}))
        self.assertEqual(self.succeeds("sounds"), "1 [31m       a  b\n")
        post = self.untouched()
        self.service.fault(f"/posts/{post}/likes", type="body",
                           body='{"data": {"likeId": "\\u001b[2J\\n"}}')
        self.assertEqual(self.succeeds("like", post), f"liked post {post} ( [2J )\n")


class FromInput(Acting):
    """With "-" in place of an identifier."""

    def test_each_is_done_in_turn(self):
        posts = [post["postId"] for post in self.posts()[:3]]
        users = ["1002", "1003"]
        for command, ids, deed in (
                (["like", "-"], posts, "liked post"), (["unlike", "-"], posts, "unliked post"),
                (["rekelo", "-"], posts, "reposted post"),
                (["unrekelo", "-"], posts, "took back the repost of post"),
                (["loops", "-", "2"], posts, "reported 2 loops of post"),
                (["follow", "-"], users, "following user"),
                (["unfollow", "-"], users, "no longer following user"),
                (["boost", "user", "-", "positive"], users, "positive feedback on user"),
                (["boost", "post", "-", "neutral"], posts, "neutral feedback on post")):
            with self.subTest(command=command):
                text = self.succeeds(*command, "--json", input="\n".join(ids))
                done = [json.loads(line) for line in text.splitlines()]
                self.assertEqual([(one["done"], one["id"]) for one in done],
                                 [(deed, id_) for id_ in ids])

    def test_a_timeline_names_what_can_be_liked(self):
        self.service.forget()
        lines = self.succeeds("timeline", "all", "--size", "4").splitlines()
        posts = [line.split()[0] for line in lines]
        self.succeeds("like", "-", input=f" {posts[0]}\t\r\n\n" + "\n".join(posts[1:]) + "\n")
        self.assertEqual([one["path"] for one in self.service.seen(method="POST")],
                         [f"/posts/{post}/likes" for post in posts])

    def test_nothing_to_do(self):
        for command in (["like", "-"], ["download", "-"]):
            self.assertEqual(self.succeeds(*command, input="\n"), "")
        self.assertEqual(self.service.seen(), [])

    def test_a_bad_line_is_told_before_anything_is_sent(self):
        post = self.untouched()
        for command, line in ((["like", "-"], "a/b"), (["boost", "post", "-", "neutral"], "a b"),
                              (["download", "-"], "a/b:high")):
            with self.subTest(command=command):
                self.fails(2, "line 3 of standard input: 'a", *command, input=f"{post}\n\n{line}\n")
        self.assertEqual(self.service.seen(), [])

    def test_one_failure_leaves_the_others(self):
        post, other = (post["postId"] for post in self.posts()[:2])
        done = self.kelo("like", "-", input=f"{post}\n5\n{other}\n")
        self.assertEqual((done.returncode, done.stderr),
                         (1, "kelo: 5: the service says: There is no such post\n"))
        self.assertEqual([line.split()[2] for line in done.stdout.splitlines()], [post, other])

    def test_a_failure_that_all_would_meet_ends_it(self):
        post, other = (post["postId"] for post in self.posts()[:2])
        for arguments, code, line in (
                (["--host", "localhost:1"], 1, "cannot connect"),
                (["--session", "bad"], 3, "This session is not known")):
            with self.subTest(arguments=arguments):
                done = self.kelo(*arguments, "like", "-", input=f"{post}\n{other}\n5\n")
                self.assertEqual((done.returncode, done.stdout), (code, ""))
                self.assertRegex(done.stderr,
                                 rf"^kelo: {post}: .*{line}.* \(2 more not tried\)\n$")

    def test_expiry_on_the_way(self):
        posts = [post["postId"] for post in self.posts()[:4]]
        self.service.forget()
        for skip in (1, 2):
            self.service.fault("/posts/*", skip=skip, type="error", code=103, message="Expired")
        text = self.succeeds("--session", KEY, "--user", "mara", "--password", PASSWORD,
                             "like", "-", input="\n".join(posts))
        self.assertEqual([line.split()[2] for line in text.splitlines()], posts)
        self.assertEqual(len(self.service.seen("/sessions")), 2)


class Refusals(Acting):
    def test_unknown_posts_users_and_videos(self):
        for arguments, what in ((["like", "5"], "post"), (["unlike", "5"], "post"),
                                (["rekelo", "5"], "post"), (["like", "five"], "nothing"),
                                (["follow", "5"], "user"), (["unfollow", "5"], "user"),
                                (["boost", "user", "5", "positive"], "user"),
                                (["boost", "post", "5", "positive"], "post"),
                                (["loops", "5", "1"], "post"), (["loops", "five", "1"], "post"),
                                (["views", "5"], "long-form video"),
                                (["views", "5", "--submit"], "long-form video")):
            with self.subTest(arguments=arguments):
                says = "There is nothing with the id five" if what == "nothing" else \
                    f"There is no such {what}"
                self.fails(1, f"the service says: {says}", *arguments)
                self.fails(1, says, *arguments, "--json")

    def test_nobody_is_signed_in(self):
        post = self.untouched()
        for arguments, path in self.commands(post):
            with self.subTest(arguments=arguments):
                self.service.forget()
                self.fails(3, "Please sign in", "--session", "", *arguments)
                self.fails(3, "This session is not known", "--session", "bad", *arguments)
                self.assertEqual(len(self.service.calls(path)), 2)
        self.fails(3, "This session is not known", "--session", "bad", "unrekelo", post)
        self.fails(1, "is not reposted by this user", "--session", "", "unrekelo", post)

    def test_what_is_open_to_all(self):
        self.assertRegex(self.succeeds("--session", "", "views", VIDEO), r"^\d+ views\n$")
        self.assertIn("Air horn", self.succeeds("--session", "", "sounds"))

    def test_a_captcha(self):
        post = self.untouched()
        key, url = self.service.captcha_session()
        for arguments, path in self.commands(post):
            with self.subTest(arguments=arguments):
                self.service.forget()
                self.fails(3, f"the service asks for a captcha at {url}",
                           "--session", key, *arguments)
                self.assertEqual(len(self.service.calls(path)), 1)

    def test_answers_that_are_none(self):
        post = self.untouched()
        for arguments, path in self.commands(post):
            with self.subTest(arguments=arguments):
                self.service.fault(path, type="body", body="<html>")
                self.fails(1, "sent an invalid response", *arguments)
        for arguments, path in ((["sounds"], "/soundboard"),
                                (["loops", post, "1"], "/loops"),
                                (["like", post], f"/posts/{post}/likes")):
            with self.subTest(arguments=arguments):
                self.service.fault(path, type="close", afterBytes=60, abrupt=True)
                self.fails(1, "broke off", *arguments)


class Recovery(Acting):
    def recovers(self, arguments, path, sent):
        """With an expired session, `path` is called twice, for the second time with a new key."""
        self.service.forget()
        key = self.service.expired_session()
        text = self.succeeds("--session", key, "--user", "mara", "--password", PASSWORD,
                             *arguments)
        self.assertEqual(text.count("\n"), 1, text)
        keys = [headers["kelo-session-id"] for headers in self.service.headers(path)]
        self.assertEqual(len(keys), 2)
        self.assertEqual(keys[0], key)
        self.assertNotIn(keys[1], (key, KEY))
        self.assertEqual(len(self.service.seen("/sessions")), 1)
        first, second = self.service.calls(path)
        self.assertEqual(first, second)
        self.assertEqual(first[0], sent)

    def test_an_expired_session(self):
        post = self.untouched()
        for arguments, path in self.commands(post):
            with self.subTest(arguments=arguments):
                self.recovers(arguments, path, "DELETE" if arguments[0] == "unlike" else "POST")

    def test_an_expired_session_while_looking_for_the_repost(self):
        post = self.untouched()
        self.succeeds("rekelo", post)
        self.recovers(["unrekelo", post], f"/posts/{post}", "GET")
        self.assertFalse(self.again(post)["rekeloed"])

    def test_expiry_between_looking_and_taking_back(self):
        post = self.untouched()
        self.succeeds("rekelo", post)
        repost = self.service.kept("reposts")[-1]["repostId"]
        path = f"/posts/{post}/repost/{repost}"
        self.service.fault(path, type="error", code=103, message="Expired")
        self.succeeds("--session", KEY, "--user", "mara", "--password", PASSWORD,
                      "unrekelo", post)
        self.assertEqual(self.service.calls(path), [("DELETE", "")] * 2)
        self.assertFalse(self.again(post)["rekeloed"])

    def test_a_captcha_is_solved_at_the_terminal(self):
        post = self.untouched()
        for command in (["like", post], ["loops", post, "3"]):
            with self.subTest(command=command):
                key, url = self.service.captcha_session()
                console = self.console("--session", key, *command)
                console.expect(url)
                console.expect("Then press Enter (q gives up): ")
                self.service.solve(url)
                console.type("\n")
                self.finishes(console, 0)
        self.assertTrue(self.again(post)["liked"])
        self.assertEqual(self.service.kept("loops")[-1]["count"], 3)


if __name__ == "__main__":
    unittest.main()
