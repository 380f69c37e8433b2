"""kelo, run as a program against a real kelo-service."""

import json
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
import unicodedata

from case import KELO, PASSWORD, Case
from service import KEY, Service, wait_until

USER_FIELDS = {"userId", "username", "loopData"}
POST_FIELDS = {"postId", "user", "caption", "created", "videoUrl", "thumbnailUrl", "liked",
               "rekeloed", "currentUserRekelo", "channel", "venue", "byline", "audio", "tags",
               "entities"}


class Usage(Case):
    def test_help_and_version_need_no_service(self):
        for arguments in (["--help"], ["me", "--help"], ["timeline", "--help"]):
            text = self.succeeds(*arguments, KELO_HOST="localhost:1")
            self.assertIn("Usage: kelo", text)
        self.assertRegex(self.succeeds("--version"), r"^kelo \d+\.\d+\.\d+\n$")
        self.assertEqual(self.service.seen(), [])

    def test_help_names_commands_options_and_exit_codes(self):
        text = self.succeeds("--help")
        for command in ("login logout me user timeline channels channel inserts venue like unlike rekelo unrekelo follow "
                        "unfollow boost loops upload views sounds download cache save show "
                        "request serve").split():
            self.assertRegex(text, rf"(?m)^  {command} ")
        for word in ("--host", "--session", "--user", "--password", "--language", "--verbose",
                     "--json", "--trace", "--no-input", "KELO_HOST", "KELO_SESSION", "KELO_PASSWORD", KEY, "130"):
            self.assertIn(word, text)

    def test_bad_command_lines(self):
        self.refuses({
            "a command is needed": [""],
            "there is no command": ["dance", "cache empty", "help dance", "help cache empty"],
            "there is no option": ["me --loud", "unrekelo 1 --feed all", "views a --send"],
            "is not expected": ["me you", "timeline a b", "me timeline a", "like 1 2",
                                "sounds horn", "like 1 follow 2", "cache list x", "upload x y"],
            "HOST or HOST:PORT": [f"--host '{host}' me" for host in (
                "", "https://localhost", "a b", "localhost:", "localhost:0", "localhost:65536",
                "localhost:web", "localhost/x", "u@localhost", "localhost//")],
            "--color": ["--color sometimes me"],
            "--host": ["--host"],
            "--session": ["--session ключ me"],
            "--language": ["'--language=a\nb' me"],
            "--user": ["--password x me"],
            "PATH": ["timeline", "timeline ''"],
            "is a URL": ["timeline https://localhost/timelines/a"],
            "--pages": [f"timeline a --pages {count}" for count in (
                "0", "-1", "many", "99999999999999999999")],
            "--size": ["timeline a --size 0", "timeline a --size 1001", "channel 1 --size 0"],
            "--all": ["timeline a --all --pages 2"],
            "ID is required": ["channel", "venue", "boost user", "views"],
            "FEED is required": ["inserts"],
            "POST is required": ["like", "unlike", "rekelo", "unrekelo", "loops", "download"],
            "USER is required": ["user", "follow", "unfollow"],
            "the user's name is empty": ["user ''"],
            "KIND is required": ["boost", "save x"],
            "BOOST is required": ["boost user 1"],
            "COUNT is required": ["loops 1"],
            "FILE is required": ["upload", "save", "show"],
            "N is required": ["cache trim"],
            "is not a valid identifier": [
                "channel 1/2", "inserts ../users/me", "venue a?b", "like ''", "like a/b",
                "like 1?x", "like ..", "like http", "follow http://x", "boost user '#1' positive",
                "views 'a b'", "download a/b", "download :high", "save x channel a/b"],
            "KIND: channel": ["boost channel 1 positive"],
            "KIND: user": ["save x user"],
            "BOOST: Positive": ["boost user 1 Positive"],
            "BOOST: more": ["boost user 1 more"],
            "COUNT": [f"loops 1 {count}" for count in (
                "0", "-1", "1000000001", "99999999999999999999", "2.5", "many")],
            "low, normal or high": ["download 1:urgent", "download 1:"],
            "--priority": ["download 1 --priority urgent"],
            "--bitrate": ["download 1 --bitrate -1", "download 1 --bitrate fast"],
            "--directory": ["download 1 --directory /nowhere"],
            "A subcommand is required": ["cache"],
            "N: Value": ["cache trim -1", "cache trim x"],
            "needed for a channel": ["save x channel"],
            "the signed-in user's own": ["save x loops 5"],
            "--segment-size": ["upload x --segment-size 0", "upload x --segment-size 1073741825"],
            "--parallel": ["upload x --parallel 0", "upload x --parallel 17"],
            "is not a path": ["request ''", "request https://localhost/users/me"],
            "--method": ["request users/me --method get"]})

    def test_bad_environment(self):
        self.slips("HOST or HOST:PORT", "me", KELO_HOST="not a host")
        self.slips("--session", "me", KELO_SESSION="a\tb")


class Reading(Case):
    def test_me_as_json(self):
        user, = self.json("me")
        self.assertEqual(set(user), USER_FIELDS)
        self.assertEqual((user["userId"], user["username"]), ("1001", "mara"))
        self.assertEqual(set(user["loopData"]), {"count", "velocity", "created", "onFire"})

    def test_empty_values_send_no_header(self):
        self.succeeds("--language", "", "--session", "", "timeline", "popular")
        headers = self.service.headers("/timelines/popular")[0]
        self.assertNotIn("Accept-Language", headers)
        self.assertNotIn("kelo-session-id", headers)

    def test_host_and_session_from_options_and_environment(self):
        key = self.service.session("kofi")
        self.assertIn("kofi", self.succeeds("me", KELO_SESSION=key))
        # The option outranks the environment, and may stand behind the command.
        self.assertIn("mara", self.succeeds("me", "--session", KEY, KELO_SESSION=key))
        self.assertIn("mara", self.succeeds("me", "--host", self.service.host,
                                            KELO_HOST="localhost:1"))
        address = self.service.host.replace("localhost", "127.0.0.1")
        self.assertIn("mara", self.succeeds("me", "--host", address))

    def test_timeline_columns(self):
        lines = self.succeeds("timeline", "popular", "--size", "40").splitlines()
        self.assertEqual(len(lines), 40)
        for line in lines:
            self.assertRegex(line, r"^\d{19}  \d{4}-\d\d-\d\d  \S+ +[\d.]+[kMG]? loops  "
                                   r"[♥ ]?[↻ ]?")
        # None of the seeded names holds a wide character: columns are characters here.
        self.assertEqual(len({line.index(" loops") for line in lines}), 1, "not aligned")
        self.assertTrue(any("♥" in line[:70] for line in lines))

    def test_timeline_as_json(self):
        posts = self.json("timeline", "popular", "--size", "50")
        self.assertEqual(len(posts), 50)
        for post in posts:
            self.assertEqual(set(post), POST_FIELDS)
            self.assertEqual(set(post["user"]), USER_FIELDS)
            self.assertRegex(post["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")
            self.assertIs(type(post["liked"]), bool)
            self.assertEqual(post["rekeloed"], post["currentUserRekelo"] is not None)
            self.assertIn(".mp4", post["videoUrl"])
        self.assertTrue(any(post["rekeloed"] for post in posts))

    def test_loops_are_cut_to_a_few_digits(self):
        for loops, text in ((0, "0"), (999, "999"), (1000, "1.0k"), (999_999, "999.9k"),
                            (1_250_000, "1.2M"), (2**63, "9223372036.8G")):
            record = {"postId": 1, "username": "x", "loopCount": loops, "loopVelocity": 0}
            self.service.answer("/timelines/popular", {"records": [record]})
            self.assertEqual(self.succeeds("timeline", "popular").split()[3:], [text, "loops"])

    def test_text_and_json_say_the_same(self):
        text = self.succeeds("timeline", "latest", "--size", "30").splitlines()
        posts = self.json("timeline", "latest", "--size", "30")
        for line, post in zip(text, posts, strict=True):
            begin = f"{post['postId']}  {post['created'][:10]}  {post['user']['username']} "
            self.assertTrue(line.startswith(begin), line)
            caption = "".join(" " if unicodedata.category(c) == "Cc" else c
                              for c in post["caption"])
            self.assertTrue(line.rstrip().endswith(caption.rstrip()), (line, caption))
            self.assertEqual("♥" in line.split(" loops")[1][:6], post["liked"])

    def test_one_is_no_plural(self):
        user = {"username": "mara", "userId": 1, "loopCount": 1, "loopVelocity": 0.5}
        post = {**user, "postId": 1, "tags": [{"tagId": 1, "tag": "a", "postCount": 1}]}
        card = {"type": "postsMosaic", "reference": "r", "title": "t", "description": "d",
                "link": "kelo://x", "posts": {"records": [post]}}
        for path, data, arguments, line in (
                ("/users/me", user, "me", r"(?m)^1 loop, "),
                ("/timelines/all", {"records": [post]}, "timeline all --details",
                 r"  1 loop(?s:.*) #a \(1 post\)$"),
                ("/inserts/home", {"records": [card]}, "inserts home", ": 1 post$"),
                ("/longforms/a/views", {"longformId": "a", "count": 1}, "views a", "^1 view$"),
                ("/loops", {}, "loops 1 1", "^reported 1 loop of post 1$")):
            with self.subTest(arguments=arguments):
                self.service.answer(path, data)
                self.assertRegex(self.succeeds(*arguments.split()).rstrip("\n"), line)

    def test_pages(self):
        for feed in ("all", "popular", "latest", "channels/1"):
            with self.subTest(feed=feed):
                posts = self.json("timeline", feed, "--pages", "3", "--size", "7")
                self.assertEqual((len(posts), len({post["postId"] for post in posts})), (21, 21))
                self.assertEqual(len(self.service.seen(f"/timelines/{feed}")), 3)

    def test_all(self):
        ids = [post["postId"] for post in
               self.json("timeline", "editors-picks", "--all", "--size", "10")]
        self.assertEqual(len(ids), len(set(ids)))
        self.assertEqual(len(self.service.seen("/timelines/editors-picks")),
                         -(-len(ids) // 10))
        # More pages than there are is no error.
        self.assertEqual(len(self.succeeds("timeline", "editors-picks", "--pages", "99",
                                           "--size", "10").splitlines()), len(ids))

    def test_path_is_escaped(self):
        self.succeeds("timeline", "tags/#cats")
        self.assertEqual(len(self.service.seen("/timelines/tags/%23cats")) +
                         len(self.service.seen("/timelines/tags/#cats")), 1)

    def test_diagnostics_only_when_asked_for(self):
        done = self.kelo("--verbose", "--json", "me")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stderr, f"GET https://{self.service.host}/users/me\n")
        json.loads(done.stdout)
        self.assertNotIn(KEY, done.stderr)

    def test_hostile_captions_stay_harmless(self):
        record = {"postId": 1, "username": "x\x1b[31m", "liked": True,
                  "description": "a\x1b]0;t\x07b\nc\u202ed\u009be"}
        self.service.answer("/timelines/popular", {"records": [record]})
        text = self.succeeds("timeline", "popular")
        self.assertEqual(text.count("\n"), 1)
        self.assertFalse(any(unicodedata.category(c) in ("Cc", "Cf") for c in text.rstrip("\n")))
        self.assertIn("a ]0;t b cd e", text)
        self.assertTrue(text.startswith("1  ----------  x [31m"), text)

    def test_an_output_that_cannot_be_written(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([KELO, "me"], stdout=full, stderr=subprocess.PIPE, text=True,
                                  timeout=60, env=self.environment)
        self.assertEqual((done.returncode, done.stderr),
                         (1, "kelo: the output cannot be written\n"))


class Failures(Case):
    def test_no_such_host(self):
        self.fails(1, "there is no host named nowhere.invalid", "--host", "nowhere.invalid", "me")

    def test_another_certificate(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                            "ec_paramgen_curve:P-256", "-nodes", "-days", "2", "-subj",
                            "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
                            "-keyout", f"{folder}/key", "-out", f"{folder}/pem"],
                           check=True, capture_output=True)
            other = Service("--certificate", f"{folder}/pem", "--key", f"{folder}/key")
            self.addCleanup(other.stop)
            to_other = ("--host", other.host, "me")
            self.fails(1, f"the server at {other.host} cannot prove that it is the service",
                       *to_other)
            pem = f"{folder}/pem"
            self.assertIn("mara", self.succeeds("--pin", pem, *to_other))
            self.assertIn("mara", self.succeeds(*to_other, KELO_PIN=pem))
            self.fails(1, f"expected was the certificate in {pem} (--pin or KELO_PIN)",
                       "--pin", pem, "me")
            self.fails(2, "does not hold a certificate", "--pin", f"{folder}/key", "me")
            self.fails(2, "No such file", "--pin", f"{folder}/none", "me")

    def test_the_certificate_that_the_service_made_itself(self):
        with tempfile.TemporaryDirectory() as state:
            own = Service(XDG_STATE_HOME=state)
            self.addCleanup(own.stop)
            self.assertIn("mara", self.succeeds("--host", own.host, "me", XDG_STATE_HOME=state))
            self.fails(1, "expected was a certificate built into kelo; that of kelo serve cannot be "
                       f"read from {state}/none/kelo-service/certificate.pem; name the service's own "
                       "with --pin FILE", "--host", own.host, "me", XDG_STATE_HOME=f"{state}/none")

    def test_only_numbers_of_the_loopback_address_are_this_machine(self):
        for host, is_this_machine in (("127.0.0.1:1", True), ("127.9.9.9:1", True), ("[::1]:1", True),
                                      ("127.example.com", False), ("127.0.0.1.example.com", False)):
            with self.subTest(host=host):
                done = self.kelo("--host", host, "me", https_proxy="http://localhost:1")
                self.assertEqual(done.returncode, 1)
                self.assertIn(f"cannot connect to {host}", done.stderr)
                self.assertEqual("kelo serve" in done.stderr, is_this_machine, done.stderr)

    def test_service_error(self):
        self.service.fault("/users/me", type="error", code=777, message="Later,\nplease\x1b[2J")
        self.fails(1, "the service says: Later, please [2J", "me")

    def test_garbage(self):
        for body in ("", "<html>", "[1]", "{}", '{"data": 5}'):
            with self.subTest(body=body):
                self.service.fault("/users/me", type="body", body=body)
                self.fails(1, "sent an invalid response", "me")

    def test_failure_on_a_later_page_keeps_what_came(self):
        self.service.fault("/timelines/all", skip=1, type="error", code=5, message="No more")
        done = self.kelo("timeline", "all", "--all", "--size", "8")
        self.assertEqual((done.returncode, done.stderr), (1, "kelo: the service says: No more\n"))
        self.assertEqual(len(done.stdout.splitlines()), 8)

    def test_verbose_tells_what_lies_behind(self):
        self.service.fault("/users/me", type="body", body="<html>")
        done = self.kelo("--verbose", "me")
        self.assertEqual(done.returncode, 1)
        self.assertIn("KeloAPI.HTTP 11", done.stderr)


class SignIn(Case):
    """Without a terminal: standard input is not one."""

    def test_refused_sessions(self):
        hint = "(run kelo login, or give --user or another --session)"
        self.fails(3, f"This session is not known {hint}", "--session", "bad", "me")
        self.fails(3, f"Please sign in {hint}", "--session", "", "me")
        self.fails(3, f"Your session has expired, please sign in again {hint}",
                   "--session", self.service.expired_session(), "me")

    def test_user_and_password(self):
        self.assertIn("kofi", self.succeeds("--user", "kofi", "--password", PASSWORD, "me"))
        self.assertEqual(len(self.service.seen("/sessions")), 1)
        # Signed in first: the default session is not even tried.
        self.assertEqual(len(self.service.seen("/users/me")), 1)

    def test_expired_session_is_replaced_and_the_call_repeated(self):
        key = self.service.expired_session()
        self.assertIn("kofi", self.succeeds("--session", key, "--user", "kofi", "--password",
                                            PASSWORD, "me"))
        first, second = self.service.headers("/users/me")
        self.assertEqual(first["kelo-session-id"], key)
        self.assertNotEqual(second["kelo-session-id"], key)

    def test_expiry_between_two_pages(self):
        self.service.fault("/timelines/home", skip=1, type="error", code=103, message="Expired")
        posts = self.json("--session", KEY, "--user", "mara", "--password", PASSWORD,
                          "timeline", "home", "--pages", "3", "--size", "6")
        self.assertEqual((len(posts), len({post["postId"] for post in posts})), (18, 18))
        self.assertEqual(len(self.service.seen("/timelines/home")), 4)

    def test_wrong_password(self):
        self.fails(3, "The user name or the password is wrong",
                   "--user", "kofi", "--password", "no", "me")
        self.assertEqual(len(self.service.seen("/sessions")), 1)
        self.assertEqual(self.service.seen("/users/me"), [])

    def test_a_service_that_keeps_refusing(self):
        self.service.fault("/users/me", times=0, type="error", code=100, message="Sign in")
        self.fails(3, "Sign in", "--session", "x", "--user", "kofi", "--password", PASSWORD, "me")
        self.assertEqual(len(self.service.seen("/sessions")), 1)
        self.assertEqual(len(self.service.seen("/users/me")), 2)

    def test_signing_in_fails_otherwise(self):
        for body, line in (("{}", "sent an invalid response"),
                           ('{"data": {"key": 5}}', "sent an invalid response"),
                           ('{"data": {}}', "sent no session")):
            self.service.fault("/sessions", type="body", body=body)
            self.fails(1, line, "--user", "kofi", "--password", PASSWORD, "me")

    def test_user_without_password(self):
        self.fails(3, "nobody is signed in (set KELO_PASSWORD, or pipe the password to --password -)",
                   "--user", "kofi", "me")

    def test_captcha(self):
        key, url = self.service.captcha_session()
        self.fails(3, f"the service asks for a captcha at {url}", "--session", key, "me")
        self.assertEqual(len(self.service.seen("/users/me")), 1)


class Terminal(Case):
    """With a terminal, and somebody at it."""

    def test_sign_in_again(self):
        key = self.service.expired_session()
        console = self.console("--session", key, "me")
        console.expect("Your session has expired, please sign in again.")
        console.answer("User name (empty to give up): ", "kofi\n")
        console.answer("Password of kofi: ", PASSWORD + "\n", hidden=True)
        self.finishes(console, 0)
        self.assertIn("loops", console.output)
        self.assertNotIn(PASSWORD, console.output)
        self.assertEqual(len(self.service.seen("/users/me")), 2)

    def test_second_try(self):
        console = self.console("--session", "bad", "me")
        for password in ("wrong", PASSWORD):
            console.expect("User name (empty to give up): ")
            console.output = ""
            console.type("kofi\n")
            console.answer("Password of kofi: ", password + "\n", hidden=True)
        self.finishes(console, 0)

    def test_three_wrong_passwords(self):
        console = self.console("--user", "kofi", "me")
        for _ in range(3):
            console.expect("Password of kofi: ")
            console.expect_echo(False)
            console.output = ""
            console.type("wrong\n")
            console.expect("The user name or the password is wrong.")
        self.finishes(console, 3)
        self.assertIn("kelo: The user name or the password is wrong", console.output)

    def test_giving_up_signing_in(self):
        for answer in ("\n", "\x04"):  # an empty name; the end of the input
            with self.subTest(answer=answer):
                self.service.forget()
                console = self.console("--session", "bad", "me")
                console.answer("User name (empty to give up): ", answer)
                self.finishes(console, 3)
                self.assertIn("kelo: This session is not known", console.output)
                self.assertEqual(len(self.service.seen("/users/me")), 1)

    def test_no_input_asks_nothing(self):
        console = self.console("--no-input", "--session", "bad", "me")
        self.finishes(console, 3)
        self.assertNotIn("User name", console.output)
        key, url = self.service.captcha_session()
        console = self.console("--no-input", "--session", key, "me")
        self.finishes(console, 3)
        self.assertIn(url, console.output)
        self.assertNotIn("Enter", console.output)

    def test_captcha_is_solved(self):
        key, url = self.service.captcha_session()
        console = self.console("--session", key, "me")
        console.expect(url)
        console.expect("Then press Enter (q gives up): ")
        self.service.solve(url)
        console.type("\n")
        self.finishes(console, 0)
        self.assertIn("mara", console.output)
        self.assertEqual(len(self.service.seen("/users/me")), 2)

    def test_captcha_is_not_solved(self):
        key, _ = self.service.captcha_session()
        console = self.console("--session", key, "me")
        console.expect("Then press Enter (q gives up): ")
        console.output = ""
        console.type("\n")  # it was not: the service asks again
        console.answer("Then press Enter (q gives up): ", "q\n")
        self.finishes(console, 3)
        self.assertIn("kelo: the captcha was not solved", console.output)
        self.assertEqual(len(self.service.seen("/users/me")), 2)

    def test_captcha_while_signing_in(self):
        url = f"https://{self.service.host}/captcha/1"
        self.service.fault("/sessions", type="error", code=419, message="Human?", data=url)
        console = self.console("--user", "kofi", "--password", PASSWORD, "me")
        console.answer(url, "\n")
        self.finishes(console, 0)
        self.assertIn("kofi", console.output)
        self.assertEqual(len(self.service.seen("/sessions")), 2)

    def test_control_c_at_a_question(self):
        console = self.console("--user", "kofi", "me")
        console.answer("Password of kofi: ", "\x03", hidden=True)
        console.expect_echo(True)
        self.finishes(console, 130)

    def test_control_c_while_a_request_is_under_way(self):
        self.service.fault("/users/me", type="delay", milliseconds=30000)
        console = self.console("me")
        wait_until(lambda: self.service.seen("/users/me"))
        start = time.monotonic()
        console.type("\x03")
        self.finishes(console, 130)
        self.assertLess(time.monotonic() - start, 5)

    def test_progress_is_for_terminals(self):
        console = self.console("timeline", "editors-picks", "--all", "--size", "10")
        self.finishes(console, 0)
        self.assertIn("1 page, 10 posts …", console.output)
        done = self.kelo("timeline", "editors-picks", "--all", "--size", "10")
        self.assertEqual(done.stderr, "")

    def test_control_c_leaves_the_line_clean(self):
        self.service.fault("/timelines/all", skip=1, type="delay", milliseconds=60000)
        console = self.console("timeline", "all", "--all")
        console.answer("1 page, 5 posts …", "\x03")
        self.finishes(console, 130)
        self.assertTrue(console.output.endswith("\r\x1b[J"), console.output)

    def test_posts_in_a_narrow_terminal(self):
        record = {"postId": 1150000000000000001, "username": "mara", "liked": True,
                  "created": "2015-11-15T08:00:00.000", "description": "word " * 20,
                  "channel": "Dance"}
        self.service.answer("/timelines/popular", {"size": 5, "records": [record]}, times=2)
        console = self.console("timeline", "popular", "--details", columns=40, NO_COLOR="1")
        self.finishes(console, 0)
        lines = console.output.splitlines()
        self.assertEqual(lines[:3], ["1150000000000000001  2015-11-15",
                                     f"  {'mara':14}  {'-':>12}  ♥",
                                     "  word word word word word word word wo…"])
        self.assertTrue(all(re.match("  \\S", line) for line in lines[1:]), lines)
        console = self.console("timeline", "popular", columns=79, NO_COLOR="1")
        self.finishes(console, 0)
        self.assertEqual(len(console.output.splitlines()), 1)

    def test_captions_fit_the_terminal(self):
        # What a reader sees as one character, and the columns that it takes.
        for character, columns in (("語", 2), ("👍🏽", 2), ("👩‍👩‍👧‍👦", 2), ("🇨🇭", 2), ("❤️", 2),
                                   ("ȩ́", 1), ("ä", 1), ("a", 1)):
            with self.subTest(character=character):
                record = {"postId": 1, "username": "mara", "liked": True,
                          "description": character * 200}
                self.service.answer("/timelines/popular",
                                    {"size": 5, "nextPage": 2, "records": [record]})
                console = self.console("timeline", "popular", columns=80)
                self.finishes(console, 0)
                line = console.output.splitlines()[0]
                begin, caption = line.split("  " + character, 1)
                caption = character + caption
                shown = caption.count(character)
                self.assertEqual(caption, character * shown + "…")
                width = len(begin) + 2 + shown * columns + 1
                self.assertIn(width, (79, 80) if columns == 2 else (80,), line)
                self.assertIn("There are more posts: use --pages N or --all.", console.output)


class Colour(Case):
    RED, BOLD, DIM, GREEN, END = "\x1b[1;31m", "\x1b[1m", "\x1b[2m", "\x1b[32m", "\x1b[m"

    def test_where_it_helps(self):
        repost = {"id": 7, "user": {"username": "mara", "userId": 1}}
        post = {"postId": 1, "username": "kofi", "description": "A\x1b[31m B", "liked": True,
                "myRepostId": 5, "currentUserRekelo": repost}
        self.service.answer("/timelines/popular", {"records": [post]})
        text = self.succeeds("--color", "always", "timeline", "popular")
        self.assertIn(f"{self.BOLD}kofi          {self.END}", text)
        self.assertIn(f"{self.RED}♥{self.END}", text)
        # What the service says has no colours.
        self.assertTrue(text.endswith("  A [31m B\n"), text)
        self.assertIn(f"{self.BOLD}Usage:{self.END} kelo me ", self.succeeds(
            "me", "--help", "--color", "always"))
        done = self.kelo("--color", "always", "--session", "bad", "me")
        self.assertTrue(done.stderr.startswith(f"{self.RED}kelo:{self.END} This session"),
                        done.stderr)

    def test_when(self):
        for terminal, environment, options, wanted in (
                (True, {}, "", True), (False, {}, "", False),
                (True, {"NO_COLOR": "1"}, "", False), (True, {"TERM": "dumb"}, "", False),
                (True, {"TERM": ""}, "", False), (True, {}, "--color never", False),
                (True, {"NO_COLOR": "1"}, "--color always", True),
                (False, {"NO_COLOR": "1"}, "--color=always", True),
                (True, {"NO_COLOR": "1"}, "--color auto", False), (True, {}, "--json", False)):
            with self.subTest(terminal=terminal, environment=environment, options=options):
                arguments = [*options.split(), "timeline", "popular"]
                environment = {"NO_COLOR": "", **environment}
                if terminal:
                    console = self.console(*arguments, columns=80, **environment)
                    self.finishes(console, 0)
                    text = console.output
                else:
                    text = self.succeeds(*arguments, **environment)
                self.assertEqual("\x1b[1m" in text, wanted, text)

    def test_each_stream_has_its_own(self):
        console = self.console("timeline", "nowhere", NO_COLOR="")
        self.finishes(console, 1)
        self.assertTrue(console.output.startswith(f"{self.RED}kelo:{self.END} "), console.output)

    def test_slips_have_the_colours_that_are_asked_for(self):
        for slip in ("timelien", "timeline", "me --pin"):
            for when in ("always", "never"):
                with self.subTest(slip=slip, when=when):
                    console = self.console("--color", when, *slip.split(), NO_COLOR="")
                    self.finishes(console, 2)
                    self.assertEqual(self.RED in console.output, when == "always", console.output)
        console = self.console("timelien", "--color", "never", NO_COLOR="")
        self.finishes(console, 2)
        self.assertNotIn(self.RED, console.output)

    def test_cut_as_without(self):
        lines = []
        for when in ("always", "never"):
            console = self.console("--color", when, "timeline", "all", columns=80)
            self.finishes(console, 0)
            lines.append(re.sub(r"\x1b\[[\d;]*m", "", console.output))
        self.assertEqual(*lines)


class Serve(Case):
    def test_serves(self):
        process = subprocess.Popen([KELO, "serve", "--port", "0", "--session", "kofi=k1",
                                    "--quiet"], stdout=subprocess.PIPE, text=True,
                                   env=self.environment)
        try:
            host = process.stdout.readline().split("https://")[1].strip()
            self.assertIn("kofi", self.succeeds("--host", host, "--session", "k1", "me"))
        finally:
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(timeout=20), 0)
            process.stdout.close()

    def test_arguments_are_the_services_own(self):
        self.assertIn("Usage: kelo-service", self.succeeds("serve", "--help"))
        done = self.kelo("serve", "--port", "x")
        self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1))
        self.assertTrue(done.stderr.startswith("kelo-service: --port"), done.stderr)

    def test_no_service_program(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(KELO, folder)
            done = self.run_program(f"{folder}/kelo", "serve", PATH=folder)
        self.assertEqual((done.returncode, done.stderr),
                         (1, "kelo: kelo-service is neither beside kelo nor in PATH\n"))


if __name__ == "__main__":
    unittest.main()
