"""Tests of the module. QUELTA_SDK names the shipped library. QUELTA_SCRIPTED names a library with a
scripted headset and a host service. QUELTA_OTHER names a wrong library."""

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
def scripted(monkeypatch):
    monkeypatch.setattr(quelta, "_sdk", None)
    return quelta.load(os.environ["QUELTA_SCRIPTED"])


def wait_until(condition):
    end = time.monotonic() + 60.0
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.001)


@pytest.fixture
def simulator():
    with quelta.Tracker.simulator() as tracker:
        yield tracker


def refusal(call, *arguments):
    """The text of the error. It must be one sentence, and no other error may be attached to it."""
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
    wait_until(lambda: simulator.orientation.x != 0.0)
    assert simulator.stop() and not simulator.is_tracking
    w, x, y, z = simulator.orientation
    assert w * w + x * x == pytest.approx(1.0) and y == z == 0.0
    assert simulator.predicted_orientation(0.01) == (w, x, y, z)
    assert simulator.position == quelta.Vec3(0.0, 0.0, 0.0)


def test_objects_that_are_not_there_are_at_rest(simulator):
    for index in (0, 7, -1):
        assert simulator.object_orientation(index) == quelta.Quaternion(1.0, 0.0, 0.0, 0.0)
        assert simulator.object_position(index) == quelta.Vec3(0.0, 0.0, 0.0)


def test_a_quaternion_converts_to_the_axes_of_unity():
    assert quelta.Quaternion(0.5, 1.0, 2.0, 3.0).to_unity() == (-0.5, 1.0, 2.0, -3.0)


def test_the_headset_turns_about_y_and_sees_objects_and_films(scripted):
    with quelta.Tracker.headset() as headset:
        wait_until(lambda: headset.is_connected)
        assert headset.start()
        wait_until(lambda: headset.position != (0.0, 0.0, 0.0) and abs(headset.orientation.y) > 0.2)
        assert headset.position == headset.object_position(0) == (0.5, 1.5, -2.0)
        assert headset.object_position(1) == (0.25, 0.75, -1.0)
        assert headset.object_orientation(1) == (0.0, 1.0, 0.0, 0.0)
        assert headset.stop()
        turned = headset.orientation
        assert max(abs(turned.x), abs(turned.z)) < 0.1
        assert headset.predicted_orientation(0.01) == turned
        headset.reset_yaw_origin()
        assert headset.orientation.y == pytest.approx(0.0, abs=0.01)
        with quelta.Camera(headset, 7) as camera:
            camera.update()
            assert camera.texture_id == 7


# The two meshes differ in every argument. The numbers come from the plain model of the lens.
@pytest.mark.parametrize("mesh, vertices, indices, position, textures", [
    ((2, 3, True, True), 12, [0, 3, 1], (0.0, -1 / 3, 0.0),
     [(0.5034533, 0.4074407), (0.5034828, 0.4066490), (0.5035208, 0.4056293)]),
    ((4, 2, False, False), 15, [0, 5, 1], (1.0, -1.0, -1.1), [(1.0, 0.0)] * 3)])
def test_a_mesh_has_the_arrays_of_the_plain_lens(mesh, vertices, indices, position, textures):
    with quelta.Mesh(*mesh) as made:
        assert made.indices.tolist()[:3] == indices
        assert made.positions.shape == (vertices, 3)
        assert made.positions.tolist()[4] == pytest.approx(position)
        arrays = (made.texture_r, made.texture_g, made.texture_b)
        assert [array.tolist()[4] for array in arrays] == [pytest.approx(t) for t in textures]


def test_the_arrays_of_a_mesh_outlive_it():
    mesh = quelta.Mesh(40, 40)
    positions, before = mesh.positions, mesh.positions.tolist()
    mesh.close()
    del mesh
    gc.collect()
    others = [quelta.Mesh(40, 40, left_eye=False) for _ in range(4)]
    assert positions.tolist() == before and len(others) == 4


def test_a_mesh_with_too_few_or_too_many_cells_is_refused():
    assert "0 x 5" in refusal(quelta.Mesh, 0, 5)
    assert "too many" in refusal(quelta.Mesh, 18919, 18919)
    assert "too many" in refusal(quelta.Mesh, 2**29, 2, True, False)


def test_a_closed_object_is_not_used():
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


def test_the_constants_are_those_of_the_library():
    assert quelta.params()._asdict() == pytest.approx({
        "eye_fov_deg": 126.5, "eye_resolution": 1024, "eye_stretch": 3.0, "eye_distort": True,
        "user_ipd_m": 0.0625, "user_neck_eye_h_m": 0.0805, "user_neck_eye_v_m": 0.075})


def test_a_missing_or_wrong_library_is_refused_with_a_sentence(unloaded, tmp_path):
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
    assert str(text) in refusal(quelta.load)  # the file lies beside the module
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
