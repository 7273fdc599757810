"""Compares what a built library really exports and imports with the export list.

usage: export_table.py LIBRARY EXPORT_LIST OBJDUMP_OR_NM
"""

import re
import subprocess
import sys

# What every Windows has; everything else must be inside the DLL.
SYSTEM_DLLS = {"kernel32.dll", "user32.dll", "msvcrt.dll", "ucrtbase.dll"}
# Functions whose errors the contract is about: they may come from nowhere but the Universal C Runtime.
UCRT_ONLY = {"_errno", "acos", "cos", "exp", "expm1", "floor", "log", "pow", "sin", "sqrt", "tanh"}
# All that the ELF library takes from elsewhere: mathematical functions, errno, and snprintf for the diagnostic command.
# No allocation, no lock, no system call.
ELF_IMPORTS = re.compile(r"(acos|atan2|ceil|cos|exp|expm1|floor|frexp|hypot|ldexp|log|log1p|nearbyint|pow|sin|sqrt|tanh)l?"
                         r"|__errno_location|snprintf")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def expected_exports(path):
    rows = [line.split() for line in open(path) if re.match(r"\s*\d", line)]
    return {row[1]: int(row[0]) for row in rows}


def check_elf(library, expected, nm):
    symbols = [line.split() for line in output(nm, "-D", "--defined-only", library).splitlines()]
    exported = {name for _, _, name in symbols}
    assert exported == set(expected), f"exported and listed names differ: {sorted(exported ^ set(expected))}"
    assert all(kind == "T" for _, kind, _ in symbols), "every export is a function"

    imported = {line.split()[1].split("@")[0] for line in output(nm, "-D", "-u", library).splitlines() if " U " in line}
    if not any("san_" in name for name in imported):
        foreign = sorted(name for name in imported if not ELF_IMPORTS.fullmatch(name))
        assert not foreign, f"imports {foreign}"


def check_pe(library, expected, objdump):
    text = output(objdump, "-p", library)
    base = int(re.search(r"Ordinal Base\s+(\d+)", text).group(1))
    names = re.findall(r"^\s+\[\s*(\d+)\] (\w+)$", text[text.index("[Ordinal/Name Pointer]"):], re.M)
    exported = {name: int(index) + base for index, name in names}
    assert exported == expected, f"exports differ: {sorted(set(exported.items()) ^ set(expected.items()))}"
    addresses = re.findall(r"^\s+\[\s*\d+\] \+base\[\s*(\d+)\]", text, re.M)
    assert sorted(map(int, addresses)) == sorted(expected.values()), "nothing is exported by ordinal alone"

    imports = {}
    for section in text.split("DLL Name: ")[1:]:
        lines = section.splitlines()
        imports[lines[0].lower()] = set(re.findall(r"^\s+[0-9a-f]+\s+\d+\s+(\w+)$", section.split("\n\n")[0], re.M))
    assert set(imports) <= SYSTEM_DLLS, f"imports from {sorted(set(imports) - SYSTEM_DLLS)}"
    assert "_errno" in imports["ucrtbase.dll"]
    for dll, functions in imports.items():
        if dll != "ucrtbase.dll":
            assert not functions & UCRT_ONLY, f"{sorted(functions & UCRT_ONLY)} come from {dll}"

    with open(library, "rb") as file:
        assert b"basic_streambuf" not in file.read(), "the stream library is in the DLL: something uses <iostream>"
    for characteristic in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
        assert characteristic in text, f"{characteristic} is not set"
    sections = output(objdump, "-h", library)
    assert ".reloc" in sections, "no relocations: the DLL could not be loaded elsewhere"
    assert ".rsrc" in sections, "no version resource"


def main():
    library, export_list, tool = sys.argv[1:]
    expected = expected_exports(export_list)
    with open(library, "rb") as file:
        windows = file.read(2) == b"MZ"
    (check_pe if windows else check_elf)(library, expected, tool)
    print(f"{len(expected)} exports as listed")


main()
