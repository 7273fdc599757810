"""Writes seeds for every model: calls for the value, for the derivatives and for both at its reference sample.

usage: model_seeds.py CATALOGUE_ROWS REFERENCE FOLDER
"""

import pathlib
import re
import struct
import sys
import tomllib

FLAGS = {"value": 2, "derivatives": 4, "both": 6}
FEWEST_PARAMETERS = -2  # stands for itself as 0 in a seed


def main():
    rows, reference, folder = map(pathlib.Path, sys.argv[1:])
    names = re.findall(r"^ROW(?:_OF)?\((\w+)", rows.read_text(), re.M)
    samples = {}
    for table in reference.glob("*/*.toml"):
        entries = tomllib.loads(table.read_text())
        samples |= {name: entry["sample"] for name, entry in entries.items() if "sample" in entry}
    folder.mkdir(parents=True, exist_ok=True)
    for index, name in enumerate(names):
        if name not in samples:
            continue
        sample = samples[name]
        x = [sum(sample[axis]) / 2 if axis in sample else 0.0 for axis in "xyz"]
        p = sample["p"]
        for what, flags in FLAGS.items():
            head = struct.pack("<HBBB", index, flags, len(p) - FEWEST_PARAMETERS, 0)
            (folder / f"{name}_{what}").write_bytes(head + struct.pack(f"<{len(x) + len(p)}d", *x, *p))


main()
