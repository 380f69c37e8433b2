"""A kelo-service for one test class, and what it offers under /_service."""

import base64
import json
import os
import re
import ssl
import subprocess
import time
import urllib.request

BIN = os.environ.get("KELO_BIN", "build/dev/bin")
KEY = "kelo-development-session"

# Whose certificate is the service's own is what other tests are about.
CONTEXT = ssl.create_default_context()
CONTEXT.check_hostname = False
CONTEXT.verify_mode = ssl.CERT_NONE


def wait_until(holds):
    """Polls for what happens in another process."""
    deadline = time.monotonic() + 20
    while not holds():
        if time.monotonic() > deadline:
            raise AssertionError("it did not happen in time")
        time.sleep(0.02)


# Of the build, which pins the first.
CERTIFICATES = f"{BIN}/../certificates"


class Service:
    def __init__(self, *arguments, **environment):
        """Serves with a certificate of the build, unless an environment says where its own is."""
        if not environment and "--certificate" not in arguments:
            development = f"{CERTIFICATES}/development-1"
            arguments += ("--certificate", f"{development}.pem", "--key", f"{development}.key")
        self.process = subprocess.Popen(
            [f"{BIN}/kelo-service", "--port", "0", "--exit-with-parent", *arguments],
            stdout=subprocess.PIPE, text=True, env={**os.environ, **environment})
        line = self.process.stdout.readline()
        self.host = re.search(r"https://(\S+)", line).group(1)

    def stop(self):
        self.process.terminate()
        self.process.wait(timeout=20)
        self.process.stdout.close()

    def fetch(self, path, method="GET", body=None):
        """What is at a path, fetched without kelo."""
        request = urllib.request.Request(f"https://{self.host}/{path}", method=method, data=body,
                                         headers={"Content-Type": "application/json"})
        opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=CONTEXT))
        with opener.open(request, timeout=20) as answer:
            return answer.read()

    def control(self, method, path, body=None):
        """What a control route answers."""
        sent = None if body is None else json.dumps(body).encode()
        return json.loads(self.fetch(path, method, sent))

    def set(self, what, **value):
        self.control("POST", f"_service/{what}", value)

    def session(self, username="mara"):
        return self.control("POST", "_service/sessions", {"username": username})["key"]

    def expired_session(self):
        key = self.session()
        self.control("POST", f"_service/sessions/{key}/expire", {})
        return key

    def captcha_session(self):
        """A session that has to solve a captcha, and where."""
        key = self.session()
        return key, self.control("POST", f"_service/sessions/{key}/captcha", {})["url"]

    def solve(self, captcha_url):
        self.control("POST", captcha_url.split("/", 3)[3] + "/solve", {})

    def fault(self, path=None, *, method=None, skip=0, times=1, **action):
        match = {"path": path, "method": method}
        self.set("faults", match={key: value for key, value in match.items() if value},
                 skip=skip, times=times, action=action)

    def answer(self, path, data, **fault):
        """The next request for the path is answered with this data, in place of its own."""
        self.fault(path, type="body", body=json.dumps({"data": data}), **fault)

    def fired(self):
        """How often each fault has happened since `forget`."""
        return [fault["fired"] for fault in self.control("GET", "_service/faults")["faults"]]

    def forget(self):
        """Forgets faults and requests."""
        self.control("DELETE", "_service/faults")
        self.forget_requests()

    def forget_requests(self):
        self.control("DELETE", "_service/requests")

    def seen(self, path=None, method=None):
        """The requests since `forget`."""
        return [one for one in self.control("GET", "_service/requests")["requests"]
                if path in (None, one["path"]) and method in (None, one["method"])]

    def headers(self, path):
        """The headers of the requests for a path since `forget`."""
        return [dict(one["headers"]) for one in self.seen(path)]

    def calls(self, path):
        """The calls for a path since `forget`, as (method, body)."""
        return [(one["method"], base64.b64decode(one["body"]).decode())
                for one in self.seen(path)]

    def kept(self, kind):
        """What users did since the service began, oldest first."""
        return self.control("GET", "_service/actions")[kind]
