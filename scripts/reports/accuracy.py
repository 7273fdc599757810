"""Renews what a measurement of the accuracy says: accuracy.py RESULTS.csv DOCUMENTS REFERENCE

Writes accuracy.md, the document with new tables, into the first folder and disagreement.txt, the models whose formula does not
give the library's value, into the second. Its exit code is 1 where one of these lacks a reason: every model with an entry
worse than 1,000 units is to be named in a sentence of the document, and every line of disagreement.txt ends with why.
"""

import csv
import math
import pathlib
import re
import statistics
import sys

from markdown import renew, table

ROOT = pathlib.Path(__file__).parents[2]
DOCUMENT, DISAGREEMENT = ROOT / "docs/accuracy.md", ROOT / "reference/disagreement.txt"
GOAL = 1000  # units of the condition, beyond which an entry needs a sentence
AGREEMENT = 1e-11  # of the curve's size
MEASURES = ("ulp_median", "ulp_largest", "condition_median", "condition_largest", "formula_ulp_median",
            "formula_ulp_largest", "formula_condition_median", "formula_condition_largest")


def read(path):
    rows = list(csv.DictReader(path.open()))
    for row in rows:
        row |= {key: float(row[key]) for key in (*MEASURES, "points", "disagreement")}
        row["title"] = f"{row['model']} {row['entry']}"
    return [row for row in rows if row["points"]]


def number(value):
    """Two digits, in a form that is short."""
    if value >= 1e5 or (value and value < 0.01):
        return "inf" if math.isinf(value) else re.sub(r"e[+]?(-?)0*", r"e\1", f"{value:.1e}")
    return f"{value:.2g}" if value < 99.5 else f"{value:.0f}"


def overall(rows):
    lines = []
    for title, chosen in (("values", [row for row in rows if "value" in row["entry"]]),
                          ("derivatives", [row for row in rows if "value" not in row["entry"]])):
        for whose, prefix in (("library", ""), ("formula", "formula_")):
            largest = [row[f"{prefix}condition_largest"] for row in chosen]
            lines.append([f"{title}, {whose}", str(len(chosen)),
                          number(statistics.median(row[f"{prefix}ulp_median"] for row in chosen)),
                          number(statistics.median(row[f"{prefix}condition_median"] for row in chosen)),
                          number(statistics.median(largest)), str(sum(value > 10 for value in largest)),
                          str(sum(value > GOAL for value in largest))])
    return table(["", "entries", "ulp, median", "condition, median", "largest of an entry, median", "beyond 10",
                  f"beyond {GOAL}"], lines)


def worst(rows, key):
    chosen = sorted(rows, key=lambda row: -row[key])[:10]
    return table(["entry", "median", "largest"],
                 [[row["title"], number(row[key.replace("largest", "median")]), number(row[key])] for row in chosen])


def every(rows):
    return table(["entry", "points", "ulp, median", "largest", "condition, median", "largest", "formula: ulp, median",
                  "largest", "condition, median", "largest"],
                 [[row["title"] + (" ≈" if row["approximation"] == "yes" else ""), f"{row['points']:.0f}",
                   *(number(row[key]) for key in MEASURES)] for row in rows])


def disagreement(rows):
    """The lines of the list with new numbers, and the models that have no reason yet."""
    lines = DISAGREEMENT.read_text().splitlines()
    reasons = {line.split()[0]: line.split(None, 2)[2] for line in lines if line and not line.startswith("#")}
    found = {row["model"]: row["disagreement"] for row in rows if row["disagreement"] > AGREEMENT}
    head = [line for line in lines if line.startswith("#")]
    body = [f"{model:<16} {number(value):<8} {reasons.get(model, '?')}" for model, value in found.items()]
    return "\n".join([*head, *body]) + "\n", sorted(set(found) - set(reasons))


def main():
    results, documents, reference = map(pathlib.Path, sys.argv[1:])
    rows = read(results)
    accurate = [row for row in rows if row["approximation"] == "no"]
    values, derivatives = ([row for row in accurate if ("value" in row["entry"]) == is_value] for is_value in (True, False))
    document = DOCUMENT.read_text()
    documents.mkdir(parents=True, exist_ok=True)
    (documents / "accuracy.md").write_text(renew(document, {
        "overall": overall(rows), "values": worst(values, "condition_largest"),
        "derivatives": worst(derivatives, "condition_largest"), "formulas": worst(rows, "formula_condition_largest"),
        "every": every(rows)}))
    text, unexplained = disagreement(rows)
    (reference / "disagreement.txt").write_text(text)
    for model in unexplained:
        print(f"{model}: disagreement.txt does not say why")
    prose = re.sub(r"<!-- table.*?<!-- end -->", "", document, flags=re.S)
    unnamed = sorted({row["model"] for row in rows if row["condition_largest"] > GOAL}
                     - set(re.findall(r"`(\w+)`", prose)))
    for model in unnamed:
        print(f"{model}: beyond {GOAL} units, and the document does not say why")
    print(f"{len(rows)} entries, {sum(row['condition_largest'] > GOAL for row in rows)} beyond {GOAL} units")
    sys.exit(bool(unexplained or unnamed))


main()
