#!/usr/bin/env python3
"""Tests of captures on slow and full disks, and with another library.

    capture_test.py --probe PROBE [--qlt QLT] [--emulator EMULATOR] --folder FOLDER CASE

Exits 77 when the machine cannot run the case.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time

SKIPPED = 77
HERE = pathlib.Path(__file__).resolve().parent


def skip(why):
    print("The case is skipped:", why)
    sys.exit(SKIPPED)


def figures(line):
    return {name: int(value) for name, value in re.findall(r"(\w+) (\d+)", line)}


class Cases:
    def __init__(self, arguments):
        self.command = [*filter(None, [arguments.emulator]), arguments.probe]
        self.qlt = arguments.qlt
        self.folder = pathlib.Path(arguments.folder)
        self.folder.mkdir(parents=True, exist_ok=True)

    def read(self, name):
        lines = subprocess.run([*self.command, "read", name], cwd=self.folder, check=True,
                               capture_output=True, text=True, encoding="utf-8").stdout.split("\n")
        return [line.split(" ", 1) for line in lines if line]

    def case_adding_a_report_makes_no_system_call(self):
        trace = self.folder / "trace"
        strace = shutil.which("strace")
        if strace is None or subprocess.run([strace, "-o", trace, "true"]).returncode != 0:
            skip("strace is missing or must not trace here")
        subprocess.run([strace, "-f", "-o", trace, *self.command, "write", "traced.mcap", "20000",
                        "0"], cwd=self.folder, check=True, stdout=subprocess.DEVNULL)
        lines = trace.read_text().splitlines()
        adding = lines[0].split()[0]
        calls = [line for line in lines if line.split()[0] == adding]
        start = max(i for i, line in enumerate(calls) if " clone" in line)
        # The program prints a line for every thousand reports, and closes the capture.
        assert len(calls) - start < 100, calls[start:]

    def case_a_stalled_pipe_delays_nobody_and_loses_nothing(self):
        pipe, copy = self.folder / "pipe.mcap", self.folder / "piped.mcap"
        for path in (pipe, copy):
            path.unlink(missing_ok=True)
        os.mkfifo(pipe)
        writer = subprocess.Popen([*self.command, "write", pipe, "30000", "80"],
                                  stdout=subprocess.PIPE, text=True)
        with open(pipe, "rb") as source, open(copy, "wb") as target:
            target.write(source.read(1000))
            time.sleep(2)  # this simulates a disk that stalls
            shutil.copyfileobj(source, target)
        told = writer.communicate()[0]
        result = figures(told.split("\n")[-2])
        print(result)
        assert writer.returncode == 0, told
        assert result["dropped"] == 0 and result["written"] == 30000
        # A delay of a second would be a stall. A busy machine causes shorter ones.
        assert result["longestUs"] < 1000000, result
        items = self.read(copy)
        assert [kind for kind, _ in items].count("report") == 30000
        assert "problem" not in dict(items)
        pipe.unlink()

    def case_a_pipe_without_a_reader_ends_the_capture_and_not_the_program(self):
        pipe = self.folder / "closed.mcap"
        pipe.unlink(missing_ok=True)
        os.mkfifo(pipe)
        writer = subprocess.Popen([*self.command, "write", pipe, "20000", "50"],
                                  stdout=subprocess.PIPE, text=True)
        with open(pipe, "rb") as source:
            source.read(1000)
        told = writer.communicate()[0]
        assert writer.returncode == 3 and "Broken pipe" in told, told
        pipe.unlink()

    def case_a_full_disk_is_reported_counted_and_survived(self):
        import resource
        import signal
        for limit_is_lifted in (False, True):
            for path in self.folder.glob("full*.mcap"):
                path.unlink()

            def fill():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (300000, resource.RLIM_INFINITY))
            writer = subprocess.Popen(
                [*self.command, "write", "full.mcap", "30000", "20", "1024"], cwd=self.folder,
                stdout=subprocess.PIPE, text=True, preexec_fn=fill)
            told = []
            for line in writer.stdout:
                told.append(line.rstrip())
                if "File too large" in line and limit_is_lifted:
                    infinite = resource.RLIM_INFINITY
                    resource.prlimit(writer.pid, resource.RLIMIT_FSIZE, (infinite, infinite))
            code = writer.wait()
            result = figures(told[-1])
            print(told[-2:])
            assert result["failed"] == 1 and result["taken"] + result["dropped"] == 30000, told
            items = self.read("full.mcap" if limit_is_lifted else "full.part.mcap")
            reports = [kind for kind, _ in items].count("report")
            if limit_is_lifted:
                assert code == 0 and "problem" not in dict(items)
                assert reports == result["taken"]
                dropped = [line for kind, line in items if kind == "event" and " reports" in line]
                counts = [int(re.search(r"dropped(\d+)", line).group(1)) for line in dropped]
                assert sum(counts) == result["dropped"], (dropped, result)
            else:
                missing = 30000 - result["written"]
                assert code == 3, told
                assert f"File too large; {missing} reports are missing" in told[-2], told
                assert result["dropped"] > 0 and result["written"] <= reports < 30000
                assert "cut off" in dict(items)["problem"]

    def case_another_library_reads_our_captures_and_we_read_its_captures(self):
        node, npm = shutil.which("node"), shutil.which("npm")
        if node is None or npm is None:
            skip("there is no node or no npm on this machine")
        for name in ("package.json", "package-lock.json"):
            shutil.copy(HERE / "mcap" / name, self.folder)
        if not (self.folder / "node_modules/.package-lock.json").exists():
            fetched = subprocess.run([npm, "ci", "--no-audit", "--no-fund", "--ignore-scripts"],
                                     cwd=self.folder, capture_output=True, text=True)
            if fetched.returncode != 0:
                skip("npm cannot fetch @mcap/core: " + fetched.stderr.strip()[-500:])
        script = HERE / "mcap" / "interop.mjs"
        sys.exit(subprocess.run([node, script, self.folder, *self.command],
                                env=dict(os.environ, QLT=self.qlt)).returncode)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--probe", required=True)
    parser.add_argument("--qlt", default="")
    parser.add_argument("--emulator", default="")
    parser.add_argument("--folder", required=True)
    parser.add_argument("case")
    arguments = parser.parse_args()
    getattr(Cases(arguments), "case_" + arguments.case)()


if __name__ == "__main__":
    main()
