#!/usr/bin/env python3
"""Shows that check_includes.py finds each kind of fault, and nothing in a folder without one."""
import tempfile
import unittest
from pathlib import Path

from check_includes import faults


class CheckIncludesTest(unittest.TestCase):
    def judge(self, files, public=()):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            for file, includes in files.items():
                path = folder / file
                path.parent.mkdir(parents=True, exist_ok=True)
                lines = ["#pragma once"] if path.suffix == ".hpp" else []
                lines += [f"#include {include}" for include in includes]
                path.write_text("\n".join(lines) + "\n", encoding="utf-8")
            return faults(folder, list(public))

    def test_a_sound_folder(self):
        files = {
            "platform/A.hpp": ["<string>", "<cstdint>"],
            "platform/curl/C.cpp": ["<curl/curl.h>", "<openssl/ssl.h>"],
            "parsing/P.hpp": ["<KeloAPI/platform/A.hpp>"],
            "loops/LoopData.hpp": ["<KeloAPI/parsing/P.hpp>"],
            "loops/LoopData.cpp": ["<KeloAPI/loops/LoopData.hpp>", "<KeloAPI/platform/A.hpp>"],
            "model/M.cpp": ["<KeloAPI/loops/LoopData.hpp>", "<unistd.h>"],
            "api/S.cpp": ["<KeloAPI/Settings.hpp>"],
        }
        self.assertEqual(self.judge(files, ["platform/A.hpp", "parsing/P.hpp"]), [])

    def expect(self, part, files, public=()):
        found = self.judge(files, public)
        self.assertEqual(len(found), 1, found)
        self.assertIn(part, found[0])

    def test_foreign_headers_in_public_ones(self):
        for header in ("<unistd.h>", "<simdjson.h>", "<boost/any.hpp>", "<expected>", "<print>"):
            self.expect("public, and includes", {"platform/A.hpp": [header]}, ["platform/A.hpp"])

    def test_private_headers_in_public_ones(self):
        files = {"platform/A.hpp": ["<KeloAPI/platform/B.hpp>"], "platform/B.hpp": []}
        self.expect("which is not", files, ["platform/A.hpp"])

    def test_upward_includes(self):
        for low, high in (("platform", "parsing"), ("parsing", "model"), ("model", "api"),
                          ("api", "endpoints"), ("endpoints", "files"), ("files", "loops")):
            for suffix in (".hpp", ".cpp"):
                self.expect("points upwards",
                            {f"{low}/A{suffix}": [f"<KeloAPI/{high}/B.hpp>"], f"{high}/B.hpp": []})

    def test_leaves_stay_above_parsing_and_below_models(self):
        files = {"parsing/A.hpp": ["<KeloAPI/loops/LoopData.hpp>"], "loops/LoopData.hpp": []}
        self.expect("points upwards", files)
        files = {"loops/LoopData.hpp": ["<KeloAPI/model/M.hpp>"], "model/M.hpp": []}
        self.expect("points upwards", files)

    def test_only_the_named_source_includes_a_leaf_above_its_room(self):
        leaf = {"model/KLChannel.hpp": ["<KeloAPI/parsing/KLPagingMetadata.hpp>"]}
        header = {"parsing/KLPagingMetadata.hpp": []}
        source = {"parsing/KLPagingMetadata.cpp": ["<KeloAPI/model/KLChannel.hpp>"]}
        self.assertEqual(self.judge({**leaf, **header, **source}), [])
        for other in ("parsing/KLPagedData.cpp", "parsing/PagingKeys.hpp", "platform/A.cpp"):
            self.expect("points upwards",
                        {**leaf, **header, other: ["<KeloAPI/model/KLChannel.hpp>"]})
        self.expect("points upwards",
                    {**header, "model/KLTag.hpp": [],
                     "parsing/KLPagingMetadata.cpp": ["<KeloAPI/model/KLTag.hpp>"]})

    def test_circles(self):
        files = {
            "platform/A.hpp": ["<KeloAPI/platform/B.hpp>"],
            "platform/B.hpp": ["<KeloAPI/platform/C.hpp>"],
            "platform/C.hpp": ["<KeloAPI/platform/A.hpp>"],
        }
        self.expect("circle: ", files)
        self.expect("circle: ", {"platform/A.hpp": ["<KeloAPI/platform/A.hpp>"]})

    def test_other_faults(self):
        self.expect("not there", {"platform/A.hpp": []}, ["platform/A.hpp", "platform/Z.hpp"])
        self.expect("does not exist", {"platform/A.hpp": ["<KeloAPI/platform/Z.hpp>"]})
        self.expect("whole name", {"platform/A.hpp": ['"B.hpp"']})
        self.expect("belongs to platform/curl", {"platform/A.cpp": ["<curl/curl.h>"]})
        self.expect("no header's business", {"api/A.hpp": ["<KeloAPI/Settings.hpp>"]})


if __name__ == "__main__":
    unittest.main()
