#!/usr/bin/env python3
"""Checks what the built libraries show to the outside.

check_exports.py DEF LIBRARY...   (.so and .dll)

Each exports exactly the names of the module definition, a .so those above its line `; Windows only`. A DLL needs no
other DLL than Windows' own, and moves no 32- or 64-byte vector as an aligned one at a stack address: the stack of
Windows is aligned to 16 bytes only. None uses AVX-VNNI: Highway has it named for a target that it also chooses where a
processor lacks it.
"""
import re
import subprocess
import sys

WINDOWS_OWN = {"kernel32.dll", "msvcrt.dll", "user32.dll"}
PREFIX = "x86_64-w64-mingw32-"


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def exports_of_so(path):
    return {line.split()[-1] for line in output_of("nm", "-D", "--defined-only", path).splitlines()}


def exports_of_dll(dump):
    table = dump.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    return set(re.findall(r"\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\w+\s+)?(\w+)", table))


def code_of(path):
    return output_of(PREFIX + "objdump", "-d", "--no-show-raw-insn", path).splitlines()


def aligned_stack_moves(code):
    move = re.compile(r"\bvmov(?:aps|apd|dqa(?:32|64)?)\b.*%[yz]mm")
    stack = re.compile(r"\(%r[sb]p\b")
    return [line.strip() for line in code if move.search(line) and stack.search(line)]


def names_of(definition):
    """The names of every system, and those of Windows."""
    with open(definition, encoding="ascii") as text:
        parts = text.read().split("; Windows only\n")
    common, windows_only = ({line.strip() for line in part.splitlines() if line.startswith("    ")} for part in parts)
    return common, common | windows_only


def faults_of(path, common, of_windows):
    wanted = of_windows if path.endswith(".dll") else common
    code = code_of(path)
    for line in code:
        if "{vex} vpdp" in line:
            yield f"AVX-VNNI: {line.strip()}"
    if not path.endswith(".dll"):
        exported = exports_of_so(path)
    else:
        dump = output_of(PREFIX + "objdump", "-p", path)
        exported = exports_of_dll(dump)
        for name in re.findall(r"DLL Name: (\S+)", dump):
            if name.lower() not in WINDOWS_OWN:
                yield f"needs {name}"
        for line in aligned_stack_moves(code):
            yield f"aligned vector move on the stack: {line}"
    for name in sorted(wanted ^ exported):
        yield f"{'lacks' if name in wanted else 'exports too'}: {name}"


def main(definition, *libraries):
    names = names_of(definition)
    faults = [f"{path}: {fault}" for path in libraries for fault in faults_of(path, *names)]
    print("\n".join(faults) if faults else f"{len(names[1])} names: {len(libraries)} libraries export what they should")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
