"""Times formulas and renews the tables of docs/formula_performance.md: formulas.py BENCH REFERENCE FOLDER

BENCH is the built formula_bench, REFERENCE the folder of the reference tables. Programs, muParser and the calling contract
are timed by BENCH, numpy here, in turns, on one core; every time is the least of all turns. Writes formula_performance.md and
formula_performance.csv (every formula) into FOLDER.
"""

import csv
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import time
import tomllib

# One core for everything, before numpy starts threads.
os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
os.environ["OMP_NUM_THREADS"] = "1"

import numpy  # noqa: E402

from markdown import renew, table  # noqa: E402

DOCUMENT = pathlib.Path(__file__).parents[2] / "docs/formula_performance.md"
POINTS = 100_000
TURNS, ROUNDS = 5, 2
LONGEST = 100
VARIABLES = ["x", "y", "z"]
SETS = ["baseline", "avx2", "avx512"]


class Formula:
    """A formula of the reference tables as one text, at the sample of its table."""

    def __init__(self, name, entry):
        sample = entry["sample"]
        self.name = name
        self.values = [float(value) for value in sample["p"]]
        once = [name for name, _ in entry.get("parameters", [])]
        repeated = [name for name, _ in entry.get("repeated", [])]
        terms = (len(self.values) - len(once)) // len(repeated) if repeated else 0
        if name == "Gauss" and terms == 1:  # two terms, as the goals have it
            terms = 2
            self.values += [self.values[1] + 1.5] + self.values[2:]
        self.parameters, self.text = list(once), entry.get("formula", "")
        for k in range(1, terms + 1):
            names = {name: f"{name}{k}" if terms > 1 else name for name in repeated}
            self.parameters += names.values()
            term = re.sub(r"[A-Za-z_]\w*", lambda word: {**names, "k": str(k)}.get(word[0], word[0]), entry["term"])
            self.text += (" + " if self.text else "") + term
        self.variables = [name for name in VARIABLES if name in sample]
        self.ranges = [sample[name] for name in self.variables]
        self.exact = entry.get("derivatives") != "none" and not entry.get("inexact") and not entry.get("second")

    def line(self, peers):
        call = len(self.values) if self.exact else 0
        fields = [self.name, str(int(peers)), str(call), self.text, ",".join(self.variables),
                  ",".join(f"{low!r}:{high!r}" for low, high in self.ranges), ",".join(self.parameters),
                  ",".join(map(repr, self.values))]
        return "\t".join(fields)

    def columns(self):
        places = numpy.arange(POINTS), numpy.arange(POINTS) * 30_011 % POINTS
        return [low + (high - low) * (places[min(i, 1)] + 0.5) / POINTS for i, (low, high) in enumerate(self.ranges)]


class NumpyTranslator:
    """The formula as a person writes it for numpy: arrays for the variables, Python's numbers for the rest."""

    FUNCTIONS = {"ln": "log", "log": "log", "exp": "exp", "sqrt": "sqrt", "sin": "sin", "cos": "cos", "tan": "tan",
                 "tanh": "tanh", "atan": "arctan", "abs": "abs", "floor": "floor", "max": "maximum", "min": "minimum"}
    LEVELS = [["or"], ["and"], ["<", "<=", ">", ">=", "==", "!="], ["+", "-"], ["*", "/"]]
    SIGNS = {"or": "|", "and": "&"}

    def __init__(self, text):
        self.tokens = re.findall(r"\d+\.?\d*(?:[eE][+-]?\d+)?|\.\d+|\w+|[<>=!]=|\*\*|\S", text) + [""]
        self.names, self.place = set(re.findall(r"\b[A-Za-z_]\w*\b(?!\()", text)), 0

    def take(self, *wanted):
        if self.tokens[self.place] in wanted:
            self.place += 1
            return self.tokens[self.place - 1]
        return None

    def conditional(self):
        condition = self.binary(0)
        if not self.take("?"):
            return condition
        yes = self.conditional()
        self.take(":")
        return f"numpy.where({condition}, {yes}, {self.conditional()})"

    def binary(self, level):
        if level == len(self.LEVELS):
            return self.unary()
        left = self.binary(level + 1)
        while sign := self.take(*self.LEVELS[level]):
            left = f"({left} {self.SIGNS.get(sign, sign)} {self.binary(level + 1)})"
        return left

    def unary(self):
        return f"(-{self.unary()})" if self.take("-") else self.power()

    def power(self):
        base = self.primary()
        return f"{base} ** ({self.unary()})" if self.take("^") else base

    def primary(self):
        token = self.tokens[self.place]
        self.place += 1
        if token == "(":
            inner = self.conditional()
            self.take(")")
            return f"({inner})"
        if self.tokens[self.place] == "(":
            arguments = []
            while self.take("(", ","):
                arguments.append(self.conditional())
            self.take(")")
            if token in self.FUNCTIONS:
                return f"numpy.{self.FUNCTIONS[token]}({', '.join(arguments)})"
            if token in ("gamma", "lgamma") and not any(re.search(rf"\b[{''.join(VARIABLES)}]\b", a) for a in arguments):
                return f"math.{token}({arguments[0]})"
            raise LookupError(token)
        return "math.pi" if token == "pi" else token


def numpy_code(formula):
    """The expression compiled, or None where numpy lacks a function of it."""
    try:
        return compile(NumpyTranslator(formula.text).conditional(), formula.name, "eval")
    except LookupError:
        return None


def read_reference(folder):
    entries = {}
    for path in sorted(folder.rglob("*.toml")):
        entries.update(tomllib.loads(path.read_text(encoding="utf-8")))
    return [Formula(name, entry) for name, entry in sorted(entries.items())
            if not entry.get("placeholder") and "sample" in entry]


def geometric_mean(values):
    return math.exp(statistics.fmean(math.log(value) for value in values))


class Times(dict):
    """Nanoseconds a point by formula and what was timed."""

    def note(self, name, what, nanoseconds):
        times = self.setdefault(name, {})
        times[what] = min(times.get(what, math.inf), nanoseconds)

    def time_numpy(self, tasks):
        for formula, code, names in tasks:
            for _ in range(ROUNDS):
                start = time.thread_time()
                eval(code, names)
                self.note(formula.name, "numpy", (time.thread_time() - start) * 1e9 / POINTS)

    def run_bench(self, bench, lines):
        output = subprocess.run([bench, lines, str(ROUNDS)], check=True, stdout=subprocess.PIPE, text=True).stdout
        for line in output.splitlines():
            name, what, nanoseconds = line.split("\t")
            self.note(name, what, float(nanoseconds))


def peers_table(times, formulas, sets):
    rows = []
    for peer, label in (("muparser", "muParser 2.3"), ("numpy", f"numpy {numpy.__version__}")):
        timed = [times[f.name] for f in formulas if peer in times[f.name]]
        row = [label, str(len(timed)), geometric_mean(t[peer] for t in timed)]
        for name in sets:
            ratios = [t[peer] / t[f"{name} value"] for t in timed]
            row += [geometric_mean(ratios), min(ratios)]
        rows.append(row)
    header = ["peer", "formulas", "ns a point"]
    for name in sets:
        header += [f"{name}, times faster", "at least"]
    return table(header, rows)


def derivatives_table(times, formulas, sets):
    rows = []
    for count in sorted({len(f.parameters) for f in formulas}):
        chosen = [times[f.name] for f in formulas if len(f.parameters) == count]
        row = [str(count), str(len(chosen))]
        for name in sets:
            ratios = [t[f"{name} derivatives"] / t[f"{name} value"] for t in chosen]
            row += [geometric_mean(ratios), max(ratios)]
        rows.append(row)
    header = ["parameters", "formulas"]
    for name in sets:
        header += [name, "at most"]
    return table(header, rows)


def ratio(t, name):
    return t["contract derivatives"] / t[f"{name} derivatives"]


def gauss_table(times, sets):
    t = times["Gauss"]
    rows = []
    for what, name in [("contract", "the calling contract")] + [(name, f"program, {name}") for name in sets]:
        row = [name]
        for kind in ("derivatives", "derivatives stored"):
            time = t[f"{what} {kind}"]
            row += [time, "" if what == "contract" else t[f"contract {kind}"] / time]
        rows.append(row)
    return table(["Gauss, two terms", "ns a point", "times faster", "all stored, ns", "times faster"], rows)


def contract_table(times, formulas, sets):
    chosen = [f for f in formulas if f.exact]
    rows = [["geometric mean of all"] + [geometric_mean(ratio(times[f.name], name) for f in chosen) for name in sets]]
    rows[0][1:1] = [str(len(chosen)), "", ""]
    for f in sorted(chosen, key=lambda f: ratio(times[f.name], sets[-1]))[:10]:
        t = times[f.name]
        rows.append([f.name, str(len(f.parameters)), t["contract derivatives"], t[f"{sets[-1]} derivatives"]] +
                    [ratio(t, name) for name in sets])
    header = ["model", "parameters", "contract, ns", f"{sets[-1]}, ns"] + [f"{name}, times faster" for name in sets]
    return table(header, rows)


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("cpu MHz"):
            return f"{platform.machine()} at {float(line.split(':')[1]) / 1000:.1f} GHz"
    return platform.machine()


def main(bench, reference, folder):
    folder.mkdir(parents=True, exist_ok=True)
    formulas = read_reference(reference)
    longest = sorted(formulas, key=lambda f: -len(f.text))[:LONGEST]
    lines = folder / "formulas.tsv"
    lines.write_text("".join(f.line(f in longest) + "\n" for f in formulas))
    numpy.seterr(all="ignore")
    tasks = []
    for formula in longest:
        if code := numpy_code(formula):
            names = dict(zip(formula.variables + formula.parameters, formula.columns() + formula.values))
            tasks.append((formula, code, {**names, "numpy": numpy, "math": math}))

    times = Times()
    for turn in range(TURNS):
        print(f"turn {turn + 1} of {TURNS}", file=sys.stderr)
        times.run_bench(bench, lines)
        times.time_numpy(tasks)
    lines.unlink()
    for t in times.values():
        if "muparser bulk" in t:
            t["muparser"] = min(t["muparser bulk"], t["muparser calls"])

    sets = [name for name in SETS if f"{name} value" in times["Gauss"]]
    load = f"{os.getloadavg()[1]:.1f}"
    tables = {
        "formula_measurement": table(["measured on one core of", "other work meanwhile (load)"], [[processor(), load]]),
        "formula_peers": peers_table(times, longest, sets),
        "formula_derivatives": derivatives_table(times, longest, sets),
        "formula_gauss": gauss_table(times, sets),
        "formula_contract": contract_table(times, formulas, sets),
    }
    print("\n\n".join(tables.values()))
    (folder / DOCUMENT.name).write_text(renew(DOCUMENT.read_text(), tables))
    whats = [f"{name} {what}" for name in sets for what in ("value", "derivatives", "derivatives stored")]
    whats += ["muparser calls", "muparser bulk", "numpy", "contract derivatives", "contract derivatives stored"]
    with open(folder / "formula_performance.csv", "w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(["formula", "parameters", "characters"] + [f"{what}, ns" for what in whats])
        for f in formulas:
            writer.writerow([f.name, len(f.parameters), len(f.text)] +
                            [f"{times[f.name][what]:.2f}" if what in times[f.name] else "" for what in whats])


if __name__ == "__main__":
    main(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]))
