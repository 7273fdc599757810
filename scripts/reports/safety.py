"""Renews the table of docs/safety.md from ctest's JUnit reports of a long test run: safety.py REPORTS FOLDER"""

import pathlib
import re
import sys
import xml.etree.ElementTree

from markdown import renew, table

RUNS = {
    "linux-release": "all tests, optimised build",
    "linux-sanitize": "all tests under AddressSanitizer and UndefinedBehaviorSanitizer",
    "windows-release": "the Windows DLL and its tests under Wine",
    "linux-threads": "8 threads calling every model, under ThreadSanitizer",
    "linux-memcheck": "the tests of models and host program under valgrind memcheck",
    "linux-fuzz": "both fuzzers for a few seconds, with AddressSanitizer and UndefinedBehaviorSanitizer",
    "linux-fuzz-minute": "both fuzzers for a minute",
}

DOCUMENT = pathlib.Path(__file__).parents[2] / "docs/safety.md"


def row(report):
    suite = xml.etree.ElementTree.parse(report).getroot()
    output = "\n".join(case.findtext("system-out") or "" for case in suite.iter("testcase"))
    checks = sum(map(int, re.findall(r"\[doctest\] assertions:\s*(\d+)", output)))
    inputs = sum(map(int, re.findall(r"stat::number_of_executed_units:\s*(\d+)", output)))
    failed = sum(case.get("status") not in ("run", "disabled") for case in suite.iter("testcase"))
    seconds = sum(float(case.get("time")) for case in suite.iter("testcase"))
    return [suite.get("tests"), str(failed), f"{checks:,}" if checks else "", f"{inputs:,}" if inputs else "",
            f"{seconds:.0f}"]


def main():
    reports, folder = map(pathlib.Path, sys.argv[1:])
    rows = [[what, *row(reports / f"{run}.xml")] for run, what in RUNS.items()]
    text = table(["run", "tests", "failed", "checks", "fuzzed inputs", "seconds"], rows)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "safety.md").write_text(renew(DOCUMENT.read_text(), {"runs": text}))
    print(text)


main()
