"""What the buttons of a post do, and the count of its loops."""

from viewer_case import Case


class Actions(Case):
    def likes(self, key):
        """(whether it is on, its text)"""
        return self.viewer.eval(f"like-{key}", "on"), self.viewer.eval(f"like-{key}", "text")

    def wait_round(self, key):
        """Until a round of the post's loop is noted down."""
        kept = self.home.folder / "kelo/kelo-viewer.conf"
        self.viewer.until(lambda: kept.exists() and f"\n{key}=" in kept.read_text(), "it loops")

    def test_a_like_shows_before_the_service_answers(self):
        self.service.fault("/posts/*", type="stall", afterBytes=0)
        viewer = self.start("latest")
        key = self.key()
        before = self.likes(key)
        viewer.click(f"like-{key}")
        on, text = self.likes(key)
        self.assertEqual((before[0], on), ("false", "true"))
        self.assertEqual(int(text.split()[1]), int(before[1].split()[1]) + 1)
        self.close()

    def test_a_like_can_be_taken_back(self):
        viewer = self.start("latest")
        key = self.key()
        before = self.likes(key)
        viewer.click(f"like-{key}")
        viewer.until(lambda: self.service.kept("likes"), "the service has the like")
        viewer.click(f"like-{key}")
        viewer.until(lambda: not self.service.kept("likes"), "it is taken back")
        self.assertEqual(self.likes(key), before)
        self.close()

    def test_what_the_service_refuses_goes_back(self):
        viewer = self.start("latest")
        key = self.key()
        for button, path, on in (("like", f"/posts/{key}/likes", "on"),
                                 ("rekelo", f"/posts/{key}/repost", "on"),
                                 ("follow", "/users/*", "on"),
                                 ("less", "/recommendations/*", "on")):
            with self.subTest(button=button):
                self.service.fault(path, method="POST", type="error", code=500,
                                   message=f"No {button}")
                viewer.click(f"{button}-{key}")
                viewer.wait_for("said", "text", f"No {button}")
                viewer.wait_for(f"{button}-{key}", on, "false")
        self.close()

    def test_the_service_hears_of_each_action(self):
        viewer = self.start("latest")
        key = self.key()
        for kind, button in (("reposts", "rekelo"), ("follows", "follow")):
            for there in (1, 0):
                viewer.click(f"{button}-{key}")
                viewer.until(lambda: len(self.service.kept(kind)) == there, f"{there} {kind}")
                viewer.wait_for(f"{button}-{key}", "on", "true" if there else "false")
        viewer.click(f"less-{key}")
        viewer.until(lambda: self.service.kept("feedback"), "there is feedback")
        self.assertEqual(self.service.kept("feedback")[0]["boost"], "negative")
        self.close()

    def test_loops_are_submitted_at_the_end_one_record_a_post(self):
        viewer = self.start("latest")
        keys = []
        for row in range(2):
            self.reach(row)
            keys.append(self.key())
            self.plays(keys[-1])
            self.wait_round(keys[-1])
        self.close()
        records = {one["postId"]: one["count"] for one in self.service.kept("loops")}
        self.assertLessEqual(set(keys), set(map(str, records)))
        self.assertEqual(len(records), len(self.service.kept("loops")))

    def test_loops_that_were_not_submitted_are_kept(self):
        viewer = self.start("latest")
        key = self.key()
        self.plays(key)
        self.service.control("POST", "_service/sessions/kelo-development-session/expire", {})
        viewer.click(f"like-{key}")
        viewer.wait("signIn")
        self.wait_round(key)
        self.close()
        self.assertEqual(self.service.kept("loops"), [])
        self.service.set("sessions", username="mara", key="kelo-development-session")
        self.start("home")
        self.viewer.until(lambda: self.viewer.eval("user", "text") == "none", "it is signed in")
        self.close()
        self.assertIn(key, {str(one["postId"]) for one in self.service.kept("loops")})

    def test_loops_are_submitted_every_half_minute(self):
        viewer = self.start("latest")
        self.plays(self.key())
        viewer.until(lambda: self.service.kept("loops"), "there is a record")
        self.assertGreater(self.service.kept("loops")[0]["count"], 1)
        self.close()
