#!/usr/bin/env python3
"""Compares the exports of a built library with scripts/exports.txt, or with the headers of the kit.

    check_exports.py [--objdump OBJDUMP] [--write | --kit] LIBRARY

The list has the flat functions, and the classes by their C++ names. It is the same for both systems.
It leaves out the names that only the compiler needs: type information, virtual tables and the
templates of the standard library. --write writes the list anew.

--kit checks QueltaKit, which still grows: it exports exactly the functions of qltkit_c_api.h, and
besides them only what its public headers declare.
"""

import argparse
import pathlib
import re
import subprocess
import sys

LIST = pathlib.Path(__file__).resolve().parent / "exports.txt"
KIT_HEADERS = LIST.parents[1] / "include/qltkit"
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


def faults_of_kit(exported):
    """Returns sentences about exports that differ from the headers of the kit."""
    headers = {file.name: file.read_text() for file in KIT_HEADERS.rglob("*.h")}
    flat = set(re.findall(r"\b(qltkit_\w+)\(", headers["qltkit_c_api.h"]))
    text = "\n".join(headers.values())
    declared = set(re.findall(r"(?:class|struct) QLTKIT_API (\w+)", text))
    declared |= set(re.findall(r"QLTKIT_API [^;{(]*\b(\w+)\(", text))
    found = {name for name in exported if name.startswith("qltkit_")}
    return [f"declared and not exported: {name}" for name in sorted(flat - found)] + [
        f"exported and not declared: {name}" for name in sorted(exported - flat)
        if "std::__detail" not in name  # every library contains its functions, which are weak
        and not set(re.findall(r"\bqltkit::(\w+)", name)[:1]) & declared]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--kit", action="store_true")
    parser.add_argument("library")
    arguments = parser.parse_args()
    exported = symbols(arguments.library, arguments.objdump)
    if arguments.kit:
        faults = faults_of_kit(exported)
        print("\n".join([*faults, f"{len(exported)} exports, {len(faults)} faults"]))
        sys.exit(bool(faults))
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
