#!/usr/bin/env python3
"""Checks which file includes which, and where code may ask for the system.

    scripts/check_rooms.py [TREE]         prints FILE:LINE: MESSAGE for each violation, then exits 1
    scripts/check_rooms.py --self-test    breaks each rule in a small tree and expects the message

A room is a folder of a library. The core has rooms in include/qlt and src/qlt, the kit in
include/qltkit and src/qltkit, and the OpenXR runtime in src/openxr. A room may have sub-rooms. The
public header of a sub-room stays in the folder of the room; it belongs to the sub-room that has the
source of the same name.

The wing of a room for one system is src/LIBRARY/Arch/SYSTEM/ROOM. Tools, tests and benchmarks may have
wings in any folder called Arch. Only a wing includes its own headers. A library sees only the public
headers of the libraries below it.
"""

import pathlib
import re
import sys
import tempfile
import unittest

# The lowest room stands first. A room includes itself and the rooms before it.
ROOMS = {
    "qlt": ["Runtime", "Math", "Sensors/Lens", "Sensors/HostService", "Sensors", "Sensors/Headset",
            "Sensors/Camera", "Render", "qlt_c_api"],
    "qltkit": ["Capture", "Headset", "Tracking", "Diagnosis", "qltkit_c_api"],
    "openxr": ["Setup", "State", "Optics", "Tracking", "Graphics", "Compositor", "Settings", "Api"],
}
LIBRARIES = list(ROOMS)  # lowest first, too

# Users include headers of these libraries as <LIBRARY/...>. The OpenXR runtime has no public header;
# <openxr/...> belongs to the registry.
WITH_HEADERS = ("qlt", "qltkit")

# The trees with C or C++ files, and the third-party headers that each may include. The entry of a
# folder replaces the entry of the tree that it is in.
TREES = {
    "include": (),
    "src": ("GL/glew.h",),
    "src/qltkit": ("nlohmann/",),
    "src/openxr": ("openxr/", "GL/glcorearb.h", "nlohmann/", "generated/"),
    "tests/openxr": ("openxr/", "generated/", "gtest/", "GL/glcorearb.h"),
    "tools": ("CLI/", "nlohmann/", "stb/", "GL/glew.h", "GLFW/"),
    "bench": ("benchmark/", "openxr/"),
    "examples": ("openxr/", "GLFW/"),
    "tests": ("gtest/", "GL/glew.h"),
}

# The folders in which to look for an #include "...", after the folder of the including file.
INCLUDE_FOLDERS = ("src/qlt", "src/qltkit", "src/openxr", "include", "tests", "tools/qlt", "bench")

STANDARD_LIBRARY = set("""
    algorithm any array atomic bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
    climits clocale cmath codecvt complex condition_variable csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem
    forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream
    iterator limits list locale map memory memory_resource mutex new numeric optional ostream queue
    random ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf string
    string_view strstream system_error thread tuple type_traits typeindex typeinfo unordered_map
    unordered_set utility valarray variant vector
    math.h stdbool.h stddef.h stdint.h stdio.h
    emmintrin.h
""".split())  # C headers are for the flat interface; SSE2 belongs to the processor on every system

SYSTEM_MACRO = re.compile(
    r"\b(_?_?WIN(32|64)(__)?|_?_?linux(__)?|_?_?unix(__)?|__APPLE__|__ANDROID__|__CYGWIN__|"
    r"__MINGW(32|64)__|__FreeBSD__|_MSC_VER|_POSIX_\w+)\b")

UMBRELLAS = [f"include/{library}/{library}.h" for library in LIBRARIES]

FRIEND = re.compile(r"\bfriend\s+(?:class|struct)\s+(?:\w+::)*(\w+)")

# Raw strings, comments, and the literals that could hide the beginning of either.
TOKENS = re.compile(
    r'R"([^(\s]*)\(.*?\)\1"|//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|' r"'(?:\\.|[^'\\\n])'",
    re.DOTALL)


def without_comments(text):
    """Returns the text without comments and raw strings. Line numbers stay the same."""
    def blank(match):
        token = match.group(0)
        return "\n" * token.count("\n") if token.startswith(("R", "/")) else token
    return TOKENS.sub(blank, text)


def library_of(path):
    """Returns the library's place in LIBRARIES, or None for a file outside of the libraries."""
    parts = path.split("/")
    named = len(parts) > 2 and parts[0] in ("include", "src") and parts[1] in LIBRARIES
    return LIBRARIES.index(parts[1]) if named else None


def third_parties_of(path):
    folder = "/".join(path.split("/")[:2])
    return TREES.get(folder, TREES[path.split("/")[0]]) or ("\0",)


def wing_of(path):
    """Returns the folder .../Arch/SYSTEM that the file is in, or None outside of a wing."""
    match = re.match(r"(?:.*/)?Arch/[^/]+/", path)
    return match and match.group(0)


class House:
    """The files of a tree, their includes, and the violations that were found."""

    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.files = sorted(
            file.relative_to(self.root).as_posix() for tree in TREES if "/" not in tree
            for file in (self.root / tree).rglob("*") if file.suffix in (".h", ".c", ".cpp"))
        self.known = set(self.files)
        self.includes = {}  # file -> [(line, included file of the tree)]
        self.violations = []

    def check(self):
        for file in self.files:
            self.check_file(file)
        self.check_cycles()
        for umbrella in UMBRELLAS:
            self.check_umbrella(umbrella)
        return self.violations

    def room_of(self, path):
        """Returns the places of the library and of its room, or None outside of the libraries. A file
        below all rooms has the room -1. The umbrella header has a room past the last one."""
        library = library_of(path)
        if library is None:
            return None
        rooms = ROOMS[LIBRARIES[library]]
        if path in UMBRELLAS:
            return library, len(rooms)
        parts = path.split("/")
        inner = parts[4:] if parts[2] == "Arch" else parts[2:]
        name = "/".join(inner[:-1]) or inner[0].split(".")[0]
        if path.startswith("include/"):
            name = self.sub_room_of(path, name, rooms)
        return library, rooms.index(name) if name in rooms else -1

    def sub_room_of(self, header, room, rooms):
        library, stem = header.split("/")[1], pathlib.PurePosixPath(header).stem
        for name in rooms:
            if name.startswith(room + "/") and f"src/{library}/{name}/{stem}.cpp" in self.known:
                return name
        return room

    def report(self, file, line, message):
        self.violations.append(f"{file}:{line}: {message}")

    def check_file(self, file):
        self.includes[file] = []
        text = without_comments((self.root / file).read_text(encoding="utf-8"))
        first = True
        for number, line in enumerate(text.split("\n"), 1):
            condition = re.match(r"\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)", line)
            if condition and SYSTEM_MACRO.search(condition.group(1)):
                self.check_condition(file, number)
            self.check_friend(file, number, line)
            include = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if include:
                self.check_include(file, number, *include.groups(), first)
                first = False

    def check_condition(self, file, number):
        if "/Arch/" not in file and file not in ("include/qlt/Export.h", "include/qltkit/Export.h"):
            self.report(file, number, "asks for the system outside of a wing")

    def check_friend(self, file, number, line):
        friend = FRIEND.search(line)
        own = self.room_of(file)
        if friend is None or own is None:
            return
        for room in self.rooms_with(friend.group(1)):
            if room > own:
                self.report(file, number, f"has the friend {friend.group(1)} in a room above")

    def rooms_with(self, name):
        """Returns the rooms that define the class `name`."""
        definition = re.compile(rf"\b(?:class|struct)\s+(?:\w+_API\s+)?{name}\b[^;()]*{{")
        files = (file for file in self.files if library_of(file) is not None)
        return {self.room_of(file) for file in files
                if definition.search((self.root / file).read_text(encoding="utf-8"))}

    def check_include(self, file, number, quote, name, first):
        target = self.resolve(file, quote, name)
        if first and file.startswith("src/") and file.endswith(".cpp"):
            self.check_own_header(file, number, target)
        if target is not None:
            self.includes[file].append((number, target))
            self.check_target(file, number, quote, target)
        elif quote == '"' or name.split("/")[0] in WITH_HEADERS:
            self.report(file, number, f"{name} is not in the tree")
        elif name not in STANDARD_LIBRARY and "/Arch/" not in file:
            if not name.startswith(third_parties_of(file)):
                self.report(file, number, f"<{name}> is neither standard C++ nor in a wing")

    def resolve(self, file, quote, name):
        folders = ["include"]
        if quote == '"':
            folders = [file.rpartition("/")[0], *INCLUDE_FOLDERS]
        for folder in folders:
            if f"{folder}/{name}" in self.known:
                return f"{folder}/{name}"
        return None

    def check_own_header(self, file, number, target):
        library, parts = file.split("/")[1], file[:-len(".cpp")].split("/")[2:]
        own = "/".join(parts[2:] if parts[0] == "Arch" else parts) + ".h"
        shallow = own.split("/")[0] + "/" + own.split("/")[-1]  # the public header of a sub-room
        headers = {f"{folder}/{name}" for folder in (f"include/{library}", f"src/{library}")
                   for name in (own, shallow)} & self.known
        headers |= {file[:-len(".cpp")] + ".h"} & self.known
        if headers and target not in headers:
            self.report(file, number, f"does not include its own header {own} first")

    def check_target(self, file, number, quote, target):
        if wing_of(target) not in (None, wing_of(file)):
            self.report(file, number, f"includes {target} from a wing")
        for_users = file.startswith(("include/", "examples/"))
        if for_users and (quote == '"' or not target.startswith("include/")):
            self.report(file, number, "is for users and includes other than <qlt/...>")
        room, below = self.room_of(file), self.room_of(target)
        if room is None:
            return
        if below is None:
            self.report(file, number, f"includes {target} from outside the library")
        elif below > room:
            self.report(file, number, f"includes {target} from a room above")
        elif below[0] < room[0] and not target.startswith("include/"):
            self.report(file, number, f"includes {target}, which is private to a library below")

    def check_cycles(self):
        done = set()
        for file in self.files:
            self.walk(file, [], done)

    def walk(self, file, path, done):
        if file in done:
            return
        path.append(file)
        for number, target in self.includes[file]:
            if target in path:
                circle = path[path.index(target):] + [target]
                self.report(file, number, "closes the circle " + " > ".join(circle))
            else:
                self.walk(target, path, done)
        path.pop()
        done.add(file)

    def check_umbrella(self, umbrella):
        if umbrella not in self.known:
            return
        library = umbrella.split("/")[1]
        named = {target for _, target in self.includes[umbrella]}
        rooms = tuple(f"include/{library}/{room}/" for room in ROOMS[library])
        for file in self.files:
            if file.startswith(rooms) and file not in named:
                self.report(umbrella, 1, f"does not include {file}")


class SelfTest(unittest.TestCase):
    def violations(self, **files):
        """Returns the violations of a tree. In the names of the arguments __ stands for /, and _h
        or _cpp for the suffix."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                stem, _, suffix = name.replace("__", "/").rpartition("_")
                file = pathlib.Path(folder, f"{stem}.{suffix}")
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(text, encoding="utf-8")
            return House(folder).check()

    def assert_kept(self, **files):
        self.assertEqual(self.violations(**files), [])

    def assert_broken(self, expected, **files):
        found = self.violations(**files)
        self.assertEqual(len(found), 1, found)
        self.assertRegex(found[0], expected)

    def test_a_room_may_include_the_rooms_below(self):
        self.assert_kept(
            include__qlt__Export_h="#if defined(_WIN32)\n#endif\n",
            include__qlt__Runtime__A_h="#include <qlt/Export.h>\n#include <vector>\n",
            src__qlt__Math__B_h="#include <qlt/Runtime/A.h>\n",
            src__qlt__Math__B_cpp='#include "Math/B.h"\n#include <cmath>\n',
            src__qlt__qlt_c_api__qlt_c_api_cpp='#include "Math/B.h"\n')

    def test_a_room_may_not_include_a_room_above(self):
        above = {"src__qlt__Math__M_h": "", "src__qlt__Runtime__R_h": '\n#include "Math/M.h"\n'}
        self.assert_broken("^src/qlt/Runtime/R.h:2: .*room above", **above)
        self.assert_broken("room above", src__qlt__Math__M_h="",
                           src__qlt__Arch__Linux__Runtime__R_cpp='#include "Math/M.h"\n')
        self.assert_broken("room above", include__qlt__qlt_h="",
                           src__qlt__Runtime__R_h="#include <qlt/qlt.h>\n")

    def test_sub_rooms_have_an_order_and_own_the_public_headers_of_their_sources(self):
        lens = {"include__qlt__Sensors__L_h": "",
                "src__qlt__Sensors__Lens__L_cpp": "#include <qlt/Sensors/L.h>\n"}
        self.assert_kept(**lens, src__qlt__Sensors__T_cpp='#include "Sensors/Lens/P.h"\n',
                         src__qlt__Sensors__Lens__P_h="#include <qlt/Sensors/L.h>\n")
        camera = {"src__qlt__Sensors__Camera__C_cpp": "#include <qlt/Sensors/C.h>\n",
                  "include__qlt__Sensors__C_h": ""}
        self.assert_broken("^src/qlt/Sensors/T.h:1: .*room above", **camera,
                           src__qlt__Sensors__T_h="#include <qlt/Sensors/C.h>\n")

    def test_the_kit_sees_the_core_from_outside(self):
        self.assert_kept(include__qlt__Math__M_h="",
                         src__qltkit__Headset__H_cpp="#include <qlt/Math/M.h>\n")
        self.assert_broken("private to a library below", src__qlt__Math__P_h="",
                           src__qltkit__Headset__H_cpp='#include "Math/P.h"\n')
        self.assert_broken("room above", include__qltkit__Headset__H_h="",
                           src__qlt__Math__M_cpp="#include <qltkit/Headset/H.h>\n")

    def test_a_friend_is_of_the_same_room_or_below(self):
        self.assert_kept(src__qlt__Math__M_h="class M\n{\n    friend struct N;\n};\nstruct N\n{\n};")
        self.assert_broken("^src/qlt/Math/M.h:3: has the friend F in a room above",
                           src__qlt__Math__M_h="class M\n{\n    friend struct F;\n};\n",
                           src__qlt__Render__F_cpp="\nstruct F final : G\n{\n};\n")

    def test_the_library_includes_neither_tools_nor_tests(self):
        self.assert_broken("outside the library", tests__fakes__F_h="",
                           src__qlt__Math__M_h='#include "fakes/F.h"\n')

    def test_files_may_not_include_each_other(self):
        self.assert_broken("^tests/C.h:1: closes the circle tests/A.h > tests/B.h > tests/C.h > ",
                           tests__A_h='#include "B.h"\n', tests__B_h='#include "C.h"\n',
                           tests__C_h='#include "A.h"\n')
        self.assert_broken("circle", tools__qlt__A_h='#include "A.h"\n')

    def test_nothing_includes_a_wing(self):
        self.assert_broken("from a wing", src__qlt__Arch__Linux__Runtime__W_h="",
                           src__qlt__Runtime__R_h='#include "Arch/Linux/Runtime/W.h"\n')

    def test_a_wing_includes_its_own_headers(self):
        wing = "src__qlt__Arch__Win32__Runtime__"
        self.assert_kept(**{wing + "W_h": "", wing + "W_cpp": '#include "W.h"\n',
                            wing + "V_cpp": '\n#include "W.h"\n'})
        self.assert_broken("own header Runtime/W.h first", **{
            wing + "W_h": "", wing + "W_cpp": '#include <windows.h>\n#include "W.h"\n'})
        self.assert_broken("from a wing", src__qlt__Arch__Linux__Runtime__W_h="",
                           **{wing + "V_cpp": '#include "Arch/Linux/Runtime/W.h"\n'})

    def test_system_headers_stay_in_wings(self):
        for header in ("windows.h", "unistd.h", "sys/mman.h", "pthread.h", "CLI/CLI.hpp"):
            line = f"# include <{header}> // why\n"
            self.assert_broken("neither standard", src__qlt__Runtime__R_cpp=line)
            self.assert_kept(src__qlt__Arch__Win32__Runtime__R_cpp=line)
        self.assert_broken("neither standard", tests__T_cpp="#include <windows.h>\n")

    def test_third_parties_stay_with_their_users(self):
        self.assert_kept(tools__qlt__A_cpp="#include <CLI/CLI.hpp>\n",
                         tests__A_cpp="#include <gtest/gtest.h>\n")
        self.assert_broken("neither standard", tools__qlt__A_cpp="#include <gtest/gtest.h>\n")

    def test_questions_about_the_system_stay_in_wings(self):
        for line in ("#ifdef _WIN32", "#if defined(__linux__) && 1", "# elif _MSC_VER > 1900",
                     "#ifndef WIN32", "#if __APPLE__"):
            self.assert_broken("asks for the system", tools__qlt__A_cpp=line)
            self.assert_kept(tools__qlt__Arch__Linux__A_cpp=line)
        self.assert_kept(tools__qlt__A_cpp="#if defined(__GNUC__)\n")

    def test_what_is_no_directive_is_not_read(self):
        self.assert_kept(src__qlt__Math__M_cpp="/*\n#include <windows.h>\n*/\n"
                         '// #ifdef _WIN32\nauto s = R"(\n#ifdef _WIN32\n)";\nauto t = "/*";\n')
        self.assert_broken("M.cpp:4: <windows.h>", src__qlt__Math__M_cpp="/*\n\n*/ char c = '\"';\n"
                           "#include <windows.h>\n")

    def test_public_headers_include_public_headers_only(self):
        self.assert_broken("is for users", src__qlt__Math__M_h="",
                           include__qlt__Math__P_h='#include "Math/M.h"\n')
        self.assert_broken("is for users", include__qlt__Math__P_h="",
                           include__qlt__Math__Q_h='#include "P.h"\n')

    def test_examples_include_public_headers_only(self):
        self.assert_kept(include__qlt__Math__P_h="",
                         examples__E_c="#include <qlt/Math/P.h>\n#include <stdio.h>\n")
        self.assert_broken("is for users", src__qlt__Math__M_h="",
                           examples__E_cpp='#include "Math/M.h"\n')

    def test_the_own_header_comes_first(self):
        swapped = '#include <vector>\n#include "Math/M.h"\n'
        self.assert_broken("own header Math/M.h first", src__qlt__Math__M_h="",
                           src__qlt__Math__M_cpp=swapped)
        self.assert_broken("own header Math/M.h first", src__qlt__Math__M_h="",
                           src__qlt__Arch__Linux__Math__M_cpp=swapped)

    def test_what_is_included_exists(self):
        self.assert_broken("not in the tree", src__qlt__Math__M_h="#include <qlt/Gone.h>\n")
        self.assert_broken("not in the tree", tests__M_cpp='#include "windows.h"\n')

    def test_the_umbrella_covers_every_public_header(self):
        self.assert_broken("does not include include/qlt/Math/M.h", include__qlt__Math__M_h="",
                           include__qlt__qlt_h="")


def main():
    if sys.argv[1:] == ["--self-test"]:
        unittest.main(argv=sys.argv[:1])
    root = sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent
    violations = House(root).check()
    print("\n".join(violations) if violations else "rooms: in order")
    sys.exit(bool(violations))


if __name__ == "__main__":
    main()
