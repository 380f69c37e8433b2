"""What the tests of the routes share: a fresh kelo-service for each test, and calls to it."""

import http.client
import json
import os
import socket
import sys
import unittest

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.append(f"{TESTS}/apps")

from service import CONTEXT, KEY, Service

MEDIA = f"{TESTS}/../service/media"


class Reply:
    """An answer of the service, and what its envelope says."""

    def __init__(self, answer):
        self.status, self.headers, self.body = answer.status, answer.headers, answer.read()

    @property
    def json(self):
        return json.loads(self.body)

    @property
    def data(self):
        return self.json["data"]

    @property
    def code(self):
        return self.json["code"]

    @property
    def error(self):
        return self.json["error"]


class RouteCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.start()

    def start(self, *arguments):
        """A service with these arguments, and a connection to it."""
        self.service = Service(*arguments)
        self.addCleanup(self.service.stop)
        self.address = f"https://{self.service.host}"
        self.connection = http.client.HTTPSConnection(self.service.host, timeout=20,
                                                      context=CONTEXT)
        self.addCleanup(self.connection.close)

    def send(self, method, path, body=b"", key=KEY, **headers):
        """Sends a call with the development session's key or another; None sends no key. A hyphen
        in a header's name is written as _."""
        sent = {name.replace("_", "-"): value for name, value in headers.items()}
        if key is not None:
            sent["kelo-session-id"] = key
        self.connection.request(method, path, body, sent)
        return Reply(self.connection.getresponse())

    def ask(self, call, key=KEY, **headers):
        """The same for "METHOD PATH" or "METHOD PATH BODY"."""
        method, path, *body = call.split(" ", 2)
        return self.send(method, path, "".join(body).encode(), key, **headers)

    def raw(self, request):
        """A connection of its own that has sent these bytes. Reading fails where it ends without
        TLS's goodbye."""
        host, port = self.service.host.split(":")
        raw = CONTEXT.wrap_socket(socket.create_connection((host, int(port)), timeout=20),
                                  suppress_ragged_eofs=False)
        self.addCleanup(raw.close)
        raw.sendall(request)
        return raw

    def exchange(self, request):
        """What comes on such a connection until it is closed."""
        raw = self.raw(request)
        return b"".join(iter(lambda: raw.recv(65536), b""))

    def data(self, path, key=KEY):
        """The data of a GET that has to succeed."""
        reply = self.ask(f"GET {path}", key)
        self.assertEqual(reply.status, 200, reply.body)
        return reply.data

    def records(self, path, key=KEY):
        return self.data(path, key)["records"]

    def many_posts(self):
        """The newest posts, nearly all of them."""
        return self.records("/timelines/all?size=1000")

    def path_of(self, url):
        """The path of an address that must be the service's own."""
        self.assertTrue(url.startswith(f"{self.address}/"), url)
        return url.removeprefix(self.address)

    def fetched(self, url):
        """What is served at such an address."""
        reply = self.ask(f"GET {self.path_of(url)}", None)
        self.assertEqual(reply.status, 200, url)
        return reply.body
