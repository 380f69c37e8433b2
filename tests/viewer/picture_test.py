"""The picture that scripts/viewer --picture takes."""

import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib


class Picture(unittest.TestCase):
    def test_it_has_the_whole_window(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, "viewer.png")
            script = pathlib.Path(__file__).with_name("picture.py")
            subprocess.run([sys.executable, "-B", script, file], check=True)
            picture = file.read_bytes()
        self.assertLess(len(picture), 150_000)
        self.assertEqual(struct.unpack(">II", picture[16:24]), (420, 780))
        length = struct.unpack(">I", picture[33:37])[0]
        self.assertEqual(picture[37:41], b"IDAT")
        rows = zlib.decompress(picture[41:41 + length])
        self.assertEqual(len(rows), 780 * (1 + 420 * 3))
        self.assertEqual(set(rows[::1 + 420 * 3]), {2}, "each row tells its difference")
