"""The tables of docs/reliability.md whose rows scripts write."""
import os
import pathlib

PAGE = pathlib.Path(__file__).resolve().parent.parent / "docs/reliability.md"


def write_row(block, *cells):
    """Puts a row in the place of the one with the same first cell; the others stay. Does nothing
    without KELO_UPDATE_DOCS in the environment."""
    if "KELO_UPDATE_DOCS" not in os.environ:
        return
    begin, end = f"<!-- begin {block} -->\n", f"<!-- end {block} -->\n"
    before, rest = PAGE.read_text().split(begin)
    table, after = rest.split(end)
    head, rule, *rows = table.strip().splitlines()
    rows = [row for row in rows if not row.startswith(f"| {cells[0]} |")]
    rows.append(f"| {' | '.join(map(str, cells))} |")
    table = "\n".join([head, rule, *sorted(rows)])
    PAGE.write_text(f"{before}{begin}\n{table}\n\n{end}{after}")
