#!/usr/bin/env python3
"""Runs the examples as a reader does, and compares them with the README.

    examples_test.py [--emulator "COMMAND"] FOLDER CASE

FOLDER contains the programs. CASE is the name of a program, or "readme".
"""

import argparse
import math
import pathlib
import shlex
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]


def lines_of(program, arguments, *options):
    program = pathlib.Path(arguments.folder, program + (".exe" if arguments.emulator else ""))
    done = subprocess.run([*shlex.split(arguments.emulator), program, *options],
                          capture_output=True, text=True, timeout=60, check=False,
                          stdin=subprocess.DEVNULL)
    assert done.returncode == 0 and not done.stderr, \
        f"the program ended with {done.returncode}: {done.stderr}"
    return done.stdout.splitlines()


def hello_tracker(arguments):
    """A line for each tenth of a second. The simulator turns about x by a radian per second."""
    lines = lines_of("hello_tracker", arguments)
    assert 2 <= len(lines) <= 11, lines  # a sleep of a millisecond may take longer
    for tenth, line in enumerate(lines):
        half = tenth / 20.0
        expected = f"{tenth / 10:.3f} s: {math.cos(half):.4f} {math.sin(half):.4f} 0.0000 0.0000"
        assert line == expected, f"the line is {line} instead of {expected}"


def hello_flat(arguments):
    lines = lines_of("hello_flat", arguments)
    assert len(lines) == 16, lines
    for step, line in enumerate(lines[:10]):
        w, x, y, z = map(float, line.split())
        assert abs(w * w + x * x - 1.0) < 1e-3 and x > 0.05 * step - 1e-4 and y == z == 0.0, line
    corners = ["-1.0 -1.0", "1.0 -1.0", "-1.0 1.0", "1.0 1.0"]
    for index, line in zip([0, 2, 1, 2, 1, 3], lines[10:]):
        assert line.startswith(f"{index}: {corners[index]} "), line


def hello_kit(arguments):
    """The head turns by 90 degrees to the left within the second, from rest to rest."""
    script = pathlib.Path(arguments.folder, "hello_kit.json")
    script.write_text('{"motion": {"kind": "angles", "points": [{"at": 0}, {"at": 1, "yaw": 90}]}}')
    lines = lines_of("hello_kit", arguments, script)
    assert 5 <= len(lines) <= 10, lines  # a busy machine loses reports
    rows = [[float(number) for number in line.replace(" s:", "").split()] for line in lines]
    assert rows == sorted(rows, key=lambda row: (row[0], row[3])) and rows[-1][3] > 0.6, lines
    for _, w, x, y, z in rows:
        assert abs(w * w + y * y - 1.0) < 0.005 and abs(x) < 0.01 and abs(z) < 0.01, lines


def readme(_):
    program = (ROOT / "examples/hello_tracker.cpp").read_text(encoding="utf-8")
    shown = (ROOT / "README.md").read_text(encoding="utf-8")
    assert f"```cpp\n{program}```\n" in shown, "the README must show hello_tracker.cpp unchanged"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--emulator", default="")
    parser.add_argument("folder")
    cases = {case.__name__: case for case in (hello_tracker, hello_flat, hello_kit, readme)}
    parser.add_argument("case", choices=cases)
    arguments = parser.parse_args()
    cases[arguments.case](arguments)


if __name__ == "__main__":
    main()
