"""Makes the table of a long test run from ctest's JUnit reports: safety.py REPORTS FOLDER"""

import pathlib
import re
import sys
import xml.etree.ElementTree

from markdown import table

RUNS = {
    "linux-release": "all tests, optimised build",
    "linux-sanitize": "all tests under AddressSanitizer and UndefinedBehaviorSanitizer",
    "windows-release": "the Windows DLL and its tests under Wine",
    "linux-threads": "8 threads calling every model, under ThreadSanitizer",
    "linux-memcheck": "the tests of models and host program under valgrind memcheck",
    "linux-fuzz": "both fuzzers for a few seconds, with AddressSanitizer and UndefinedBehaviorSanitizer",
    "linux-fuzz-minute": "both fuzzers for a minute",
}

TEXT = """# Safety

Made by `scripts/test --long docs`. What the tests show of every model, on Linux and Windows:

- **Nothing outside the arrays is touched.** 1000 random calls of each model, with zeros, infinities, NaN and extreme numbers,
  x on a parameter, all flags and -2 to 60 parameters, run in arrays that end and begin at closed pages
  ([every_model_test.cpp](../tests/frame/every_model_test.cpp)); where they end is in [extents.h](../tests/support/extents.h).
- **The contract holds for every call**: an allowed result, nothing written by `EVAL_INIT`, the same bits the second time, `perr`
  read only with `EVAL_USE_ERRPTR`, value and derivatives in one call as in two ([contract.h](../tests/support/contract.h)).
- **The optimiser changes no bit**: the same calls to a library compiled without it
  ([compare_builds.cpp](../tests/compare/compare_builds.cpp)).
- **Threads do not see each other** ([threads_test.cpp](../tests/frame/threads_test.cpp)).
- **No allocation, no lock, no system call**, on Linux: an allocator that counts, a process that a system call would end
  ([isolation_test.cpp](../tests/isolation/isolation_test.cpp)), and an import list of mathematical functions, `errno` and the
  `snprintf` of the diagnostic command ([export_table.py](../tests/catalogue/export_table.py)).
- **Arbitrary input does no harm**: [fuzzers](../tests/fuzz/) of model calls and of the texts of `FuncTest`.

"""


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
    (folder / "safety.md").write_text(TEXT + text + "\n")
    print(text)


main()
