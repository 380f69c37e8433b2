"""A kelo-service for one test class, and what it offers under /_service."""

import base64
import json
import os
import re
import ssl
import subprocess
import urllib.request

BIN = os.environ.get("KELO_BIN", "build/dev/bin")
KEY = "kelo-development-session"


class Service:
    def __init__(self):
        self.process = subprocess.Popen(
            [f"{BIN}/kelo-service", "--port", "0", "--exit-with-parent"],
            stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.host = re.search(r"https://(\S+)", line).group(1)

    def stop(self):
        self.process.terminate()
        self.process.wait(timeout=20)
        self.process.stdout.close()

    def control(self, method, path, body=None):
        """What a control route answers."""
        context = ssl.create_default_context()
        context.check_hostname = False
        context.verify_mode = ssl.CERT_NONE
        request = urllib.request.Request(
            f"https://{self.host}/{path}", method=method,
            data=None if body is None else json.dumps(body).encode(),
            headers={"Content-Type": "application/json"})
        opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=context))
        with opener.open(request, timeout=20) as answer:
            return json.load(answer)

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

    def fault(self, path, **action):
        self.control("POST", "_service/faults", {"match": {"path": path}, "action": action})

    def forget(self):
        """Forgets faults and requests."""
        self.control("DELETE", "_service/faults")
        self.forget_requests()

    def forget_requests(self):
        self.control("DELETE", "_service/requests")

    def requests(self, path):
        """The requests for a path since `forget`, as (query, headers)."""
        seen = self.control("GET", "_service/requests")["requests"]
        return [(one["query"], dict(one["headers"])) for one in seen if one["path"] == path]

    def asked(self):
        """What was asked for since `forget`, as (method, path)."""
        seen = self.control("GET", "_service/requests")["requests"]
        return [(one["method"], one["path"]) for one in seen]

    def calls(self, path):
        """The calls for a path since `forget`, as (method, body)."""
        seen = self.control("GET", "_service/requests")["requests"]
        return [(one["method"], base64.b64decode(one["body"]).decode())
                for one in seen if one["path"] == path]

    def kept(self, kind):
        """What users did since the service began, oldest first."""
        return self.control("GET", "_service/actions")[kind]
