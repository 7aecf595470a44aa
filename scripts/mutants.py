#!/usr/bin/env python3
"""Plants one-line faults and counts those that the tests catch; see mutants.sh."""

import argparse
import collections
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLACE = ROOT / "build" / "mutants"
TREE = PLACE / "tree"
EQUIVALENTS = ROOT / "scripts" / "mutants_equivalent.txt"
TEST_SECONDS = 40  # a fault may make a test hang

BINDINGS = ["QueltaSDK", "vr_host_client_lib", "qlt_scripted_sdk"]

# The first folder that fits is the room of a file. Each stage of a room has the targets to build and
# the tests to run. The second stage runs for the faults that the first one misses. A pattern matches
# only tests of its own targets, because another program may still contain an earlier fault.
ROOMS = [
    ("src/qlt/Arch/Linux",
     (["qlt_libusb_tests", "qlt_contract_tests", "qlt_library_tests"],
      "^qlt_(libusb|contract|library)_tests")),
    ("src/qlt/Runtime",
     (["qlt_runtime_tests"], "^qlt_runtime_tests"),
     (["qlt_sensors_tests", "qlt_camera_tests", "qlt_sdk_tests", "qlt_host_tests"],
      "^qlt_(sensors_tests.Hmd|camera_tests|sdk_tests|host_tests)")),
    ("src/qlt/Math",
     (["qlt_math_tests"], "^qlt_math_tests"),
     (["qlt_sensors_tests"], "^qlt_sensors_tests.*(Fusion|Distortion|Tracker|Report)")),
    ("src/qlt/Sensors/HostService", (["qlt_host_tests"], "^qlt_host_tests")),
    ("src/qlt/Sensors/Camera",
     (["qlt_camera_tests"], "^qlt_camera_tests"),
     (["qlt_libusb_tests"], "^qlt_libusb_tests.CameraFrames")),
    ("src/qlt/Sensors/Lens",
     (["qlt_sensors_tests"], "^qlt_sensors_tests.*(Distortion|Spline|Matrix|Params)"),
     (["qlt_render_tests", "qlt_flat_test"], "^(qlt_render_tests|flat)")),
    ("src/qlt/Sensors",
     (["qlt_sensors_tests"], "^qlt_sensors_tests"),
     (["qlt_host_tests", "qlt_libusb_tests", "qlt_sdk_tests"],
      "^qlt_(host_tests.ObjectPose|libusb_tests.*Hmd|sdk_tests)")),
    ("src/qlt/Render",
     (["qlt_render_tests", "qlt_glsl_tests", "qlt_sdk_tests"],
      "^qlt_(render|glsl)_tests|^qlt_sdk_tests.Nvidia")),
    ("src/qlt/qlt_c_api",
     (["qlt_sdk_tests", "qlt_flat_test", "qlt_sensors_tests", "qlt_host_tests"],
      "^(qlt_sdk_tests|flat|qlt_sensors_tests.Tracker|qlt_host_tests.ObjectPose)"),
     (["qlt_camera_tests", "qlt_libusb_tests", *BINDINGS],
      "^(qlt_camera_tests|qlt_libusb_tests.Camera|bindings)")),
    ("include/qlt",
     (["qlt_math_tests", "qlt_sensors_tests"], "^qlt_(math|sensors)_tests"),
     (["qlt_host_tests", "qlt_render_tests"], "^qlt_(host|render)_tests")),
    ("src/qltkit/Capture",
     (["qltkit_tests"], "^qltkit"),
     (["qlt", "qlt_capture_probe"], "^(qlt\\.(replay|monitor|record|real|an_older|a_f|pipes)|capture)")),
    ("src/qltkit/Headset",
     (["qltkit_tests"], "^qltkit"),
     (["qlt"], "^qlt\\.(replay|monitor|view|a_seed|script|the_command)")),
    ("src/qltkit", (["qltkit_tests"], "^qltkit")),
    ("include/qltkit", (["qltkit_tests"], "^qltkit")),
    ("tools/qlt/commands/OpenXr",
     (["qlt", "quelta_openxr", "hello_openxr", "qlt_vid_mode"], "^openxr.programs")),
    ("tools/qlt/source",
     (["qlt_tools_tests"], "^qlt_tools_tests"),
     (["qlt"], "^qlt\\.")),
    ("tools/qlt/Arch/Linux/source",
     (["qlt_tools_tests"], "^qlt_tools_tests"),
     (["qlt"], "^qlt\\.")),
    ("tools/qlt/view",
     (["qlt_glsl_tests"], "^qlt_glsl_tests"),
     (["qlt"], "^qlt\\.view")),
    ("tools/qlt", (["qlt"], "^qlt\\.")),
    ("bindings/python", (BINDINGS, "^bindings.python")),
    ("bindings/csharp", (BINDINGS, "^bindings.csharp")),
]
WINDOWS_ROOMS = [
    ("src/qlt/Arch/Win32/Render", (["qlt_direct_mode_tests"], "^qlt_direct_mode_tests")),
    ("src/qlt/Arch/Win32",
     (["qlt_virtual_headset_tests", "qlt_contract_tests", "qlt_library_tests"],
      "^qlt_(contract|library|virtual_headset)_tests")),
]
LEFT_OUT = re.compile(r"/tests/|Plugins|examples|TrackedCamera|print_orientation|CompileHlsl|\.in$")
NEVER_RUN = "^(house|consumer|examples)|AThousandFrames|GivesUpAfterTenSeconds"

Fault = collections.namedtuple("Fault", "file line rule after")


def another(number):
    """Returns the next number for a small integer, which may be an index, and twice any other number."""
    return str(number + 1 if number < 10 and isinstance(number, int) else 2 * number or 1.0)


# Each entry has the name of the rule, the pattern that it finds, and the replacement. The spaces
# around an operator distinguish it from a declarator.
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
    ("statement", r"^(\s+)return (?!false|nullptr|0;|std::nullopt)[^;{]+;$", r"\1return {};"),
    ("condition", r" \? ([^:?]+) : ([^:?;]+);$", r" ? \2 : \1;"),
    ("arguments", r"\b(\w+\()([\w.]+), ([\w.]+)\)", r"\1\3, \2)"),
    ("arguments", r"(\w\((?:.*, )?)(?!nullptr|false)[a-z]\w*\)(?=[);])", r"\1{})"),
    ("neighbour", r"\bx\(\)", "y()"), ("neighbour", r"\by\(\)", "z()"),
    ("neighbour", r"\bmX\b", "mY"), ("neighbour", r"_(LEFT|GL|RED|X)\b",
     lambda m: {"LEFT": "_RIGHT", "GL": "_D3D", "RED": "_BLUE", "X": "_Y"}[m.group(1)]),
    ("neighbour", r"Texture([RGB])\(", lambda m: f"Texture{'GBR'['RGB'.index(m.group(1))]}("),
    ("neighbour", r"Get(Num)?Vertices\(", "GetNumIndices("),
]
PYTHON_RULES = [rule for rule in RULES if ";" not in rule[1] and "if \\(" not in rule[1]] + [
    ("condition", r" and ", " or "), ("condition", r" or ", " and "),
    ("condition", r"\bif (.+):$", r"if not (\1):"),
    ("constant", r"\bTrue\b", "False"), ("constant", r"\bFalse\b", "True"),
    ("statement", r"^(\s+)(self\.[\w.]+ = .*|[\w.]+\([^()]*\))$", r"\1pass"),
]
SKIPPED = re.compile(r"^\s*(#|//|/\*|\*[ /]|using |static_assert|namespace|template|enum|class |struct |"
                     r"friend|import |from |def |\"\"\"|'''|\[DllImport)|QLT_CHECK|operator|\.reserve\(")


def room_of(file):
    return next(room for room in WINDOWS_ROOMS + ROOMS if file.startswith(room[0]))


def sources(windows):
    listed = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True)
    folders = tuple(room[0] for room in (WINDOWS_ROOMS if windows else ROOMS))
    return [file for file in listed.stdout.splitlines()
            if file.startswith(folders) and file.endswith((".cpp", ".h", ".py", ".cs"))
            and not LEFT_OUT.search(file) and windows == ("Arch/Win32" in file)]


def faults_of(file):
    """Returns the one-line faults of the file, at most one for each rule on each line."""
    faults = []
    text = (ROOT / file).read_text(encoding="utf-8")
    # A docstring keeps its lines and loses their contents.
    text = re.sub(r'"""(?:.|\n)*?"""', lambda m: "\n" * m.group().count("\n"), text)
    for number, line in enumerate(text.split("\n"), 1):
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
                faults.append(Fault(file, number, rule, after))
    return faults


def equivalents():
    """Returns {(file, the line with its fault, rule): reason}."""
    if not EQUIVALENTS.exists():
        return {}
    rows = [row.split(" | ") for row in EQUIVALENTS.read_text().splitlines()
            if row and not row.startswith("#")]
    return {(file, text, rule): reason for file, rule, text, reason in rows}


def run(command, seconds=None):
    """Returns True when the command succeeded in time."""
    try:
        return subprocess.run(command, timeout=seconds, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              check=False).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def copy_tree():
    TREE.mkdir(parents=True, exist_ok=True)
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True)
    kept = {file for file in listed.stdout.decode().split("\0") if (ROOT / file).is_file()}
    for file in kept:
        source, copy = ROOT / file, TREE / file
        if not copy.exists() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)
    for copy in [path for path in TREE.rglob("*") if path.is_file()]:
        if str(copy.relative_to(TREE)) not in kept:
            copy.unlink()


class Builder:
    """A build of the copied tree, for this system or with Wine for Windows."""

    def __init__(self, windows):
        self.build_folder = PLACE / ("windows" if windows else "build")
        self.around = [ROOT / "scripts/with-wine.sh"] if windows else []
        self.system = [f"-DCMAKE_TOOLCHAIN_FILE={TREE}/cmake/toolchain-mingw.cmake"] if windows else []
        self.sound = set()  # the test patterns that are known to pass without a fault
        self.seconds = {}  # {test: its duration when it first ran}
        self.left_out = []  # patterns of tests that fail without a fault

    def configure(self):
        # Sources of third parties lie under build, which the copy does not have.
        (TREE / "build").mkdir(exist_ok=True)
        if (ROOT / "build/sources").exists() and not (TREE / "build/sources").exists():
            (TREE / "build/sources").symlink_to(ROOT / "build/sources")
        return run(["cmake", "-S", TREE, "-B", self.build_folder, "-G", "Ninja", *self.system,
                    "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
                    f"-DQLT_TEST_SECONDS={TEST_SECONDS}",
                    f"-DQLT_RECORDINGS={ROOT.parent / 'shared' / 'recordings'}"])

    def build(self, targets):
        return run(["cmake", "--build", self.build_folder, "-j2", "--target", *targets])

    def package_compiles(self):
        """The test of the C# package compiles it, too, and would take an error for a caught fault."""
        return run(["mcs", "-nologo", "-langversion:7.2", "-warn:4", "-warnaserror+", "-target:library",
                    f"-out:{PLACE}/package.dll", *(TREE / "bindings/csharp/Runtime").glob("*.cs")])

    def test(self, pattern):
        self.order_tests()
        return run([*self.around, "ctest", "--test-dir", self.build_folder, "-j2", "-R", pattern,
                    "-E", "|".join([NEVER_RUN, *self.left_out]), "-LE", "soak|house", "--stop-on-failure",
                    "--no-tests=error"])

    def order_tests(self):
        """Makes ctest begin with the quickest tests, because it stops at the first failure. ctest begins
        with those that have the highest cost in its notes, which are the seconds of earlier runs."""
        notes = self.build_folder / "Testing/Temporary/CTestCostData.txt"
        if notes.exists():
            for name, cost in re.findall(r"^(\S+) \d+ (\S+)$", notes.read_text(), re.MULTILINE):
                # A cost above 500 is a mark of an earlier call.
                self.seconds.setdefault(name, float(cost) % 500.0)
            notes.write_text("".join(f"{name} 1 {999.0 - seconds % 499.0}\n"
                                     for name, seconds in self.seconds.items()) + "---\n")

    def passes(self, targets, pattern):
        """Returns True when the tests pass on the unchanged tree, and None when it does not compile."""
        return self.test(pattern) if self.build(targets) else None

    def expect_sound(self, targets, pattern):
        """Leaves out a test that fails without a fault, for example on a busy machine. Ends the program
        when the tests do not build, or when more than three fail."""
        if pattern in self.sound:
            return
        passed = self.passes(targets, pattern)
        while passed is False and len(self.left_out) < 3:
            failed = (self.build_folder / "Testing/Temporary/LastTestsFailed.log").read_text()
            self.left_out += [re.escape(line.split(":", 1)[1]) for line in failed.splitlines()]
            print("left out, because it fails without a fault:", *self.left_out[-1:], flush=True)
            passed = self.test(pattern)
        if not passed:
            sys.exit(f"mutants.py: without a fault, {pattern} does not build or fails")
        self.sound.add(pattern)

    def plant(self, fault):
        """Returns 'caught', 'survived', or 'invalid' for a fault that does not compile."""
        file = TREE / fault.file
        original = file.read_text(encoding="utf-8")
        for stage in room_of(fault.file)[1:]:
            self.expect_sound(*stage)
            lines = original.split("\n")
            lines[fault.line - 1] = fault.after
            try:
                file.write_text("\n".join(lines), encoding="utf-8")
                valid = not fault.file.endswith(".cs") or self.package_compiles()
                passed = self.passes(*stage) if valid else None
            finally:
                file.write_text(original, encoding="utf-8")
            if not passed:
                return "invalid" if passed is None else "caught"
        return "survived"


def sample_of(files, seed):
    known = equivalents()
    faults = [fault for file in files for fault in faults_of(file)
              if (fault.file, fault.after.strip(), fault.rule) not in known]
    random.Random(seed).shuffle(faults)
    return faults


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
    parser.add_argument("--windows", action="store_true", help="the Windows wings, with Wine")
    parser.add_argument("files", nargs="*", metavar="FILE")
    arguments = parser.parse_args()
    faults = sample_of(arguments.files or sources(arguments.windows), arguments.seed)
    print(f"{len(faults)} possible faults, {arguments.sample} wanted, seed {arguments.seed}",
          flush=True)
    if arguments.list:
        for fault in faults[:arguments.sample]:
            print(f"{fault.file}:{fault.line}: {fault.rule}: {fault.after.strip()}")
        return
    copy_tree()
    os.environ["CCACHE_DISABLE"] = "1"  # a cache may give the object from before a fault
    builder = Builder(arguments.windows)
    if not builder.configure():
        sys.exit("mutants.py: the tree cannot be configured")
    results = []
    for fault in faults:
        if len(results) == arguments.sample:
            break
        begin = time.monotonic()
        result = builder.plant(fault)
        if result != "invalid":
            results.append((fault, result))
            print(f"{len(results):3} {result:8} {time.monotonic() - begin:4.0f} s "
                  f"{fault.file}:{fault.line}: {fault.rule}: {fault.after.strip()}", flush=True)
    report(results)


if __name__ == "__main__":
    main()
