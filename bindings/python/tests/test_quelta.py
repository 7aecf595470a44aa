"""The module with the real library, which QUELTA_SDK names. QUELTA_OTHER names a library that is
another one."""

import gc
import os
import pathlib
import re
import subprocess
import sys
import time

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[1]
HEADER = ROOT.parents[1] / "include/qlt/qlt_c_api.h"
sys.path.insert(0, str(ROOT))
import quelta  # noqa: E402


@pytest.fixture
def unloaded(monkeypatch):
    """No library is loaded yet, and none is named."""
    monkeypatch.setattr(quelta, "_sdk", None)
    monkeypatch.delenv("QUELTA_SDK")
    return monkeypatch


@pytest.fixture
def simulator():
    with quelta.Tracker.simulator() as tracker:
        yield tracker


def refusal(call, *arguments):
    """The sentence of the error, which is one and has no history of other errors."""
    with pytest.raises(quelta.QueltaError) as caught:
        call(*arguments)
    assert caught.value.__suppress_context__ or caught.value.__context__ is None
    text = str(caught.value)
    assert re.fullmatch(r"[^\n]+\.", text), text
    return text


def test_every_function_of_the_header_is_declared_and_exists():
    names = re.findall(r"\bqlt_(\w+)\(", HEADER.read_text())
    assert len(names) == 57
    assert sorted(quelta._FUNCTIONS) == sorted(names)
    sdk = quelta.load()
    assert all(getattr(sdk, "qlt_" + name).argtypes is not None for name in names)


def test_the_simulator_turns_about_x(simulator):
    assert simulator.is_connected and not simulator.is_tracking
    assert simulator.start() and simulator.is_tracking
    while simulator.orientation.x == 0.0:
        time.sleep(0.001)
    assert simulator.stop() and not simulator.is_tracking
    w, x, y, z = simulator.orientation
    assert w * w + x * x == pytest.approx(1.0) and y == z == 0.0
    assert simulator.predicted_orientation(0.01) == (w, x, y, z)
    assert simulator.position == quelta.Vec3(0.0, 0.0, 0.0)


def test_objects_that_are_not_there_are_at_rest(simulator):
    for index in (0, 7, -1):
        assert simulator.object_orientation(index) == quelta.Quaternion(1.0, 0.0, 0.0, 0.0)
        assert simulator.object_position(index) == quelta.Vec3(0.0, 0.0, 0.0)


def test_the_axes_of_unity():
    assert quelta.Quaternion(0.5, 1.0, 2.0, 3.0).to_unity() == (-0.5, 1.0, 2.0, -3.0)


def test_the_smallest_mesh():
    with quelta.Mesh(1, 1) as mesh:
        assert mesh.indices.tolist() == [0, 2, 1, 2, 1, 3]
        corners = [(x, y) for x, y, _ in mesh.positions.tolist()]
        assert corners == [(-1.0, -1.0), (1.0, -1.0), (-1.0, 1.0), (1.0, 1.0)]
        for texture in (mesh.texture_r, mesh.texture_g, mesh.texture_b):
            assert texture.shape == (4, 2)
    strip = quelta.Mesh(2, 3, left_eye=False, triangle_list=False)
    assert strip.positions.shape == (12, 3)
    red, green, blue = (t.tolist() for t in (strip.texture_r, strip.texture_g, strip.texture_b))
    assert red != green != blue


def test_the_arrays_of_a_mesh_outlive_it():
    mesh = quelta.Mesh(40, 40)
    positions, before = mesh.positions, mesh.positions.tolist()
    mesh.close()
    del mesh
    gc.collect()
    others = [quelta.Mesh(40, 40, left_eye=False) for _ in range(4)]
    assert positions.tolist() == before and len(others) == 4


def test_a_mesh_has_cells():
    assert "0 x 5" in refusal(quelta.Mesh, 0, 5)
    assert "too many" in refusal(quelta.Mesh, 18919, 18919)
    assert "too many" in refusal(quelta.Mesh, 2**29, 2, True, False)


def test_what_is_closed_is_not_used():
    tracker, mesh = quelta.Tracker.simulator(), quelta.Mesh(1, 1)
    tracker.start()
    for owner in (tracker, mesh):
        owner.close()
        owner.close()
    assert refusal(tracker.start) == "This Tracker is closed."
    assert refusal(lambda: mesh.indices) == "This Mesh is closed."


def test_a_camera_needs_a_headset(simulator):
    assert "none is connected" in refusal(quelta.Camera, simulator)
    with quelta.Tracker.headset() as headset:
        assert "none is connected" in refusal(quelta.Camera, headset)
    assert quelta.Camera.size() == (2560, 1440)


def test_the_constants():
    params = quelta.params()
    assert params.eye_resolution > 0 and params.eye_distort is True
    assert params.user_ipd_m == pytest.approx(0.06, abs=0.01)


def test_a_library_that_is_missing_or_of_the_wrong_kind(unloaded, tmp_path):
    missing, text = tmp_path / "none.so", tmp_path / quelta._FILE
    text.write_text("no library\n")
    assert f"no file {missing}" in refusal(quelta.load, missing)
    assert f"{text} is no library for this 64-bit Python" in refusal(quelta.load, text)
    for file, words in ((missing, f"no file {missing}"),
                        (os.environ["QUELTA_OTHER"], "has no function qlt_Camera_New")):
        unloaded.setenv("QUELTA_SDK", str(file))
        assert words in refusal(quelta.Tracker.simulator)
    unloaded.delenv("QUELTA_SDK")
    unloaded.setattr(quelta, "__file__", str(tmp_path / "__init__.py"))
    assert str(text) in refusal(quelta.load)  # beside the module
    unloaded.setattr(quelta, "_FILE", "libQueltaNowhere.so")
    assert "by the variable QUELTA_SDK" in refusal(quelta.load)


def test_the_example_prints_for_a_second():
    done = subprocess.run([sys.executable, ROOT / "examples/print_orientation.py"], check=True,
                          env=dict(os.environ, PYTHONPATH=str(ROOT)), text=True,
                          capture_output=True, timeout=60)
    lines = [[float(number) for number in line.split()] for line in done.stdout.splitlines()]
    assert len(lines) == 10 and all(len(line) == 4 for line in lines)
    assert lines[0] != lines[-1] and done.stderr == ""


def test_a_tracker_that_nobody_closed_ends_with_the_program():
    program = "import quelta; t = quelta.Tracker.simulator(); t.start(); t.loop = t"
    done = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True,
                          env=dict(os.environ, PYTHONPATH=str(ROOT)), timeout=60)
    assert done.stderr == b""
