"""Uses the module as it is installed in FOLDER: a headset in software, a capture of it, and its columns."""

import pathlib
import sys
import tempfile

import quelta

folder = pathlib.Path(sys.argv[1]).resolve()
assert folder in pathlib.Path(quelta.__file__).resolve().parents, quelta.__file__
assert folder in pathlib.Path(quelta.load()._name).resolve().parents, quelta.load()._name
assert pathlib.Path(quelta.__file__).with_name("py.typed").exists()
assert quelta.version() == quelta.__version__
quelta.set_log_handler(lambda level, line: None)
script = {"seconds": 0.3, "motion": {"kind": "angles", "points": [{"at": 0}, {"at": 0.3, "yaw": 40}]}}
with tempfile.TemporaryDirectory() as place:
    file = pathlib.Path(place, "turns.mcap")
    headset = quelta.ScriptedHeadset(script, fastest=True)
    with quelta.CaptureWriter(file) as capture:
        with quelta.Headset(headset, filter="core", capture=capture) as tracker:
            samples = list(tracker)
    orientations = quelta.replay(file)
assert len(samples) == len(orientations) == 300
assert tuple(orientations.tolist()[299]) == samples[299].pose.orientation != (1.0, 0.0, 0.0, 0.0)
