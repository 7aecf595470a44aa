"""Tests of the kit in the module. QUELTA_SDK names the shipped library, and QUELTA_QLT the command."""

import csv
import ctypes
import gc
import inspect
import math
import os
import pathlib
import re
import struct
import subprocess
import sys
import threading
import time

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[1]
HEADER = ROOT.parents[1] / "include/qltkit/qltkit_c_api.h"
sys.path.insert(0, str(ROOT))
import quelta  # noqa: E402
from quelta import _native  # noqa: E402

# A head that turns about all axes. The sensors have unequal faults, and reports are missing.
SCRIPT = {
    "seed": 7, "seconds": 1.2, "host": {"late_ms": 0.4},
    "motion": {"kind": "angles", "points": [{"at": 0},
                                            {"at": 1.2, "yaw": -35, "pitch": 25, "roll": 10}]},
    "sensors": {"gyroscope": {"noise": 0.1}, "accelerometer": {"bias": [0.1, 0.2, 0.3]}},
    "events": [{"at": 0.2, "event": "drop", "count": 3}, {"at": 0.5, "event": "unplug"},
               {"at": 0.6, "event": "plug"}, {"at": 0.7, "event": "sequence_jump", "by": 900}]}
PERSON = quelta.Person(0.07, 0.11, 0.05)


@pytest.fixture(autouse=True)
def quiet():
    """The library prints nothing during a test."""
    lines = []
    quelta.set_log_handler(lambda level, line: lines.append((level, line)))
    yield lines
    quelta.set_log_handler(None)


def track(script=SCRIPT, **options):
    """A tracker that has come to the end of a script, its headset, and all samples."""
    headset = quelta.ScriptedHeadset(script, fastest=True)
    tracker = quelta.Headset(headset, **options)
    return tracker, headset, list(tracker)


@pytest.fixture(scope="module")
def files(tmp_path_factory):
    """The samples of the script, and the same reports as a capture and as a plain file."""
    folder = tmp_path_factory.mktemp("kit")
    with quelta.CaptureWriter(folder / "walk.mcap", {"purpose": "a test"}) as capture:
        tracker, _, samples = track(filter="core", capture=capture)
        tracker.close()
    (folder / "walk.bin").write_bytes(b"".join(sample.report for sample in samples))
    return samples, folder / "walk.bin", folder / "walk.mcap"


def refusal(call, *arguments, **options):
    """The text of the error, which must be one sentence."""
    with pytest.raises(quelta.QueltaError) as caught:
        call(*arguments, **options)
    assert re.fullmatch(r"[^\n]+[^.]\.", str(caught.value)), str(caught.value)
    return str(caught.value)


def f32(value):
    """The nearest float of single precision."""
    return struct.unpack("f", struct.pack("f", value))[0]


def rotated(q, v):
    """The vector v, turned by the quaternion q."""
    w, *u = q
    cross = [u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]]
    t = [2.0 * c for c in cross]
    more = [u[1] * t[2] - u[2] * t[1], u[2] * t[0] - u[0] * t[2], u[0] * t[1] - u[1] * t[0]]
    return [a + w * b + c for a, b, c in zip(v, t, more)]


def test_every_function_of_the_header_is_declared_and_has_its_arguments():
    functions = re.findall(r"QLTKIT_API [^;(]*?\bqltkit_(\w+)\(([^)]*)\)", HEADER.read_text())
    assert len(functions) == 41
    counts = {name: 0 if arguments == "void" else arguments.count(",") + 1
              for name, arguments in functions}
    assert {name: len(types) for name, types in _native._FUNCTIONS.items()} == counts
    assert _native.kit().qltkit_version().decode() == quelta.version() == quelta.__version__


def test_every_public_name_has_a_docstring():
    for module in (quelta, quelta.kit):
        assert module.__doc__
        for name in module.__all__:
            public = getattr(module, name)
            assert public.__doc__, name
            for member, value in vars(public).items() if inspect.isclass(public) else ():
                if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                    assert value.__doc__, f"{name}.{member}"


def test_a_user_of_the_hints_passes_strict_checks(tmp_path):
    pytest.importorskip("mypy")
    program = tmp_path / "user.py"
    program.write_text("import quelta\n"
                       "def last(file: str) -> quelta.Quaternion:\n"
                       "    with quelta.Headset(quelta.ScriptedHeadset(file, fastest=True)) as head:\n"
                       "        for sample in head:\n            print(sample.pose.time_ns + 1)\n"
                       "        return head.latest.orientation\n"
                       "with quelta.Tracker.simulator() as tracker:\n    print(tracker.start())\n")
    def check(*files):
        done = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir",
                               str(tmp_path / "cache"), *map(str, files)], cwd=tmp_path, text=True,
                              env=dict(os.environ, MYPYPATH=str(ROOT)), capture_output=True)
        return done.returncode, done.stdout
    assert check(program, ROOT / "quelta")[0] == 0, check(program, ROOT / "quelta")[1]
    program.write_text("import quelta\nquelta.Headset('headset').at('noon')\n")
    assert check(program)[0] == 1


def test_a_live_headset_gives_every_report_with_its_time():
    begin = time.monotonic_ns()
    with quelta.Headset("simulator") as headset:
        samples = [next(headset) for _ in range(50)]
        assert headset.latest.state == quelta.PoseState.TRACKING
        assert begin < headset.now_ns < time.monotonic_ns()
    numbers = [sample.pose.report_number for sample in samples]
    assert numbers == list(range(numbers[0], numbers[0] + 50))
    for sample in samples:
        assert begin - 10**7 < sample.pose.time_ns <= sample.arrival_ns < time.monotonic_ns()
    assert samples[-1].pose.device_time_us - samples[0].pose.device_time_us == 49000


@pytest.mark.parametrize("filter", ["kit", "core"])
def test_a_script_gives_poses_events_eyes_and_the_truth(filter):
    tracker, headset, samples = track(filter=filter, person=PERSON)
    with tracker:
        last = tracker.latest
        assert last == samples[-1].pose and last.state == quelta.PoseState.LOST
        truth = headset.truth
        assert headset.is_over and truth.sequence == last.sequence
        assert truth.sample_ns < truth.arrival_ns == samples[-1].arrival_ns
        up = rotated(truth.orientation, (0, 1, 0)), rotated(last.orientation, (0, 1, 0))
        assert up[1] == pytest.approx(up[0], abs=0.3)
        pose = tracker.at(samples[20].pose.time_ns + 400000)
        assert pose.orientation == pytest.approx(samples[20].pose.orientation, abs=1e-3)
        assert pose.time_ns == samples[20].pose.time_ns + 400000 and not pose.clamped
        assert tracker.at(last.time_ns + 10**9).clamped
        for eye, side in ((0, -0.035), (1, 0.035)):
            found = tracker.eye_pose(eye, pose)
            assert found.orientation == pose.orientation
            assert found.position == pytest.approx(rotated(pose.orientation, (side, 0.05, -0.11)),
                                                   abs=1e-6)
        kinds = [(event.kind.name, event.reports) for event in tracker.events()]
        assert kinds == [("CONNECTED", 0), ("GAP", 3), ("LOST", 0), ("BACK", 0), ("GAP", 900),
                         ("LOST", 0)]
        assert tracker.recentre()
        forward = rotated(tracker.latest.orientation, (0, 0, -1))
        assert forward[0] == pytest.approx(0.0, abs=1e-6) and forward[2] < 0.0
        total, recent = tracker.prediction_error(0.05)
        raw = ctypes.c_double(), ctypes.c_double()
        _native.call("HeadTracker_PredictionError", tracker._handle, 0.05, *map(ctypes.byref, raw))
        assert (total, recent) == (raw[0].value, raw[1].value)
        assert (total != recent) == (filter == "core")  # the kit still learns


def test_a_callback_gets_the_events_and_may_be_removed():
    done, events = threading.Event(), []
    tracker, _, _ = track()

    def take(event):
        events.append(event)
        if len(events) == 6:
            done.set()
    tracker.on_event(take)
    assert done.wait(60.0)
    tracker.on_event(None)
    assert events == list(tracker.events())
    assert events[2].kind == quelta.EventKind.LOST and events[2].time_ns == 500000000
    tracker.close()


def test_columns_are_the_sensors_of_the_samples(files):
    samples, plain, capture = files
    for file in (plain, capture):
        with quelta.read(file) as recording:
            assert len(recording) == len(samples) > 1000 and recording.problems == []
            for name in ("gyroscope", "accelerometer", "magnetometer"):
                rows = [list(getattr(sample, name)) for sample in samples]
                assert recording[name].tolist() == rows, name
            assert recording["temperature"].tolist() == [s.temperature for s in samples]
            assert recording["sequence"].tolist() == [s.pose.sequence for s in samples]
            assert bytes(recording["reports"]) == b"".join(s.report for s in samples)
            times = recording["device_time_us"].tolist()
            assert times[:100] == [s.pose.device_time_us for s in samples[:100]]
            if file == capture:
                assert recording["host_time_ns"].tolist() == [s.arrival_ns for s in samples]
            else:
                assert "no host times" in refusal(lambda: recording["host_time_ns"])
                assert len(recording.columns) == 7


def test_columns_are_numpy_arrays_or_views_and_outlive_the_recording(files, monkeypatch):
    numpy = pytest.importorskip("numpy")
    recording = quelta.read(files[1])
    column, before = recording["gyroscope"], recording["gyroscope"].tolist()
    assert isinstance(column, numpy.ndarray) and column.dtype == numpy.float32
    assert column.shape == (len(recording), 3) and not column.flags.writeable
    monkeypatch.setitem(sys.modules, "numpy", None)
    view = recording["gyroscope"]
    assert isinstance(view, memoryview) and view.tolist() == before
    recording.close()
    assert refusal(lambda: recording["gyroscope"]) == "This Recording is closed."
    del recording
    gc.collect()
    others = [quelta.read(files[2]) for _ in range(4)]
    assert column.tolist() == view.tolist() == before and len(others) == 4


def test_a_replay_has_the_bits_of_the_command(files, tmp_path):
    walk = files[1].read_bytes()
    swapped = tmp_path / "swapped.bin"  # the sequence also jumps back, earlier than in the other file
    swapped.write_bytes(walk[6400:12800] + walk[:6400] + walk[12800:])
    for file in (files[1], swapped, files[1]):  # one process replays several files
        subprocess.run([os.environ["QUELTA_QLT"], "replay", file, "--csv", tmp_path / "out.csv"],
                       check=file != swapped, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(tmp_path / "out.csv", newline="") as rows:
            expected = [[f32(float(row[key])) for key in ("qw", "qx", "qy", "qz")]
                        for row in csv.DictReader(rows)]
        assert quelta.replay(file).tolist() == expected
    kit = quelta.replay(files[1], "kit").tolist()
    assert kit != expected and all(math.hypot(*row) == pytest.approx(1.0) for row in kit)


def test_a_capture_keeps_everything_and_says_what_is_missing(files, tmp_path):
    file = tmp_path / "all.mcap"
    writer = quelta.CaptureWriter(file, {"source": "a test", "person": "nobody"})
    writer.add_report(files[0][3].report, 1000)
    writer.add_event("resync", "by hand", 2000)
    writer.add_text(3, "a warning", 3000)
    writer.add_frame(quelta.Frame(3, 2, 4, "mono8", b"abc.def."), 4000)
    writer.add_report(files[0][4].report, 5000000)  # the headset says that a millisecond has passed
    writer.flush()
    assert writer.status == (2, 2, 0, 0) and not file.exists()
    before = time.monotonic_ns()
    writer.add_event("lost")
    writer.close()
    with quelta.CaptureReader(file) as reader:
        report, event, text, frame, later, lost = list(reader)
        assert reader.metadata["capture"]["source"] == "a test"
        assert reader.metadata["capture"]["person"] == "nobody"
        assert reader.problems == [] and reader.position == (file.stat().st_size,) * 2
    kinds = [(item.kind, item.host_time_ns) for item in (report, event, text, frame)]
    assert kinds == [("report", 1000), ("event", 2000), ("text", 3000), ("frame", 4000)]
    assert before <= lost.host_time_ns <= time.monotonic_ns()
    assert report.report == report.data == files[0][3].report and report.topic == "/raw"
    assert report.sequence == files[0][3].pose.sequence
    assert report.device_time_us == files[0][3].pose.device_time_us
    assert frame.log_time_ns - report.log_time_ns == 3000 and event.frame is None
    assert (event.name, event.text, text.level, text.text) == ("resync", "by hand", 3, "a warning")
    assert later.publish_time_ns - report.publish_time_ns == 1000000
    assert later.log_time_ns - report.log_time_ns == 4999000
    assert frame.frame == quelta.Frame(3, 2, 4, "mono8", b"abc.def.")
    cut = tmp_path / "cut.mcap"
    cut.write_bytes(files[2].read_bytes()[:-2000])
    reader = quelta.CaptureReader(cut)
    assert list(reader) and reader.problems[0][0] > 0
    assert quelta.read(cut).problems == [reader.problems[0][1]] != [""]


def test_errors_have_the_sentence_of_the_kit(tmp_path):
    missing = tmp_path / "none.bin"
    assert str(missing) in refusal(quelta.read, missing)
    assert str(missing) in refusal(quelta.replay, missing)
    assert "none.mcap" in refusal(quelta.CaptureReader, tmp_path / "none.mcap")
    assert "nowhere" in refusal(quelta.CaptureWriter, tmp_path / "nowhere/x.mcap")
    assert 'line 1: motion.kind' in refusal(quelta.ScriptedHeadset, {"motion": {"kind": "fly"}})
    assert '"nobody" is neither' in refusal(quelta.Headset, "nobody")
    assert "no filter 'best'" in refusal(quelta.Headset, "simulator", filter="best")
    with quelta.Headset(quelta.ScriptedHeadset({"motion": {"kind": "rest"}})) as headset:
        assert "the eye is neither" in refusal(headset.eye_pose, 2)
    assert refusal(lambda: headset.latest) == "This Headset is closed."
    with quelta.CaptureWriter(tmp_path / "x.mcap") as writer:
        assert "64 bytes" in refusal(writer.add_report, b"short")
        assert "0 .. 5" in refusal(writer.add_text, 6, "x")
        assert "pixels" in refusal(writer.add_frame, quelta.Frame(3, 2, 4, "mono8", b"abc"))


def test_the_library_says_its_lines_to_the_handler(quiet, capfd):
    track()[0].close()
    assert quiet == [(0, "USB Connected"), (1, "Read 0 instead of 64!"), (0, "USB Disconnected")] * 2
    assert capfd.readouterr() == ("", "")
    quelta.set_log_handler(None)
    track()[0].close()
    assert len(quiet) == 6
    assert capfd.readouterr().out == "USB Connected\nUSB Disconnected\n" * 2
