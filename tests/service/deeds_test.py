"""What users do, the sessions in which they do it, and what the routes refuse."""

import json
import unittest

from route_case import KEY, RouteCase

EXPIRE = f"_service/sessions/{KEY}/expire"


def boost(value):
    return json.dumps({"recommendationBoost": value})


class Actions(RouteCase):
    """What users do to posts and to each other, and what is kept of it."""

    def find_post(self, holds):
        """The first of the newest posts of which it holds."""
        return next(post for post in self.records("/timelines/all?size=300") if holds(post))

    def untouched(self):
        """A post that the user neither likes nor reposted, and its path."""
        post = self.find_post(lambda post: not post["liked"] and "myRepostId" not in post)
        return post, f"/posts/{post['postId']}"

    def does(self, call):
        reply = self.ask(call)
        self.assertEqual((reply.status, reply.json), (200, {"data": {}}), call)

    def test_nothing_is_kept_before_anyone_acts(self):
        for kind in "likes", "reposts", "follows", "feedback", "loops", "views":
            self.assertEqual(self.service.kept(kind), [], kind)

    def test_a_like_is_there_until_it_is_taken_back(self):
        (before, path), me = self.untouched(), self.data("/users/me")
        like = self.ask(f"POST {path}/likes").data
        self.assertEqual((like["username"], like["userId"]), ("mara", 1001))
        liked = self.data(path)
        self.assertIs(liked["liked"], True)
        self.assertEqual(liked["likes"]["count"], before["likes"]["count"] + 1)
        self.assertEqual(liked["likes"]["records"][0], like)
        self.assertIs(self.data(path, None)["liked"], False)
        self.assertEqual(self.data("/users/me")["likeCount"], me["likeCount"] + 1)
        self.assertEqual(self.records("/timelines/users/1001/likes")[0]["postId"],
                         before["postId"])
        self.assertEqual(self.service.kept("likes"), [
            {"likeId": like["likeId"], "postId": before["postId"], "userId": 1001}])
        self.assertEqual(self.ask(f"POST {path}/likes").data, like)
        self.assertEqual(self.data(path), liked)
        for _ in range(2):
            self.does(f"DELETE {path}/likes")
            self.assertEqual(self.data(path), before)
        self.assertEqual(self.data("/users/me"), me)
        self.assertEqual(self.service.kept("likes"), [])
        # Every user has their own like, and none has the identifier of another.
        other = self.ask(f"POST {path}/likes", self.service.session("kofi")).data
        self.assertEqual(other["username"], "kofi")
        self.assertIs(self.data(path)["liked"], False)
        mine = self.ask(f"POST {path}/likes").data
        self.assertEqual(len({one["likeId"] for one in (like, other, mine)}), 3)
        self.does(f"DELETE {path}/likes")
        self.assertEqual(len(self.service.kept("likes")), 1)

    def test_a_repost_is_there_until_it_is_taken_back(self):
        before, path = self.untouched()
        repost = self.ask(f"POST {path}/repost").data
        self.assertEqual(repost["username"], "mara")
        self.assertEqual(self.ask(f"POST {path}/repost").data, repost)
        reposted = self.data(path)
        self.assertEqual(reposted["myRepostId"], repost["repostId"])
        self.assertEqual(reposted["reposts"]["count"], before["reposts"]["count"] + 1)
        self.assertEqual(self.service.kept("reposts")[0]["repostId"], repost["repostId"])
        taking_back = f"DELETE {path}/repost/{repost['repostId']}"
        self.assertEqual(self.ask(taking_back, self.service.session("kofi")).status, 404)
        self.does(taking_back)
        self.assertEqual(self.data(path), before)
        self.assertEqual(self.service.kept("reposts"), [])
        self.assertEqual(self.ask(taking_back).code, 404)
        self.assertNotEqual(self.ask(f"POST {path}/repost").data["repostId"], repost["repostId"])

        seeded = self.find_post(lambda post: "myRepostId" in post
                                and post["postId"] != before["postId"])
        path = f"/posts/{seeded['postId']}"
        self.does(f"DELETE {path}/repost/{seeded['myRepostId']}")
        self.assertNotIn("myRepostId", self.data(path))

    def test_following_twice_says_so(self):
        follow = "POST /users/1002/follow-on-twitter"
        unfollow = "POST /users/1002/unfollow-on-twitter"
        self.assertEqual(self.ask(unfollow).code, 231)
        self.does(follow)
        twice = self.ask(follow)
        self.assertEqual((twice.status, twice.code), (409, 230))
        self.assertNotEqual(twice.error, "")
        self.assertEqual(self.ask("POST /users/1003/follow-on-twitter",
                                  self.service.session("kofi")).json, {"data": {}})
        self.assertEqual(self.service.kept("follows"), [{"userId": 1001, "followeeId": 1002},
                                                        {"userId": 1004, "followeeId": 1003}])
        self.does(unfollow)
        self.assertEqual(self.ask(unfollow).code, 231)
        self.assertEqual(len(self.service.kept("follows")), 1)

    def test_feedback_is_kept_in_its_order(self):
        post_id = self.untouched()[0]["postId"]
        given = [("post", post_id, "negative"), ("user", 1003, "neutral"),
                 ("user", 1003, "positive")]
        for kind, target, value in given:
            self.does(f"POST /recommendations/feedback/{kind}s/{target} {boost(value)}")
        self.assertEqual(self.service.kept("feedback"), [
            {"userId": 1001, "kind": kind, "targetId": target, "boost": value}
            for kind, target, value in given])

    def test_loops_add_up(self):
        before, path = self.untouched()
        post_id = before["postId"]
        self.does("POST /loops " + json.dumps({"loops": [
            {"count": 3, "postId": str(post_id), "ts": 1447545600.25},
            {"count": 0, "postId": str(post_id), "ts": 1447545601}]}))
        self.does('POST /loops {"loops":[]}')
        after = self.data(path)
        self.assertEqual(after["loops"]["count"], before["loops"]["count"] + 3)
        self.assertEqual(after["loopCount"], before["loopCount"] + 3)
        entries = self.service.kept("loops")
        self.assertEqual(len(entries), 2)
        self.assertEqual(entries[0], {"userId": 1001, "postId": post_id, "count": 3,
                                      "ts": 1447545600.25})

    def test_one_bad_record_of_loops_refuses_them_all(self):
        post_id = self.untouched()[0]["postId"]
        good = {"count": 3, "postId": str(post_id), "ts": 1.5}
        for record, code in (({**good, "count": -1}, 400), ({**good, "count": 1.5}, 400),
                             ({**good, "count": "3"}, 400), ({**good, "count": 2**64 - 1}, 400),
                             ({**good, "postId": post_id}, 400), ({**good, "ts": "1.5"}, 400),
                             ({"count": 3, "ts": 1.5}, 400), (7, 400),
                             ({**good, "postId": "77"}, 404)):
            with self.subTest(record=record):
                body = json.dumps({"loops": [good, record]})
                self.assertEqual(self.ask(f"POST /loops {body}").code, code)
        self.assertEqual(self.service.kept("loops"), [])

    def test_views_add_up(self):
        path = "/longforms/lf-night-market/views"
        before = self.data(path, None)
        self.assertEqual(before["longformId"], "lf-night-market")
        self.assertGreater(before["count"], 0)
        self.does(f'POST {path} {{"timestamp":"1447545600.25"}}')
        self.assertEqual(self.data(path)["count"], before["count"] + 1)
        self.assertEqual(self.service.kept("views"), [
            {"userId": 1001, "longformId": "lf-night-market", "timestamp": "1447545600.25"}])
        self.assertEqual(self.data("/longforms/lf-unseen/views")["count"], 0)


class Sessions(RouteCase):
    def enter(self, username, password):
        body = json.dumps({"username": username, "password": password})
        return self.ask(f"POST /sessions {body}", None)

    def captcha(self):
        """Demands one of the development session: what the control route answers, and its path."""
        demand = self.service.control("POST", f"_service/sessions/{KEY}/captcha", {})
        return demand, f"/captcha/{demand['token']}"

    def add(self, **session):
        return self.service.control("POST", "_service/sessions", session)

    def test_the_seeded_user_is_signed_in(self):
        me = self.data("/users/me")
        self.assertEqual((me["userId"], me["username"]), (1001, "mara"))
        self.path_of(me["avatarUrl"])
        for key in ("loopCount", "loopVelocity", "followerCount", "followingCount", "postCount"):
            self.assertIn(type(me[key]), (int, float), key)
        self.assertGreater(me["postCount"], 0)

    def test_every_sign_in_gives_another_working_key(self):
        keys = set()
        for _ in range(10):
            session = self.enter("theo.loops", "loop-the-loop")
            self.assertEqual(session.status, 200)
            self.assertEqual((session.data["userId"], session.data["username"]),
                             (1002, "theo.loops"))
            keys.add(session.data["key"])
            self.assertEqual(self.data("/users/me", session.data["key"])["userId"], 1002)
        self.assertEqual(len(keys), 10)

    def test_signing_in_refuses_wrong_credentials(self):
        for username, password in (("mara", "loop-the-looP"), ("mara", ""),
                                   ("nobody", "loop-the-loop")):
            reply = self.enter(username, password)
            self.assertEqual((reply.status, reply.code), (401, 101))

    def test_are_added_under_given_and_made_up_keys(self):
        given = self.add(username="kofi", key="kofi's key")
        self.assertEqual((given["key"], given["userId"]), ("kofi's key", 1004))
        made = self.service.session("kofi")
        self.assertEqual(len(made), 32)
        self.assertEqual(self.data("/users/me", made)["username"], "kofi")

    def test_are_listed(self):
        self.add(username="kofi", key="a/b")
        self.service.control("POST", "_service/sessions/a%2Fb/expire", {})
        demand = self.captcha()[0]
        first, second = self.service.control("GET", "_service/sessions")["sessions"]
        self.assertEqual((first["key"], first["expired"]), ("a/b", True))
        self.assertNotIn("captchaUrl", first)
        self.assertEqual((second["username"], second["captchaUrl"]), ("mara", demand["url"]))

    def test_a_captcha_is_asked_for_until_it_is_solved(self):
        demand, path = self.captcha()
        self.assertEqual(demand["url"], self.address + path)
        for _ in range(2):
            reply = self.ask("GET /users/me")
            self.assertEqual((reply.status, reply.code, reply.data), (403, 419, demand["url"]))
        self.assertEqual(self.ask(f"POST {path}/solve", None).status, 200)
        self.assertEqual(self.data("/users/me")["userId"], 1001)
        self.assertEqual(self.ask(f"POST {path}/solve", None).status, 404)

    def test_a_captcha_is_shown_as_a_page_that_solves_it(self):
        path = self.captcha()[1]
        page = self.ask(f"GET {path}", None)
        self.assertEqual((page.status, page.headers["Content-Type"]),
                         (200, "text/html; charset=utf-8"))
        self.assertIn(f'method="post" action="{path}/solve"', page.body.decode())
        self.assertEqual(self.ask(f"GET {path}/solve", None).status, 200)
        self.assertEqual(self.ask(f"GET {path}", None).status, 404)

    def test_a_captcha_concerns_one_session_only_and_comes_after_expiry(self):
        self.captcha()
        self.assertEqual(self.data("/users/me", self.service.session())["userId"], 1001)
        self.service.control("POST", EXPIRE, {})
        self.assertEqual(self.ask("GET /users/me").code, 103)
        # A session that is added again is fresh, and without demands.
        self.add(username="mara", key=KEY)
        self.assertEqual(self.data("/users/me")["username"], "mara")


class Refusals(RouteCase):
    """What the routes refuse, whatever else they do."""

    def refuses(self, status, calls, code=None, key=KEY):
        """Each call is answered with the status, the code (the same unless given) and a text."""
        for call in calls:
            with self.subTest(call=call, key=key):
                reply = self.ask(call, key)
                self.assertEqual((reply.status, reply.code), (status, code or status))
                self.assertNotEqual(reply.error, "")
                self.assertNotIn("data", reply.json)

    def test_what_does_not_exist_is_not_found(self):
        self.refuses(404, (
            "GET /timelines", "GET /timelines/nothing", "GET /timelines/users/1",
            "GET /timelines/users/abc", "GET /timelines/users/1001/x",
            "GET /timelines/channels/99", "GET /channels/99", "GET /channels/x", "GET /channels/0",
            "GET /users/5", "GET /users/kofi", "GET /venues/50a1f0c2e4b00000000000ff",
            "GET /posts/5", "GET /posts/0", "GET /posts/x",
            "POST /posts/77/likes", "DELETE /posts/x/likes",
            "POST /posts/77/repost", "DELETE /posts/77/repost/1",
            "DELETE /posts/1150000000000000001/repost/x",
            "POST /users/999999/follow-on-twitter", "POST /users/me/follow-on-twitter",
            "POST /users/999999/unfollow-on-twitter",
            f"POST /recommendations/feedback/users/999999 {boost('neutral')}",
            f"POST /recommendations/feedback/posts/77 {boost('neutral')}",
            'POST /loops {"loops":[{"count":3,"postId":"77","ts":1.5}]}',
            "GET /longforms/none/views", 'POST /longforms/none/views {"timestamp":"1.5"}',
            "POST /inserts/no-such-card/close",
            "POST /inserts/editors-picks/close",  # it cannot be closed
            "GET /captcha/0123456789abcdef", "POST /captcha/0123456789abcdef/solve",
            "POST /_service/sessions/nobody/expire", "POST /_service/sessions/nobody/captcha",
            'POST /_service/sessions {"username":"nobody"}',
            "POST /_service/uploads/none/expire", "POST /_service/nothing"))

    def test_bad_parameters_and_bodies(self):
        bodies = {
            "/sessions": ("", "[]", "{", "{}", '{"username":"mara"}',
                          '{"username":1,"password":"loop-the-loop"}'),
            "/recommendations/feedback/users/1003": (
                "", "[]", "{}", boost("Positive"), boost(""), boost(1)),
            "/loops": ('{"loops":{}}',),
            "/longforms/lf-night-market/views": (
                "", "{}", '{"timestamp":1447545600.25}', '{"timestamp":""}',
                '{"timestamp":"now"}', '{"timestamp":"-1.0"}', '{"timestamp":"1.0 "}',
                '{"timestamp":"inf"}'),
            "/_service/sessions": ('{"username":5}', '{"username":"mara","key":5}'),
            "/_service/faults": ("no json",),
            "/_service/media-rate": (
                "", "[]", "{}", '{"bytesPerSecond":-1}', '{"bytesPerSecond":1.5}',
                '{"bytesPerSecond":"9"}', '{"bytesPerSecond":1000000001}'),
            "/_service/processing-time": (
                "", "{}", '{"seconds":-1}', '{"seconds":"2"}', '{"seconds":86401}'),
        }
        self.refuses(400, [f"POST {path} {body}" for path in bodies for body in bodies[path]])
        self.refuses(400, [f"GET /timelines/all?{query}" for query in (
            "size=x", "size=", "size=1.5", "page=two", "c_max=a", "l_max=-",
            "size=99999999999999999999")])
        self.refuses(400, ["GET /users", "GET /_service/requests?since=x"])
        self.assertEqual(self.service.control("GET", "_service/media-rate"), {"bytesPerSecond": 0})
        self.assertEqual(self.service.control("GET", "_service/processing-time"), {"seconds": 2})
        self.assertEqual(self.service.kept("feedback") + self.service.kept("views"), [])

    def test_acting_needs_a_session(self):
        post_id = self.records("/timelines/all?size=1")[0]["postId"]
        loops = json.dumps({"loops": [{"count": 3, "postId": str(post_id), "ts": 1.5}]})
        calls = (
            "GET /users/me", "GET /timelines/home",
            "POST /users/1002/follow-on-twitter", "POST /users/1002/unfollow-on-twitter",
            f"POST /posts/{post_id}/likes", f"DELETE /posts/{post_id}/likes",
            f"POST /posts/{post_id}/repost", f"DELETE /posts/{post_id}/repost/1",
            f"POST /recommendations/feedback/users/1002 {boost('neutral')}",
            f"POST /recommendations/feedback/posts/{post_id} {boost('neutral')}",
            f"POST /loops {loops}",
            'POST /longforms/lf-unseen/views {"timestamp":"1.5"}',
            "POST /inserts/longform-launch/close",
            "POST /upload/longform-videos?totalBytes=4&mediaType=video/mp4",
        )
        before = self.service.control("GET", "_service/actions")
        self.refuses(401, calls, 100, None)
        self.refuses(401, calls, 100, "nobody's")
        self.service.control("POST", EXPIRE, {})
        self.refuses(401, calls, 103)
        self.assertEqual(self.service.control("GET", "_service/actions"), before)

    def test_where_a_session_is_optional_it_must_be_good(self):
        calls = ("GET /timelines/popular", "GET /channels/3", "GET /inserts/home", "GET /channels",
                 "GET /users/1002", "GET /users?username=kofi")
        for call in calls:
            self.assertEqual(self.ask(call, None).status, 200, call)
        self.refuses(401, calls, 100, "nobody's")
        self.refuses(401, calls, 100, "")  # a key that nobody holds
        self.service.control("POST", EXPIRE, {})
        self.refuses(401, calls, 103)


if __name__ == "__main__":
    unittest.main()
