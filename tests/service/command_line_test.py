"""kelo-service run as a program: its arguments, its signals and what it prints."""

import contextlib
import os
import shutil
import signal
import socket
import ssl
import stat
import subprocess
import tempfile
import types
import unittest
import urllib.request
from unittest import mock

from route_case import CONTEXT, KEY
from service import BIN

SERVICE = f"{BIN}/kelo-service"


def ask(port, path, key=KEY, method="GET"):
    """The body that comes from a path."""
    opener = urllib.request.build_opener(
        urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=CONTEXT))
    request = urllib.request.Request(f"https://localhost:{port}{path}", method=method,
                                     headers={"kelo-session-id": key})
    with opener.open(request, timeout=20) as answer:
        return answer.read().decode()


def run(*arguments, program=SERVICE):
    return subprocess.run([program, *arguments], capture_output=True, text=True, timeout=60)


class CommandLine(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.certificate, cls.key = cls.make_certificate("test")
        cls.served = ["--port", "0", "--certificate", cls.certificate, "--key", cls.key]

    @classmethod
    def make_certificate(cls, name):
        pem, key = f"{cls.folder}/{name}.pem", f"{cls.folder}/{name}.key"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:P-256", "-nodes", "-days", "2", "-subj",
                        "/CN=localhost", "-keyout", key, "-out", pem],
                       check=True, capture_output=True)
        return pem, key

    def write(self, name, content):
        path = f"{self.folder}/{name}"
        with open(path, "w", encoding="utf-8") as file:
            file.write(content)
        return path

    @contextlib.contextmanager
    def running(self, *arguments, program=SERVICE, served=None, end=signal.SIGTERM):
        """A service that has to stop in peace at the end."""
        process = subprocess.Popen(
            [program, *(served or self.served), "--exit-with-parent", *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        try:
            line = process.stdout.readline()
            self.assertRegex(line, r"^kelo-service: listening on https://localhost:[1-9]\d*\n$")
            service = types.SimpleNamespace(port=int(line.rpartition(":")[2]))
            yield service
            process.send_signal(end)
            service.output, errors = process.stdout.read(), process.stderr.read()
            self.assertEqual((process.wait(), errors), (0, ""))
        finally:
            process.kill()
            process.communicate()

    def refuses(self, says, *arguments):
        """One line on standard error, nothing on standard output and exit code 2."""
        with self.subTest(arguments=arguments):
            done = run(*arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertRegex(done.stderr, r"^kelo-service: .*\n\Z")
            self.assertIn(says, done.stderr)

    def test_serves_until_told_to_stop(self):
        for end in signal.SIGINT, signal.SIGTERM:
            with self.running(end=end) as service:
                self.assertIn('"mara"', ask(service.port, "/users/me"))
            self.assertIn(KEY, service.output)

    def test_quiet_prints_the_address_alone(self):
        with self.running("--quiet") as service:
            pass
        self.assertEqual(service.output, "")

    def test_stops_at_once_while_a_connection_stalls(self):
        faults = self.write("stall.json", '[{"action":{"type":"stall","afterBytes":3}}]')
        with (self.running("--faults", faults) as service,
              socket.create_connection(("127.0.0.1", service.port), timeout=20) as plain,
              CONTEXT.wrap_socket(plain) as client):
            client.sendall(b"GET /users/me HTTP/1.1\r\n\r\n")
            self.assertEqual(client.recv(100), b"HTT")

    def test_adds_sessions(self):
        with self.running("--session", "kofi=one", "--session", "theo.loops=two=three") as service:
            self.assertIn('"kofi"', ask(service.port, "/users/me", "one"))
            self.assertIn('"theo.loops"', ask(service.port, "/users/me", "two=three"))

    def test_begins_with_times_and_rates(self):
        with self.running("--media-rate", "4321", "--upload-rate", "1234", "--upload-expiry", "77",
                          "--processing-time", "0.5") as service:
            for path, value in {"media-rate": '{"bytesPerSecond":4321}',
                                "upload-rate": '{"bytesPerSecond":1234}',
                                "processing-time": '{"seconds":0.5}'}.items():
                self.assertEqual(ask(service.port, f"/_service/{path}"), value)

    def test_keeps_its_state_in_a_file(self):
        database = self.write("service.db", "")  # an empty file is a new database
        with self.running("--database", database, "--session=kofi=kept") as service:
            ask(service.port, "/users/1002/follow-on-twitter", "kept", "POST")
            actions = ask(service.port, "/_service/actions")
            self.assertIn('"followeeId":1002', actions)
        with self.running("--database", database) as service:
            self.assertIn('"kofi"', ask(service.port, "/users/me", "kept"))
            self.assertEqual(ask(service.port, "/_service/actions"), actions)

    def test_listens_on_loopback_only(self):
        for address in "0.0.0.0", "::", "192.0.2.1", "nonsense", "":
            self.refuses(f"cannot listen on {address}: not a loopback address",
                         *self.served, "--listen", address)
        for address in "127.0.0.1", "localhost":
            with self.running("--listen", address) as service:
                self.assertIn('"mara"', ask(service.port, "/users/me"))

    def test_listens_on_ipv6(self):
        try:
            socket.create_server(("::1", 0), family=socket.AF_INET6).close()
        except OSError:
            self.skipTest("this machine has no IPv6")
        with self.running("--listen", "::1"):
            pass

    def serve_with_own(self, state):
        """The certificate that it makes itself, or has made before."""
        with mock.patch.dict(os.environ, XDG_STATE_HOME=state):
            with self.running(served=["--port", "0"]) as service:
                pem = ssl.get_server_certificate(("localhost", service.port))
        with open(f"{state}/kelo-service/certificate.pem", encoding="utf-8") as file:
            self.assertEqual(file.read(), pem)
        return pem

    def test_makes_a_certificate_of_its_own_once(self):
        state = f"{self.folder}/state/home"
        first = self.serve_with_own(state)
        kept = f"{state}/kelo-service"
        self.assertEqual([stat.S_IMODE(os.stat(path).st_mode) for path in (kept, f"{kept}/key.pem")],
                         [0o700, 0o600])
        self.assertEqual(self.serve_with_own(state), first)
        self.assertNotEqual(self.serve_with_own(f"{self.folder}/elsewhere"), first)

    def test_replaces_a_certificate_that_does_not_serve(self):
        state = f"{self.folder}/damaged"
        kept = f"{state}/kelo-service"
        pem = self.serve_with_own(state)
        expiring, its_key = self.make_certificate("expiring")  # in two days
        for damage in (lambda: os.remove(f"{kept}/key.pem"),
                       lambda: open(f"{kept}/certificate.pem", "w").close(),
                       lambda: shutil.copy(self.key, f"{kept}/key.pem"),
                       lambda: (shutil.copy(expiring, f"{kept}/certificate.pem"),
                                shutil.copy(its_key, f"{kept}/key.pem"))):
            damage()
            made = self.serve_with_own(state)
            self.assertNotEqual(made, pem)
            pem = made

    def test_says_why_it_has_no_certificate(self):
        file = self.write("file", "")
        for environment, says in (({"XDG_STATE_HOME": file}, "Not a directory"),
                                  ({"XDG_STATE_HOME": "", "HOME": ""}, "XDG_STATE_HOME")):
            with mock.patch.dict(os.environ, environment):
                self.refuses(says, "--port", "0")

    def test_explains_itself(self):
        told = run("--help")
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        for part in ("--port", "--database", "--certificate", "--key", "--session", "--faults",
                     "--media-rate", "--upload-rate", "--upload-expiry", "--processing-time",
                     "--quiet", "--version", KEY, "loop-the-loop"):
            self.assertIn(part, told.stdout)
        for option in "--version", "-V":
            version = run(option)
            self.assertEqual(version.returncode, 0)
            self.assertRegex(version.stdout, r"^kelo-service \S")

    def test_refuses_bad_arguments(self):
        for option, *values in (["--no-such-option"], ["--port"], ["--port", "eighty"],
                                ["--port", "65536"], ["--port", "-1"], ["--media-rate", "-1"],
                                ["--media-rate", "fast"], ["--upload-rate", "-1"],
                                ["--upload-expiry", "-1"], ["--processing-time", "-1"]):
            self.refuses(option, option, *values)
        self.refuses("stray", "stray")
        self.refuses("--key", "--certificate", self.certificate)
        self.refuses("--certificate", "--key", self.key)
        for session in "mara", "=key", "mara=":
            self.refuses("USERNAME=KEY", *self.served, "--session", session)
        self.refuses("nobody", *self.served, "--session", "nobody=key")
        with self.running() as first:
            self.refuses("in use", "--port", str(first.port), *self.served[2:])

    def test_refuses_bad_databases(self):
        text = self.write("text.db", "x" * 5000)
        for file, reason in ((text, "file is not a database"),
                             (f"{self.folder}/no/such/folder.db", "unable to open database file"),
                             (f"{self.folder}/", "unable to open database file")):
            self.refuses(f"cannot use the database {file}: {reason}",
                         *self.served, "--database", file)

    def test_refuses_bad_certificates_and_keys(self):
        text = self.write("text.pem", "no certificate\n")
        absent = f"{self.folder}/absent.pem"
        pem, key = self.certificate, self.key
        other = self.make_certificate("other")[1]
        for certificate, its_key, says in (
                (absent, key, f"cannot read the certificate {absent}"),
                (pem, absent, f"cannot read the key {absent}"),
                (text, key, f"the certificate {text} is not usable"),
                (key, key, f"the certificate {key} is not usable"),
                (pem, text, f"the key {text}"),
                (pem, pem, f"the key {pem}"),
                (pem, other, "mismatch"),
                (f"{self.folder}/", key, "certificate")):
            self.refuses(says, "--port", "0", "--certificate", certificate, "--key", its_key)

    def test_refuses_bad_faults_files(self):
        for file, says in (
                (f"{self.folder}/absent.json", "absent.json"),
                (self.write("bad.json", "[{]"), "bad.json is no JSON"),
                (self.write("empty.json", ""), "empty.json is no JSON"),
                (self.write("wrong.json", '[{"action":{"type":"x"}}]'),
                 "wrong.json: fault 1: action.type x is not known"),
                (f"{self.folder}/", f"cannot read the faults file {self.folder}/")):
            self.refuses(says, *self.served, "--faults", file)

    def test_ends_with_its_parent(self):
        # A shell in between starts the service and dies; the service must not stay.
        shell = subprocess.Popen(
            ["sh", "-c", '"$@" & echo $!; exec sleep 60', "sh", SERVICE, *self.served,
             "--exit-with-parent", "--quiet"], stdout=subprocess.PIPE, text=True)
        lines = sorted(shell.stdout.readline() for _ in range(2))
        self.assertIn("listening", lines[1])
        shell.kill()
        try:
            # Its standard output is the service's too, and ends with the last of them.
            self.assertEqual(shell.communicate(timeout=20)[0], "")
        except subprocess.TimeoutExpired:
            os.kill(int(lines[0]), signal.SIGKILL)
            shell.communicate()
            self.fail("the service outlived its parent")


if __name__ == "__main__":
    unittest.main()
