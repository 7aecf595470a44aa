#!/usr/bin/env python3
"""Plants one-line faults and counts those that the tests catch; see mutants.sh."""

import argparse
import collections
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLACE = ROOT / "build" / "mutants"
TREE, BUILD = PLACE / "tree", PLACE / "build"
EQUIVALENTS = ROOT / "scripts" / "mutants_equivalent.txt"
TEST_SECONDS = 30  # a fault may make a test hang

# The first folder that fits names the room: its place, its first targets, and the tests that see it
# first. A fault that these miss meets all other tests.
ROOMS = [
    ("src/qlt/Arch/Linux", ["qlt_libusb_tests", "qlt_contract_tests", "qlt_library_tests"],
     "^qlt_(libusb|contract|library)_tests"),
    ("src/qlt/Runtime", ["qlt_runtime_tests"], "^qlt_runtime_tests"),
    ("src/qlt/Math", ["qlt_math_tests"], "^qlt_math_tests"),
    ("src/qlt/Sensors/HostService", ["qlt_host_tests"], "^qlt_host_tests"),
    ("src/qlt/Sensors/Camera", ["qlt_camera_tests"], "^qlt_camera_tests"),
    ("src/qlt/Sensors/Lens", ["qlt_sensors_tests"], "^qlt_sensors_tests"),
    ("src/qlt/Sensors", ["qlt_sensors_tests"], "^qlt_sensors_tests"),
    ("src/qlt/Render", ["qlt_render_tests", "qlt_glsl_tests"], "^qlt_(render|glsl)_tests"),
    ("src/qlt/qlt_c_api", ["qlt_sdk_tests", "qlt_flat_test"], "^(qlt_sdk_tests|flat)"),
    ("include/qlt", ["qlt_math_tests", "qlt_sensors_tests"], "^qlt_(math|sensors)_tests"),
    ("src/qltkit", ["qltkit_tests"], "^qltkit"),
    ("include/qltkit", ["qltkit_tests"], "^qltkit"),
    ("tools/qlt", ["qlt"], "^qlt\\."),
    ("bindings/python", [], "^bindings.python"),
    ("bindings/csharp", [], "^bindings.csharp"),
]
LEFT_OUT = re.compile(r"Arch/Win32|/tests/|Plugins|examples|TrackedCamera|print_orientation")
NEVER_RUN = "^(house|consumer|examples)"

Fault = collections.namedtuple("Fault", "file line rule before after")


def another(number):
    """Near for a small number, which may be an index, and twice as much for others."""
    return str(number + 1 if number < 10 and isinstance(number, int) else 2 * number or 1.0)


# (rule, what it finds, what takes its place). Spaces around an operator tell it from a declarator.
RULES = [
    ("operator", r" \+ ", " - "), ("operator", r" - ", " + "), ("operator", r" \* ", " / "),
    ("operator", r" / ", " * "), ("operator", r" \+= ", " -= "), ("operator", r"\+\+", "--"),
    ("operator", r" << ", " >> "), ("operator", r" & ", " | "), ("operator", r" \| ", " & "),
    ("condition", r" < ", " <= "), ("condition", r" <= ", " < "), ("condition", r" > ", " >= "),
    ("condition", r" >= ", " > "), ("condition", r" == ", " != "), ("condition", r" != ", " == "),
    ("condition", r" && ", " || "), ("condition", r" \|\| ", " && "),
    ("condition", r"\bif \((?!constexpr)(.+)\)$", r"if (!(\1))"),
    ("constant", r"\btrue\b", "false"), ("constant", r"\bfalse\b", "true"),
    ("constant", r"(?<![\w.])(\d+)(?![\w.])", lambda m: another(int(m.group(1)))),
    ("constant", r"(?<![\w.])(\d+\.\d+)(f?)\b", lambda m: another(float(m.group(1))) + m.group(2)),
    ("statement", r"^(\s+)[\w:.>\[\]()*-]+\(.*\);$", r"\1;"),
    ("statement", r"^(\s+)[\w:.>\[\]*-]+ [-+*/|&^<>]*= [^;]*;$", r"\1;"),
    ("arguments", r"\b(\w+\()([\w.]+), ([\w.]+)\)", r"\1\3, \2)"),
]
PYTHON_RULES = [rule for rule in RULES if ";" not in rule[1] and "if \\(" not in rule[1]] + [
    ("condition", r" and ", " or "), ("condition", r" or ", " and "),
    ("condition", r"\bif (.+):$", r"if not (\1):"),
    ("constant", r"\bTrue\b", "False"), ("constant", r"\bFalse\b", "True"),
    ("statement", r"^(\s+)(self\.[\w.]+ = .*|[\w.]+\([^()]*\))$", r"\1pass"),
]
SKIPPED = re.compile(r"^\s*(#|//|/\*|\*|using |static_assert|namespace|template|enum|class |struct |"
                     r"friend|import |from |def |\"\"\"|'''|\[DllImport)|QLT_CHECK|operator")


def room_of(file):
    return next(room for room in ROOMS if file.startswith(room[0]))


def sources():
    listed = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True)
    folders = tuple(room[0] for room in ROOMS)
    return [file for file in listed.stdout.splitlines()
            if file.startswith(folders) and file.endswith((".cpp", ".h", ".py", ".cs"))
            and not LEFT_OUT.search(file)]


def faults_of(file):
    """Every one-line fault of the file, at most one of each rule and line."""
    faults = []
    for number, line in enumerate((ROOT / file).read_text(encoding="utf-8").split("\n"), 1):
        code, comment = re.match(r"((?:[^/\"]|/(?!/)|\"(?:\\.|[^\"\\])*\")*)(.*)$", line).groups()
        if SKIPPED.search(line) or code.count('"') % 2:
            continue
        for rule, found, instead in PYTHON_RULES if file.endswith(".py") else RULES:
            match = re.search(found, code.rstrip())
            if match is None or code[:match.start()].count('"') % 2:
                continue
            if rule == "statement" and (code.count("(") != code.count(")") or file.endswith(".h")):
                continue
            instead = match.expand(instead) if isinstance(instead, str) else instead(match)
            after = code[:match.start()] + instead + code[match.end():] + comment
            if after.rstrip() != line.rstrip():
                faults.append(Fault(file, number, rule, line.strip(), after))
    return faults


def equivalents():
    """{(file, line's text, rule): reason}."""
    if not EQUIVALENTS.exists():
        return {}
    rows = [row.split(" | ") for row in EQUIVALENTS.read_text().splitlines()
            if row and not row.startswith("#")]
    return {(file, text, rule): reason for file, rule, text, reason in rows}


def run(command, seconds=None, cwd=ROOT):
    """Whether the command succeeded in time."""
    try:
        return subprocess.run(command, cwd=cwd, timeout=seconds, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              check=False).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def prepare():
    """Copies the tree, builds it without optimisation, and expects its tests to succeed."""
    TREE.mkdir(parents=True, exist_ok=True)
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True)
    kept = {file for file in listed.stdout.decode().split("\0") if file}
    for file in kept:
        source, copy = ROOT / file, TREE / file
        if not copy.exists() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)
    for copy in [path for path in TREE.rglob("*") if path.is_file()]:
        if str(copy.relative_to(TREE)) not in kept:
            copy.unlink()
    configure = ["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
                 f"-DQLT_RECORDINGS={ROOT.parent / 'shared' / 'recordings'}"]
    if not run(configure) or not build([]):
        sys.exit("mutants.py: the tree does not build")
    if not test("."):
        sys.exit("mutants.py: the tests fail without a fault")


def build(targets):
    return run(["cmake", "--build", BUILD, *(["--target", *targets] if targets else [])])


def test(pattern, without=NEVER_RUN):
    return run(["ctest", "--test-dir", BUILD, "-j2", "-R", pattern, "-E", without, "-LE", "soak|house",
                "--stop-on-failure", "--timeout", str(TEST_SECONDS), "--no-tests=error"])


def plant(fault):
    """'caught', 'survived', or 'invalid' for a fault that does not compile."""
    file = TREE / fault.file
    original = file.read_text(encoding="utf-8")
    lines = original.split("\n")
    lines[fault.line - 1] = fault.after
    _, targets, first = room_of(fault.file)
    try:
        file.write_text("\n".join(lines), encoding="utf-8")
        compiled = not fault.file.endswith((".cpp", ".h"))
        if not compiled and not build(targets):
            return "invalid"
        if not test(first):
            return "caught"
        if compiled or fault.file.startswith("tools/"):
            return "survived"
        if not build([]):
            return "invalid"
        return "survived" if test(".", f"{NEVER_RUN}|{first}") else "caught"
    finally:
        file.write_text(original, encoding="utf-8")


def sample_of(files, count, seed):
    faults = [fault for file in files for fault in faults_of(file)]
    random.Random(seed).shuffle(faults)
    known = equivalents()
    return [fault for fault in faults
            if (fault.file, fault.before, fault.rule) not in known], count


def report(results):
    print(f"\n{'room':32} caught  of  share")
    rooms = collections.defaultdict(list)
    for fault, result in results:
        rooms[room_of(fault.file)[0]].append(result)
        rooms["all"].append(result)
    for room, outcomes in rooms.items():
        caught = outcomes.count("caught")
        print(f"{room:32} {caught:6} {len(outcomes):3} {100 * caught / len(outcomes):5.0f} %")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--sample", type=int, default=200)
    parser.add_argument("--seed", type=int, default=random.randrange(1000000))
    parser.add_argument("--list", action="store_true")
    parser.add_argument("files", nargs="*", metavar="FILE")
    arguments = parser.parse_args()
    faults, wanted = sample_of(arguments.files or sources(), arguments.sample, arguments.seed)
    print(f"{len(faults)} possible faults, {wanted} wanted, seed {arguments.seed}", flush=True)
    if arguments.list:
        for fault in faults[:wanted]:
            print(f"{fault.file}:{fault.line}: {fault.rule}: {fault.after.strip()}")
        return
    prepare()
    results = []
    for fault in faults:
        if len(results) == wanted:
            break
        begin = time.monotonic()
        result = plant(fault)
        if result != "invalid":
            results.append((fault, result))
            print(f"{len(results):3} {result:8} {time.monotonic() - begin:4.0f} s "
                  f"{fault.file}:{fault.line}: {fault.rule}: {fault.after.strip()}", flush=True)
    report(results)


if __name__ == "__main__":
    main()
