"""kelo login and logout: how passwords come in, where sessions are kept and where they are sent."""

import glob
import json
import os
import shutil
import tempfile
import unittest

from case import PASSWORD, Case
from service import KEY, Service


class LoginCase(Case):
    """Each test has a data directory of its own."""

    def setUp(self):
        super().setUp()
        self.folder = tempfile.mkdtemp(prefix="kelo-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {**type(self).environment, "XDG_DATA_HOME": self.folder}

    def login(self, user="kofi", **more):
        """Signs in; the request log starts here."""
        text = self.succeeds("login", "--user", user, KELO_PASSWORD=PASSWORD, **more)
        self.assertEqual(text, f"signed in as {user}\n")
        self.service.forget()

    def files(self):
        return glob.glob(f"{self.folder}/kelo/sessions/*")

    def kept(self):
        """The key of the only session that is kept."""
        (path,) = self.files()
        with open(path, encoding="utf-8") as file:
            return file.readline().rstrip("\n")

    def who(self, *arguments, **more):
        user, = self.json(*arguments, "me", **more)
        return user["username"]

    def sent(self, path="/users/me", service=None):
        """The session keys that came with the requests for a path."""
        return [headers.get("kelo-session-id")
                for headers in (service or self.service).headers(path)]


class Login(LoginCase):
    def test_at_a_terminal(self):
        console = self.console("login")
        console.answer("User name (empty to give up): ", "kofi\n")
        console.answer("Password of kofi: ", PASSWORD + "\n", hidden=True)
        self.finishes(console, 0)
        self.assertIn("signed in as kofi", console.output)
        self.assertNotIn(PASSWORD, console.output)
        self.assertNotIn(self.kept(), console.output)
        self.assertEqual(self.who(), "kofi")
        self.assertEqual(self.sent(), [self.kept()])

    def test_where_the_password_comes_from(self):
        for arguments, more in ((["--password", PASSWORD], {}),
                                (["--password", "-"], {"input": PASSWORD + "\nmore\n"}),
                                (["--password", "-"], {"input": PASSWORD, "KELO_PASSWORD": "no"}),
                                (["--password", PASSWORD], {"KELO_PASSWORD": "no"}),
                                ([], {"KELO_PASSWORD": PASSWORD})):
            with self.subTest(arguments=arguments, more=more):
                self.service.forget()
                self.assertEqual(
                    self.json("login", "--user", "kofi", *arguments, **more),
                    [{"done": "signed in as", "id": "kofi", "deedId": None}])
                self.assertEqual(self.sent("/sessions"), [None])
                self.assertEqual(self.who("--user", "kofi", *arguments, **more), "kofi")

    def test_a_password_before_identifiers(self):
        post = self.json("timeline", "all", "--size", "1")[0]["postId"]
        text = self.succeeds("--user", "kofi", "--password", "-", "like", "-",
                             input=f"{PASSWORD}\n{post}\n")
        self.assertIn(f"liked post {post} ", text)

    def test_a_password_from_the_environment_for_a_name_that_is_typed(self):
        self.environment["KELO_PASSWORD"] = PASSWORD
        console = self.console("login")
        console.answer("User name (empty to give up): ", "kofi\n")
        self.finishes(console, 0)
        self.assertNotIn("Password of", console.output)

    def test_a_password_that_is_typed_where_it_is_to_be_read(self):
        console = self.console("login", "--user", "kofi", "--password", "-")
        console.answer("Password of kofi: ", PASSWORD + "\n", hidden=True)
        self.finishes(console, 0)

    def test_no_password(self):
        self.fails(2, "--password: there is none on standard input",
                   "login", "--user", "kofi", "--password", "-")
        self.fails(3, "set KELO_PASSWORD", "login", "--user", "kofi")
        self.fails(3, "nobody is signed in (give --user, and set KELO_PASSWORD, or pipe the "
                   "password to --password -)", "login")
        self.assertEqual((self.service.seen(), self.files()), ([], []))

    def test_only_the_user_may_read_it(self):
        self.addCleanup(os.umask, os.umask(0))
        self.login()
        (path,) = self.files()
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)
        self.assertEqual(os.stat(os.path.dirname(path)).st_mode & 0o777, 0o700)
        os.chmod(path, 0o644)
        self.login("mara")
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)

    def test_logout(self):
        self.login()
        self.assertEqual(self.succeeds("logout"), f"signed out of {self.service.host}\n")
        self.assertEqual(self.files(), [])
        self.assertEqual((self.who(), self.sent()), ("mara", [KEY]))
        self.fails(1, f"no session is kept for {self.service.host}", "logout")

    def test_what_is_given_outranks_it(self):
        self.login()
        key = self.service.session("lucía")
        self.assertEqual(self.who("--session", key), "lucía")
        self.assertEqual(self.who(KELO_SESSION=key), "lucía")
        self.assertEqual(self.who("--user", "mara", KELO_PASSWORD=PASSWORD), "mara")
        self.assertEqual(self.who(), "kofi")

    def test_a_variable_that_outranks_it_is_told(self):
        done = self.kelo("login", "--user", "kofi", "--password", PASSWORD, KELO_SESSION=KEY)
        self.assertEqual((done.returncode, done.stdout), (0, "signed in as kofi\n"))
        self.assertRegex(done.stderr, "^kelo: KELO_SESSION is set, .*\n$")
        self.assertEqual(self.who(), "kofi")

    def test_a_refusal_keeps_what_was_kept(self):
        self.login()
        self.fails(3, "The user name or the password is wrong",
                   "login", "--user", "mara", "--password", "no")
        self.service.answer("/sessions", {"key": "a\nb", "username": "mara"})
        self.fails(1, "sent an invalid response",
                   "login", "--user", "mara", "--password", PASSWORD)
        self.assertEqual(self.who(), "kofi")

    def test_one_that_expires_is_replaced_when_the_user_signs_in_again(self):
        self.login()
        key = self.kept()
        self.service.control("POST", f"_service/sessions/{key}/expire", {})
        self.fails(3, "Your session has expired", "me")
        self.assertEqual(self.kept(), key)
        console = self.console("me")
        console.answer("User name (empty to give up): ", "kofi\n")
        console.answer("Password of kofi: ", PASSWORD + "\n", hidden=True)
        self.finishes(console, 0)
        self.assertNotEqual(self.kept(), key)
        self.assertEqual(self.who(), "kofi")

    def test_one_that_was_given_is_not_kept(self):
        console = self.console("--session", self.service.expired_session(), "me")
        console.answer("User name (empty to give up): ", "kofi\n")
        console.answer("Password of kofi: ", PASSWORD + "\n", hidden=True)
        self.finishes(console, 0)
        self.assertEqual(self.files(), [])

    def test_files_that_cannot_be_used(self):
        signing_in = ["login", "--user", "kofi", "--password", PASSWORD]
        self.fails(1, "neither XDG_DATA_HOME nor HOME is set", *signing_in, XDG_DATA_HOME="",
                   HOME="")
        file = os.path.join(self.folder, "file")
        open(file, "w", encoding="utf-8").close()
        self.fails(1, f"cannot keep the session in {file}/kelo/sessions/", *signing_in,
                   XDG_DATA_HOME=file)
        self.login()
        (path,) = self.files()
        for content in ("", "key alone\n", "control\x01character\nkofi\n"):
            with open(path, "w", encoding="utf-8") as damaged:
                damaged.write(content)
            self.fails(1, f"cannot read the session in {path}: it is damaged", "me")
        self.assertEqual(self.service.seen(), [])


    @unittest.skipIf(os.geteuid() == 0, "root may read anything")
    def test_a_directory_that_cannot_be_read(self):
        self.login()
        (path,) = self.files()
        for place in (path, os.path.dirname(path)):
            with self.subTest(place=place):
                os.chmod(place, 0)
                self.fails(1, f"cannot read the session in {path}: Permission denied", "me")
                os.chmod(place, 0o700)


class Origins(LoginCase):
    """A key goes only to the scheme, host and port that it came from."""

    def setUp(self):
        super().setUp()
        self.other = Service()
        self.addCleanup(self.other.stop)
        self.login()

    def test_another_name_or_port(self):
        for host in (self.service.host.replace("localhost", "127.0.0.1"), self.other.host):
            self.assertEqual(self.who("--host", host), "mara")
            self.fails(1, f"no session is kept for {host}", "--host", host, "logout")
        self.assertEqual((self.sent(), self.sent(service=self.other)), ([KEY], [KEY]))
        self.assertEqual(self.who(), "kofi")

    def test_the_same_one_in_other_letters(self):
        self.assertEqual(self.who("--host", self.service.host.replace("localhost", "LocalHost")),
                         "kofi")

    def test_each_has_its_own(self):
        self.succeeds("login", "--user", "lucía", "--host", self.other.host,
                      KELO_PASSWORD=PASSWORD)
        self.assertEqual(self.who(), "kofi")
        self.assertEqual(self.who("--host", self.other.host), "lucía")
        self.succeeds("logout")
        self.assertEqual(self.who("--host", self.other.host), "lucía")

    def test_a_redirect(self):
        self.service.fault("/users/me", type="redirect",
                           location=f"https://{self.other.host}/users/me")
        self.fails(3, "Please sign in", "me")
        self.assertEqual((self.sent(), self.sent(service=self.other)), ([self.kept()], [None]))

    def test_a_video_elsewhere(self):
        record = self.service.control("GET", "timelines/popular?size=1")["data"]["records"][0]
        post, offers = record["postId"], record["videoUrls"]
        self.service.forget()
        self.succeeds("download", str(post))
        (path,) = [one["path"] for one in self.service.seen() if "/media/" in one["path"]]
        self.assertEqual(self.sent(path), [self.kept()])
        shutil.rmtree(f"{self.folder}/group.example.kelo")
        elsewhere = json.loads(json.dumps(offers).replace(self.service.host, self.other.host))
        self.service.answer(f"/posts/{post}", {**record, "videoUrls": elsewhere})
        self.succeeds("download", str(post))
        self.assertEqual(self.sent(path, self.other), [None])


if __name__ == "__main__":
    unittest.main()
