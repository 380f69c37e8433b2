#!/usr/bin/env python3
"""Shows that check_includes.py finds each kind of fault, and nothing in a folder without one."""
import tempfile
import unittest
from pathlib import Path

from check_includes import faults, is_public


class CheckIncludesTest(unittest.TestCase):
    def judge(self, files, everything=None):
        """The faults of `files`, beside a KeloAPI.hpp that includes what is public of them."""
        if everything is None:
            everything = [f"<KeloAPI/{name}>" for name in files if is_public(name)]
        with tempfile.TemporaryDirectory() as folder:
            for file, includes in {**files, "KeloAPI.hpp": everything}.items():
                path = Path(folder) / file
                path.parent.mkdir(parents=True, exist_ok=True)
                lines = ["#pragma once"] if path.suffix == ".hpp" else []
                lines += [f"#include {include}" for include in includes]
                path.write_text("\n".join(lines) + "\n", encoding="utf-8")
            return faults(Path(folder))

    def test_a_sound_folder(self):
        files = {
            "base/A.hpp": ["<string>", "<cstdint>"],
            "base/internal/B.hpp": ["<unistd.h>", "<KeloAPI/base/A.hpp>"],
            "base/A.cpp": ["<KeloAPI/base/internal/B.hpp>", "<unistd.h>"],
            "curl/internal/C.cpp": ["<curl/curl.h>", "<openssl/ssl.h>", "<KeloAPI/http/H.hpp>"],
            "http/H.hpp": ["<KeloAPI/base/A.hpp>"],
            "base/internal/System.cpp": ["<sys/eventfd.h>"],
            "api/S.cpp": ["<KeloAPI/Settings.hpp>"],
        }
        self.assertEqual(self.judge(files), [])

    def expect(self, part, files, everything=None):
        found = self.judge(files, everything)
        self.assertEqual(len(found), 1, found)
        self.assertIn(part, found[0])

    def test_foreign_headers_in_public_ones(self):
        for header in ("<unistd.h>", "<simdjson.h>", "<boost/any.hpp>", "<expected>", "<print>"):
            self.expect("public, and includes", {"base/A.hpp": [header]})

    def test_upward_and_sideward_includes(self):
        for low, high in (("base", "queues"), ("queues", "json"), ("json", "http"),
                          ("archive", "http"), ("http", "archive"), ("http", "curl"),
                          ("parsing", "curl"), ("parsing", "model"), ("model", "api"),
                          ("api", "endpoints"), ("endpoints", "files"), ("files", "fakes"),
                          ("fakes", "endpoints")):
            for file in (f"{low}/A.hpp", f"{low}/A.cpp", f"{low}/internal/A.cpp"):
                self.expect("points upwards", {file: [f"<KeloAPI/{high}/B.hpp>"], f"{high}/B.hpp": []})

    def test_other_faults(self):
        private = {"base/A.hpp": ["<KeloAPI/base/internal/B.hpp>"], "base/internal/B.hpp": []}
        circle = {
            f"base/{name}.hpp": [f"<KeloAPI/base/{other}.hpp>"] for name, other in ("AB", "BC", "CA")
        }
        for part, files in (
            ("which is not", private),
            ("circle: ", circle),
            ("circle: ", {"base/A.hpp": ["<KeloAPI/base/A.hpp>"]}),
            ("points upwards", {"api/A.cpp": ["<KeloAPI/KeloAPI.hpp>"]}),
            ("does not exist", {"base/A.hpp": ["<KeloAPI/base/Z.hpp>"]}),
            ("whole name", {"base/A.hpp": ['"B.hpp"']}),
            ("belongs to the room curl", {"http/A.cpp": ["<curl/curl.h>"]}),
            ("not of POSIX", {"http/A.cpp": ["<sys/eventfd.h>"]}),
            ("no header's business", {"api/A.hpp": ["<KeloAPI/Settings.hpp>"]}),
            ("stands in no room", {"attic/A.cpp": []}),
        ):
            self.expect(part, files)
        self.expect("does not include base/A.hpp", {"base/A.hpp": []}, everything=[])


if __name__ == "__main__":
    unittest.main()
