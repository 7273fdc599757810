"""Markdown for the reports: tables, and documents whose tables are renewed."""

import re


def table(header, rows):
    """A Markdown table, padded so that it reads well as plain text: names left, numbers right."""
    cells = [header] + [[cell if isinstance(cell, str) else f"{cell:.2f}" for cell in row] for row in rows]
    widths = [max(len(row[i]) for row in cells) for i in range(len(header))]
    rule = ["-" * widths[0]] + ["-" * (width - 1) + ":" for width in widths[1:]]
    lines = [[row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
             for row in cells]
    return "\n".join("| " + " | ".join(line) + " |" for line in [lines[0], rule] + lines[1:])


def renew(document, tables):
    """The document with new tables at their places, each between <!-- table NAME --> and <!-- end -->."""
    places = re.findall(r"<!-- table (\w+) -->", document)
    if sorted(places) != sorted(tables):
        raise ValueError(f"the document has places for {places}, the tables are {list(tables)}")
    return re.sub(r"(<!-- table (\w+) -->\n).*?(<!-- end -->)",
                  lambda place: f"{place[1]}\n{tables[place[2]]}\n\n{place[3]}", document, flags=re.S)
