"""Looks into the object files of the kernels: kernel_objects.py NM OBJDUMP OBJECT...

A function that several files may define is kept once by the linker, perhaps in the copy that needs the newest
processor: so these files define their table and nothing else for others. On Windows, where the stack is aligned to 16
bytes only, no move of a wider vector may insist on alignment.
"""

import re
import subprocess
import sys

nm, objdump, *objects = sys.argv[1:]


def lines(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()


faults = []
for path in objects:
    defined = [line.split() for line in lines(nm, "--defined-only", path)]
    shared = [name for _, kind, name in defined if not (kind.islower() and kind not in "uvw")]
    if len(shared) != 1 or not shared[0].endswith("_kernelsE"):
        faults.append(f"{path} defines {', '.join(shared)}")
    if path.endswith(".obj"):
        aligned = re.compile(r"\bvmov(ap[sd]|dqa(32|64)?)\s.*%[yz]mm")
        faults += [f"{path}: {line}" for line in lines(objdump, "-d", path) if aligned.search(line) and "(" in line]

print("\n".join(faults) or f"{len(objects)} objects in order")
sys.exit(bool(faults))
