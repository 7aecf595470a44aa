#!/usr/bin/env python3
"""Compares the exports of a built library with scripts/exports.txt.

    check_exports.py [--objdump OBJDUMP] [--write] LIBRARY

The list has the flat functions, and the classes by their C++ names. It is the same for both systems.
It leaves out the names that only the compiler needs: type information, virtual tables and the
templates of the standard library. --write writes the list anew.
"""

import argparse
import pathlib
import subprocess
import sys

LIST = pathlib.Path(__file__).resolve().parent / "exports.txt"
FLAT_FUNCTIONS = 57
LEFT_OUT = ("typeinfo", "vtable", "guard variable", "non-virtual thunk", "std::", "void std::",
            "__gnu_cxx::", "_end", "_edata", "__bss_start", "_init", "_fini")


def output_of(*command, text=None):
    return subprocess.run(command, check=True, capture_output=True, text=True, input=text).stdout


def symbols(library, objdump):
    if library.endswith(".dll"):
        lines = output_of(objdump, "-p", library).split("[Ordinal/Name Pointer]", 1)[1].splitlines()
        names = [line.split()[-1] for line in lines[1:] if line.strip().startswith("[")]
    else:
        lines = output_of("nm", "-D", "--defined-only", library).splitlines()
        names = [line.split()[-1].split("@")[0] for line in lines]
    demangled = output_of("c++filt", text="\n".join(names)).splitlines()
    # The 64-bit integer has a different name on each system.
    exported = {name.replace("unsigned long long", "unsigned long").replace("ull>", "ul>")
                for name in demangled}
    return {name for name in exported if not name.startswith(LEFT_OUT)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("library")
    arguments = parser.parse_args()
    exported = symbols(arguments.library, arguments.objdump)
    if arguments.write:
        LIST.write_text("\n".join(sorted(exported)) + "\n")
    listed = set(LIST.read_text().splitlines())
    for name in sorted(exported - listed):
        print(f"exported and not listed: {name}")
    for name in sorted(listed - exported):
        print(f"listed and not exported: {name}")
    flat = sum(name.startswith("qlt_") for name in exported)
    print(f"{len(exported)} exports, {flat} of them flat functions")
    sys.exit(exported != listed or flat != FLAT_FUNCTIONS)


if __name__ == "__main__":
    main()
