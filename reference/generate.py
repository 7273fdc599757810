"""Makes the C++ tables of the reference: generate.py REFERENCE MODELS OUTPUT

Refuses, naming file, model and key: keys that it does not know, and tables that do not mirror the files of models. A
second name of a model stands beside it. Which formulas do not give the library's values stands in disagreement.txt.
"""

import json
import pathlib
import re
import sys
import tomllib


# The kinds of parameters, as the tables write them; their enumerators of Kind say "reversed_" for the sign.
KINDS = ("position", "-position", "abscissa", "width", "period", "scale", "rate", "level", "amplitude", "area", "slope",
         "coefficient", "exponent", "shape", "fraction", "angle", "base", "logarithm", "given")


def number(value):
    return repr(float(value)).replace("inf", "infinity")


def boolean(value):
    return {True: "true", False: "false"}[value]


def text(value):
    if not isinstance(value, str):
        raise TypeError("is no text")
    return json.dumps(value, ensure_ascii=False)


def array(element_type, items):
    """The type and the elements of an array that the entry refers to; an element of several members is a tuple."""
    return element_type, ["{" + ", ".join(item) + "}" if isinstance(item, tuple) else item for item in items]


def kind(word):
    if word not in KINDS:
        raise ValueError(f"unknown kind {word}")
    return "Kind::" + word.replace("-", "reversed_")


def bounds(limits):
    """Low and high of "> 0" or "0 to 1"."""
    match = re.fullmatch(r"> (\S+)|(\S+) to (\S+)", limits)
    try:
        low, high = (match[1], "inf") if match[1] else match.group(2, 3)
        low, high = float(low), float(high)
    except (TypeError, ValueError):
        raise ValueError(f"malformed range {limits}") from None
    if not low < high:
        raise ValueError(f"empty range {limits}")
    return f"{{{number(low)}, {number(high)}}}"


def parameter(name, meaning, unit, kind_word, *limits):
    try:
        return (text(name), text(meaning), text(unit), kind(kind_word), *map(bounds, limits))
    except ValueError as error:
        raise ValueError(f"{name}: {error}") from None


def parameters(entries):
    for entry in entries:
        if not 4 <= len(entry) <= 5:
            raise ValueError(f"{entry} is not name, meaning, unit, kind and perhaps a range")
    return array("ParameterReference", [parameter(*entry) for entry in entries])


def derivatives(value):
    if value != "none":
        raise ValueError('can only be "none"')
    return "false"


def choice(enumeration, words):
    return lambda value: f"{enumeration}::{words[value]}"


# What becomes of each key, in the order of the members of ModelReference: a value, or the elements of an array.
KEYS = {
    "title": text,
    "formula": text,
    "second": text,
    "term": text,
    "domain": text,
    "source": text,
    "parameters": parameters,
    "repeated": parameters,
    "units": lambda units: array("UnitReference", [tuple(map(text, item)) for item in units.items()]),
    "units_why": text,
    "shifts": lambda variables: array("std::string_view", map(text, variables)),
    "fwhm": text,
    "fwhm_second": text,
    "fwhm_approximate": boolean,
    "inexact": lambda pairs: array("InexactReference", [(str(int(entry)), text(holds)) for entry, holds in pairs]),
    "contributions": boolean,
    "linear": boolean,
    "derivatives": derivatives,
    "placeholder": boolean,
    "export_only": boolean,
    "implicit": boolean,
    "term_limit": lambda count: str(int(count)),
    "tolerance": number,
    "beyond": lambda value: str(int(value)),
    "init": choice("InitCalls", {
        "answers 0": "answers_0", "evaluates": "evaluates", "tests for errors": "tests_for_errors"}),
    "query": choice("Queries", {"status": "status", "mask": "mask"}),
    "both": choice("BothSteps", {
        "value alone": "value_alone", "one step": "one_step", "may end with the value": "may_end_with_value",
        "tests another width": "tests_another_width"}),
    "formula_agrees": boolean,
    "sample_parameters": lambda values: array("double", map(number, values)),
    "sample_ranges": lambda ranges: array("RangeReference", [tuple(map(number, pair)) for pair in ranges]),
}
AXES = ("x", "y", "z")


def flat(entry):
    """The entry with its sample taken apart."""
    entry = dict(entry)
    sample = dict(entry.pop("sample", {}))
    if sample:
        entry["sample_parameters"] = sample.pop("p")
        entry["sample_ranges"] = [sample.pop(axis) for axis in AXES if axis in sample]
    return entry | {f"sample.{key}": value for key, value in sample.items()}


def cpp_entry(where, name, entry):
    """The arrays of an entry, and its initialiser."""
    entry = flat(entry)
    for key in entry:
        if key not in KEYS:
            sys.exit(f"{where}: {name}: unknown key {key}")
    arrays, members = [], [f".name = {text(name)}"]
    for key, convert in KEYS.items():
        if key not in entry:
            continue
        try:
            value = convert(entry[key])
        except (KeyError, TypeError, ValueError) as error:
            sys.exit(f"{where}: {name}: {key}: {error}")
        if isinstance(value, tuple):
            element_type, items = value
            if not items:
                continue
            value = f"{name}_{key}"
            arrays.append(f"constexpr {element_type} {value}[] = {{{', '.join(items)}}};")
        members.append(f".{key} = {value}")
    return arrays, "    {" + ",\n     ".join(members) + "},"


def read(reference, models):
    """Name, file and table of all entries."""
    files = {}
    for source in sorted(models.glob("*/*.cpp")):
        file = reference / source.relative_to(models).with_suffix(".toml")
        files |= {name: file for name in re.findall(r"^MODEL\((\w+)\)", source.read_text(), re.M)}
    entries = {}
    for file in sorted(reference.glob("*/*.toml")):
        if file not in files.values():
            sys.exit(f"{file}: there is no such file of models")
        for name, entry in tomllib.loads(file.read_text()).items():
            if files.get(name, file) != file:
                sys.exit(f"{file}: {name} belongs into {files[name]}")
            entries[name] = (file, entry)
    for name, file in files.items():
        if name not in entries:
            sys.exit(f"{file}: no entry for {name}")
    return sorted(((name, *entry) for name, entry in entries.items()), key=lambda entry: entry[0].lower())


def disagreeing(reference, names):
    """The models whose formula does not give the library's value; all are to be known."""
    file = reference / "disagreement.txt"
    listed = {line.split()[0] for line in file.read_text().splitlines() if line and not line.startswith("#")}
    if unknown := listed - set(names):
        sys.exit(f"{file}: there is no {', '.join(sorted(unknown))}")
    return listed


def main():
    reference, models, output = map(pathlib.Path, sys.argv[1:])
    arrays, initialisers = [], []
    entries = read(reference, models)
    disagree = disagreeing(reference, [name for name, _, _ in entries])
    for name, file, entry in entries:
        if name in disagree:
            entry = entry | {"formula_agrees": False}
        own_arrays, initialiser = cpp_entry(file, name, entry)
        arrays += own_arrays
        initialisers.append(initialiser)
    words = [f"        case {kind(word)}: return {text(word)};" for word in KINDS]
    lines = ["// Made from reference/*/*.toml.", "", '#include "reference/reference.h"', "",
             "namespace curvebank::reference {", "namespace {", "",
             "constexpr double infinity = std::numeric_limits<double>::infinity();", "", *arrays, "",
             "constexpr ModelReference entries[] = {", *initialisers, "};", "", "}  // namespace", "",
             "const std::span<const ModelReference> models = entries;", "",
             "std::string_view word(Kind kind)", "{", "    switch (kind) {", *words, "    }", '    return "";', "}", "",
             "}  // namespace curvebank::reference", ""]
    output.write_text("\n".join(lines))


if __name__ == "__main__":
    main()
