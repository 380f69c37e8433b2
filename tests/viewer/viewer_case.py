"""What the viewer's tests share: a service, and the viewer at it."""

import unittest

from viewer import Home, Viewer


class Case(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.home = Home()
        self.addCleanup(self.home.remove)
        self.service = self.home.service()
        self.addCleanup(lambda: self.service.stop())
        self.viewer = None
        self.addCleanup(self.kill)

    def kill(self):
        if self.viewer and self.viewer.process.poll() is None:
            self.viewer.process.kill()
            self.viewer.process.wait()

    def start(self, tab="popular"):
        """The viewer with a tab's first post shown."""
        self.viewer = viewer = Viewer(self.home, self.service.host)
        viewer.wait("feed")
        if tab != "home":
            viewer.click(f"tab-{tab}")
        viewer.until(lambda: viewer.eval("feed", "count") not in ("none", "0"), "there are posts")
        return viewer

    def close(self):
        """Ends as when the window is closed, without a word in the log."""
        self.assertEqual(self.viewer.stop(), 0)
        self.assertEqual(self.viewer.said(), "")

    def key(self):
        """The id of the post in view."""
        viewer = self.viewer
        code = "(itemAt(width / 2, contentY + height * 0.35) ?? {}).record?.key ?? ''"
        return viewer.until(lambda: viewer.eval("feed", code), "a post is in view")

    def plays(self, key):
        self.viewer.until(lambda: self.viewer.eval(f"loop-{key}", "hasPicture") == "true",
                          "the loop plays")

    def reach(self, index):
        """Puts this row at the top, once it has been read."""
        viewer = self.viewer
        while int(viewer.eval("feed", "count")) <= index:
            before = viewer.eval("feed", "count")
            viewer.eval("feed", "positionViewAtEnd()")
            viewer.until(lambda: viewer.eval("feed", "count") != before, "the next page comes")
        viewer.eval("feed", f"positionViewAtIndex({index}, 0)")


    def bring(self, row, name):
        """Puts this row at the top until the item of that name is there: cards come by themselves."""
        def is_there():
            self.reach(row)
            return self.viewer.is_in_window(name)
        self.viewer.until(is_there, f"{name} is in view")


def difference(one, other):
    """The mean difference of two shots, 0 to 255, of every 17th byte."""
    if one[:2] != other[:2]:
        return 255
    pairs = list(zip(one[2][::17], other[2][::17]))
    return sum(abs(a - b) for a, b in pairs) / len(pairs)
