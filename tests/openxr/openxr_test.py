#!/usr/bin/env python3
"""Tests the installed form of the OpenXR runtime: behind the system's own loader, with the programs of
the system, and with the qlt command.

    openxr_test.py QLT VIDMODE HEADSETS [CASE...]

VIDMODE is preloaded into programs that need a certain extension, because the display in memory lacks it.
HEADSETS is the folder of the headset scripts.
"""

import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

QLT = VIDMODE = HEADSETS = None
XVFB = ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24 -noreset"]


class OpenXrTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = dict(os.environ, XDG_CONFIG_HOME=str(self.folder / "config"))
        self.environment.pop("XR_RUNTIME_JSON", None)

    def run_qlt(self, *arguments, code=0, **more):
        run = subprocess.run([QLT, *arguments], env={**self.environment, **more}, text=True,
                             capture_output=True, timeout=100)
        self.assertEqual(run.returncode, code, run.stdout + run.stderr)
        return run.stdout + run.stderr

    def hello(self, *options, **environment):
        """Starts hello_xr on the runtime. It ends when the runtime asks it to exit, and also at the end of
        its input."""
        program = [*XVFB, "env", f"LD_PRELOAD={VIDMODE}", *(f"{n}={v}" for n, v in environment.items()),
                   QLT, "openxr", "run", *options, "hello_xr", "-g", "OpenGL"]
        process = subprocess.Popen(program, env=self.environment, text=True, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.addCleanup(process.wait)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stdin.close)
        return process

    def wait_for_status(self, pattern):
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            status = self.run_qlt("openxr", "status")
            match = re.search(pattern, status)
            if match:
                return match
        self.fail(status)

    def test_hello_xr_runs_as_the_validation_layer_wants_it(self):
        png = self.folder / "panel.png"
        process = self.hello("--source", str(HEADSETS / "conversation.json"), "--png", str(png),
                             "--frames", "40", "--mirror", "640x360",
                             XR_ENABLE_API_LAYERS="XR_APILAYER_LUNARG_core_validation",
                             XR_CORE_VALIDATION_EXPORT_TYPE="text")
        while process.poll() is None:  # the input must not end
            time.sleep(0.1)
        said = process.stdout.read()
        self.assertEqual(process.returncode, 0, said)
        self.assertIn("Core Validation output type", said)
        self.assertNotRegex(said, "VUID|VALID_USAGE|VALID_ERROR|Error")
        self.assertIn("XR_SESSION_STATE_EXITING", said)
        plain = subprocess.run(["pngtopnm", png], check=True, capture_output=True).stdout
        pixels = plain.split(b"\n", 3)[3]
        # The picture shows the program's background in linear light, and it is black outside the
        # lenses.
        background = bytes([119, 151, 151])
        ground = sum(pixels[i:i + 3] == background for i in range(0, len(pixels), 3))
        self.assertGreater(ground, 0.4 * 640 * 360)
        self.assertEqual(pixels[:3], b"\0\0\0")

    def test_the_example_shows_its_squares(self):
        png = self.folder / "panel.png"
        program = pathlib.Path(QLT).parent / "hello_openxr"
        run = subprocess.run([*XVFB, QLT, "openxr", "run", "--source", "simulator", "--mirror", "640x360",
                              "--frames", "30", "--png", png, program], env=self.environment, text=True,
                             capture_output=True, timeout=100)
        self.assertEqual(run.returncode, 0, run.stderr)
        plain = subprocess.run(["pngtopnm", png], check=True, capture_output=True).stdout
        self.assertGreater(sum(value > 120 for value in plain.split(b"\n", 3)[3]), 1000)

    def test_status_follows_a_session_until_its_program_dies(self):
        process = self.hello("--source", "simulator", "--mirror", "320x180")
        status = self.wait_for_status(r"session +hello_xr, process (\d+)\n  source +simulator, (.*)\n"
                                      r"  output +a window on the desktop, every 16.67 ms\n"
                                      r"  pictures +[1-9].*\n  frames +[1-9]")
        self.assertIn("tracking", status.group(2))
        os.kill(int(status.group(1)), signal.SIGKILL)
        self.assertEqual(process.wait(), 128 + signal.SIGKILL)
        self.assertIn("session   none", self.run_qlt("openxr", "status"))

    def test_the_loader_finds_it_in_a_folder_that_was_moved(self):
        build = pathlib.Path(QLT).parent.parent
        place = self.folder / "a place with spaces é"
        (place / "share/openxr/1").mkdir(parents=True)
        (place / "lib").mkdir()
        for library in build.glob("lib/lib*.so*"):
            shutil.copy(library, place / "lib", follow_symlinks=False)
        manifest = shutil.copy(build / "share/openxr/1/openxr_quelta.json", place / "share/openxr/1")
        self.assertFalse(json.load(open(manifest))["runtime"]["library_path"].startswith("/"))
        # The program cannot find the build's own libraries, as in an installed package.
        library = place / "lib/libquelta_openxr.so"
        self.environment["XR_RUNTIME_JSON"] = manifest
        self.environment["LD_LIBRARY_PATH"] = str(place / "lib")
        run = subprocess.run(["openxr_runtime_list"], env=self.environment, text=True,
                             capture_output=True, timeout=60)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("systemName: Quelta Orbel Ixo", run.stdout)
        exported = subprocess.run(["nm", "-D", "--defined-only", library], check=True, text=True,
                                  capture_output=True).stdout.split()
        self.assertEqual(exported[2:], ["xrNegotiateLoaderRuntimeInterface"])

    def test_the_users_setting_is_made_kept_and_put_back(self):
        setting = self.folder / "config/openxr/1/active_runtime.json"
        self.assertRegex(self.run_qlt("openxr", "status"), "^runtime   (none|.*not this one)")
        self.run_qlt("openxr", "enable")
        status = self.run_qlt("openxr", "status")
        self.assertRegex(status, "runtime   Quelta\nbecause   it is the user's own setting")
        self.assertNotIn("mistake", status)
        self.run_qlt("openxr", "enable")
        self.run_qlt("openxr", "disable")
        self.assertFalse(os.path.lexists(setting))
        self.assertIn("nothing is changed", self.run_qlt("openxr", "disable"))

        other = '{"file_format_version": "1.0.0", "runtime": {"library_path": "/x/other.so"}}'
        for name in ("active_runtime.json", "active_runtime.x86_64.json"):
            (setting.parent / name).write_text(other)
        self.assertIn("--force", self.run_qlt("openxr", "enable", code=1))
        self.assertEqual(setting.read_text(), other)
        self.assertIn("/x/other.so does not exist", self.run_qlt("openxr", "status"))
        self.run_qlt("openxr", "enable", "--force")
        self.assertIn("runtime   Quelta", self.run_qlt("openxr", "status"))
        self.run_qlt("openxr", "disable")
        self.assertEqual(sorted(file.name for file in setting.parent.iterdir()),
                         ["active_runtime.json", "active_runtime.x86_64.json"])
        self.assertEqual(setting.read_text(), other)
        variable = self.run_qlt("openxr", "status", XR_RUNTIME_JSON="/nowhere.json")
        self.assertRegex(variable, "XR_RUNTIME_JSON names it: /nowhere.json(.|\n)*cannot be read")
        self.assertIn("cannot be started", self.run_qlt("openxr", "run", "/no/program", code=1))


if __name__ == "__main__":
    QLT, VIDMODE, HEADSETS = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    unittest.main(argv=[sys.argv[0], *(f"OpenXrTest.test_{case}" for case in sys.argv[4:])])
