"""What the pictures of the documents share: the frame of an SVG, and its colours by light and by dark."""

STYLE = """
svg { font: 12px sans-serif; background: var(--page);
  --page: #fff; --text: #1d2127; --faint: #6b747e; --line: #dfe3e8; }
@media (prefers-color-scheme: dark) {
  svg { --page: #15181c; --text: #dde2e8; --faint: #98a2ae; --line: #2c333b; } }
text { fill: var(--text); } .faint { fill: var(--faint); } .grid { stroke: var(--line); }
.page { fill: var(--page); }
"""


def svg(width, height, label, style, parts):
    """The whole file. The label is what is read out where the picture is not seen."""
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" role="img" '
        f'aria-label="{label}">', f"<style>{STYLE}{style}</style>",
        f'<rect class="page" width="{width}" height="{height}"/>', *parts, "</svg>\n"])
