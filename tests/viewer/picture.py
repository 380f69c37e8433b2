"""Takes the picture of the documents: a post of a feed, whose loop plays.

    python3 -B tests/viewer/picture.py FILE      scripts/viewer --picture builds what it needs
"""

import sys

from viewer import Home, Viewer
from viewer_case import difference

ROW, POST, NEXT = 4, "1150000000004106890", "1150000000004390549"


def main():
    home = Home()
    service = home.service()
    try:
        viewer = Viewer(home, service.host)
        viewer.click("tab-popular")
        viewer.until(lambda: viewer.shown("feed") and int(viewer.eval("feed", "count")) > ROW,
                     "there are posts")

        def plays():
            viewer.eval("feed", f"positionViewAtIndex({ROW}, 0)")  # cards come by themselves
            return viewer.eval(f"loop-{POST}", "hasPicture") == "true"
        viewer.until(plays, "the loop plays")
        for post in (POST, NEXT):
            viewer.wait_for(f"author-{post}", "parent.children[0].status", 1)  # the face is there
        viewer.wait_for(f"thumbnail-{NEXT}", "status", 1)
        first = viewer.shot(f"loop-{POST}")
        viewer.until(lambda: difference(first, viewer.shot(f"loop-{POST}")) > 7, "the loop moves")
        viewer.save(sys.argv[1], "window")
        viewer.stop()
    finally:
        service.stop()
        home.remove()


main()
