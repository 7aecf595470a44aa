"""Poses with a time, headsets in software, recordings as columns, and captures.

Times that end in _ns are nanoseconds of a clock that never goes back; time.monotonic_ns() is that
clock for a headset in real time. Any thread may call a function, but one object is closed by one
thread while no other thread uses it. Errors raise QueltaError.
"""

from __future__ import annotations

import atexit
import ctypes
import enum
import json
import os
import struct
import weakref
from ctypes import byref, c_char_p, c_double, c_int64, c_uint64, c_void_p
from typing import Any, Callable, Dict, Iterator, List, Mapping, NamedTuple, Optional, Tuple, Union

from . import Quaternion, QueltaError, Vec3, _Closing, _native
from ._native import call

__all__ = ["CaptureItem", "CaptureReader", "CaptureStatus", "CaptureWriter", "Event", "EventKind",
           "EyePose", "Frame", "Headset", "Person", "Pose", "PoseState", "Recording", "Sample",
           "ScriptedHeadset", "Truth", "read", "replay", "set_log_handler", "version"]

Path = Union[str, "os.PathLike[str]"]

# A column is a numpy.ndarray when NumPy is installed, and otherwise a memoryview.
Column = Any

_FILTERS = {"kit": 0, "core": 1}


def version() -> str:
    """Returns the version of the library, for example "1.0.0"."""
    return str(_native.kit().qltkit_version().decode())


# ---- Values.


class PoseState(enum.IntEnum):
    """The state of a tracker."""
    NEVER_SEEN = 0
    TRACKING = 1
    HELD = 2
    LOST = 3


class EventKind(enum.IntEnum):
    """The kind of a change in the stream of reports."""
    CONNECTED = 0
    LOST = 1
    BACK = 2
    GAP = 3


class Person(NamedTuple):
    """The measures of a user in metres: between the pupils, and from the neck to the eyes."""
    ipd_m: float = 0.0625
    neck_eye_h_m: float = 0.0805
    neck_eye_v_m: float = 0.075


class Pose(NamedTuple):
    """The pose of the head at one moment.

    angular_velocity is in radians per second about the head's own axes. state is that of the tracker
    at the time of the call, and since_ns is its beginning. clamped says that time_ns is only the
    nearest time that the tracker knows.
    """
    orientation: Quaternion
    angular_velocity: Vec3
    state: PoseState
    time_ns: int
    device_time_us: int
    since_ns: int
    report_number: int
    sequence: int
    clamped: bool


class EyePose(NamedTuple):
    """The pose of an eye. The position is in metres from the neck."""
    position: Vec3
    orientation: Quaternion


class Sample(NamedTuple):
    """A report of the headset, and the pose that includes it.

    The sensors are in radians per second, g, gauss and degrees Celsius. report is its 64 bytes.
    """
    pose: Pose
    arrival_ns: int
    gyroscope: Vec3
    accelerometer: Vec3
    magnetometer: Vec3
    temperature: float
    report: bytes


class Event(NamedTuple):
    """A change in the stream of reports. reports is the number of missing reports of a gap."""
    kind: EventKind
    reports: int
    time_ns: int
    number: int


class Truth(NamedTuple):
    """The true values behind the last report of a ScriptedHeadset. orientation is None if unknown."""
    orientation: Optional[Quaternion]
    sample_ns: int
    arrival_ns: int
    sequence: int


class Frame(NamedTuple):
    """A picture of the camera: step bytes from one row to the next, the top row first."""
    width: int
    height: int
    step: int
    encoding: str
    pixels: bytes


class CaptureItem(NamedTuple):
    """A message of a capture. kind is "report", "event", "text", "frame" or "other".

    log_time_ns is Unix time, and host_time_ns is the same moment by the writer's steady clock.
    publish_time_ns is Unix time at the pace of the headset's clock.
    """
    kind: str
    host_time_ns: int
    log_time_ns: int
    publish_time_ns: int
    device_time_us: int
    sequence: int
    level: int
    report: bytes
    topic: str
    name: str
    text: str
    data: bytes
    frame: Optional[Frame]


class CaptureStatus(NamedTuple):
    """The numbers of reports that a writer has accepted, written and dropped, and of other drops."""
    reports: int
    written_reports: int
    dropped_reports: int
    dropped_others: int


def _pose(pose: _native.Pose) -> Pose:
    return Pose(Quaternion(*pose.orientation), Vec3(*pose.angular_velocity), PoseState(pose.state),
                pose.time_ns, pose.device_time_us, pose.since_ns, pose.report_number,
                pose.sequence, bool(pose.clamped))


def _event(event: _native.Event) -> Event:
    return Event(EventKind(event.kind), event.reports, event.time_ns, event.number)


# ---- Objects.


class _Object(_Closing):
    """An object of the kit, which close(), the garbage collection or the end of the program
    deletes."""

    def __init__(self, opener: str, *arguments: Any) -> None:
        handle = c_void_p()
        call(opener, *arguments, byref(handle))
        delete = getattr(_native.kit(), f"qltkit_{opener.split('_')[0]}_Delete")
        self._pointer = handle
        self._deleter = weakref.finalize(self, delete, handle)

    @property
    def _handle(self) -> c_void_p:
        if not self._deleter.alive:
            raise QueltaError(f"This {type(self).__name__} is closed.")
        return self._pointer

    def close(self) -> None:
        """Ends the object. A second call does nothing."""
        self._deleter()


class ScriptedHeadset(_Object):
    """A headset in software that does what a script or a recording says.

    source is a file (.json, .mcap or .bin), or the fields of a script as a dict. With fastest it does
    not wait for the time: its clock follows the reads.
    """

    def __init__(self, source: Union[Path, Mapping[str, Any]], *, fastest: bool = False) -> None:
        if isinstance(source, Mapping):
            super().__init__("ScriptedHeadset_Parse", json.dumps(source).encode(), int(fastest))
        else:
            super().__init__("ScriptedHeadset_Open", os.fspath(source).encode(), int(fastest))

    @property
    def is_over(self) -> bool:
        """True when the last report has been read."""
        return call("ScriptedHeadset_State", self._handle) == _native.END

    @property
    def truth(self) -> Truth:
        """The true values behind the last report that was read."""
        truth = _native.Truth()
        call("ScriptedHeadset_Truth", self._handle, byref(truth))
        orientation = Quaternion(*truth.orientation) if truth.is_known else None
        return Truth(orientation, truth.sample_ns, truth.arrival_ns, truth.sequence)


class Headset(_Object):
    """A tracker of a headset: "headset", "simulator", a file, or a ScriptedHeadset.

    A loop over it gives every report with its time as a Sample. It ends when a file or a script ends:

        for sample in quelta.Headset("headset"):
            print(sample.pose.time_ns, sample.pose.orientation)

    filter is "kit" or "core". capture gets every report, connection and loss.
    """

    def __init__(self, source: Union[Path, ScriptedHeadset] = "headset", *, filter: str = "kit",
                 person: Person = Person(), capture: Optional[CaptureWriter] = None) -> None:
        options = _native.Options(_filter(filter), person, capture and capture._handle)
        if isinstance(source, ScriptedHeadset):
            super().__init__("HeadTracker_OpenScripted", source._handle, byref(options))
        else:
            super().__init__("HeadTracker_Open", os.fspath(source).encode(), byref(options))
        self._callback: Any = None

    @property
    def latest(self) -> Pose:
        """The pose of the last report. Never waits."""
        return self._ask_pose("HeadTracker_Latest")

    def at(self, time_ns: int) -> Pose:
        """Returns the pose at a time: in the last two seconds, or predicted up to 100 ms ahead."""
        return self._ask_pose("HeadTracker_At", time_ns)

    @property
    def now_ns(self) -> int:
        """The current time of the tracker's clock."""
        now = c_int64()
        call("HeadTracker_Now", self._handle, byref(now))
        return now.value

    def eye_pose(self, eye: int, pose: Optional[Pose] = None) -> EyePose:
        """Returns the pose of the left (0) or right (1) eye for a pose of the head, or for the latest
        one."""
        head, found = _native.Pose(), _native.EyePose()
        head.orientation[:] = (pose or self.latest).orientation
        call("HeadTracker_EyePose", self._handle, byref(head), eye, byref(found))
        return EyePose(Vec3(*found.position), Quaternion(*found.orientation))

    def recentre(self) -> bool:
        """Makes the current heading the forward direction. False before the first report."""
        return call("HeadTracker_Recentre", self._handle) == _native.OK

    def prediction_error(self, seconds: float) -> Tuple[float, float]:
        """Returns the RMS error of predictions for 0 to 0.1 s ahead in radians: over all reports,
        and over about the last five seconds."""
        total, recent = c_double(), c_double()
        call("HeadTracker_PredictionError", self._handle, seconds, byref(total), byref(recent))
        return total.value, recent.value

    def next_sample(self, timeout: float = 1.0) -> Optional[Sample]:
        """Waits up to timeout seconds for the next sample. None when none has come, and when a file or
        a script has ended."""
        return self._take(timeout)[1]

    def __iter__(self) -> Headset:
        return self

    def __next__(self) -> Sample:
        result, sample = _native.NONE, None
        while result == _native.NONE:
            result, sample = self._take(0.1)  # short, so that Ctrl-C is noticed
        if sample is None:
            raise StopIteration
        return sample

    def _take(self, timeout: float) -> Tuple[int, Optional[Sample]]:
        sample = _native.Sample()
        result = call("HeadTracker_NextSample", self._handle, int(timeout * 1000), byref(sample))
        if result != _native.OK:
            return result, None
        return result, Sample(
            _pose(sample.pose), sample.arrival_ns, Vec3(*sample.gyroscope),
            Vec3(*sample.accelerometer), Vec3(*sample.magnetometer), sample.temperature,
            bytes(sample.report))

    def events(self) -> Iterator[Event]:
        """Gives the events that it has not given yet, without waiting."""
        event = _native.Event()
        while call("HeadTracker_NextEvent", self._handle, byref(event)) == _native.OK:
            yield _event(event)

    def on_event(self, handler: Optional[Callable[[Event], None]]) -> None:
        """Sets the function that a thread of the tracker calls for each event; None removes it."""
        callback = _native.EventHandler(0)
        if handler is not None:
            function = handler
            callback = _native.EventHandler(lambda event, _: function(_event(event.contents)))
        call("HeadTracker_SetEventHandler", self._handle, callback, None)
        self._callback = callback  # the library holds no reference

    def close(self) -> None:
        """Stops the tracking. The call waits for a running event handler."""
        super().close()

    def _ask_pose(self, name: str, *arguments: Any) -> Pose:
        pose = _native.Pose()
        call(name, self._handle, *arguments, byref(pose))
        return _pose(pose)


class _Reports(_Object):
    def __init__(self, file: Path) -> None:
        super().__init__("Recording_Open", os.fspath(file).encode())


class Recording(_Closing):
    """The reports of a capture or of a file of reports, as columns with a row for each report.

    A column is a NumPy array when NumPy is installed, and otherwise a memoryview. It is read-only
    memory of the library, which stays valid as long as the column exists. Vectors have three
    columns: x right, y up, z back.
    """

    _COLUMNS: Dict[str, Tuple[str, int]] = {
        "host_time_ns": ("q", 1), "device_time_us": ("q", 1), "sequence": ("I", 1),
        "gyroscope": ("f", 3), "accelerometer": ("f", 3), "magnetometer": ("f", 3),
        "temperature": ("f", 1), "reports": ("B", 64)}

    def __init__(self, file: Path) -> None:
        self._reports: Optional[_Reports] = _Reports(file)
        self._columns = _native.Columns()
        call("Recording_Columns", self._reports._handle, byref(self._columns))

    def __len__(self) -> int:
        return int(self._columns.count)

    def __getitem__(self, name: str) -> Column:
        if name not in self._COLUMNS:
            raise KeyError(name)
        kind, width = self._COLUMNS[name]
        address = getattr(self._columns, name)
        if address is None:
            raise QueltaError("The file holds no host times.")
        size = struct.calcsize(kind) * width * len(self)
        array: Any = (ctypes.c_ubyte * size).from_address(address)
        array.owner = self._open_reports()
        return _column(memoryview(array), kind, [len(self), width][:1 + (width > 1)])

    @property
    def columns(self) -> Dict[str, Column]:
        """All columns that the file has, by their names."""
        return {name: self[name] for name in self._COLUMNS if getattr(self._columns, name)}

    @property
    def problems(self) -> List[str]:
        """Sentences about damaged or missing parts of the file."""
        texts: List[str] = []
        while True:
            text = _native.kit().qltkit_Recording_Problem(self._open_reports()._handle, len(texts))
            if text is None:
                return texts
            texts.append(text.decode())

    def close(self) -> None:
        """Releases the memory as soon as no column uses it any more."""
        self._reports = None

    def replay(self, filter: str = "core") -> Column:
        """Computes the orientation after each report: rows of w, x, y and z. "core" gives the bits of
        `qlt replay --csv`."""
        array = (ctypes.c_ubyte * (16 * len(self)))()
        call("Recording_Replay", self._open_reports()._handle, _filter(filter), array)
        return _column(memoryview(array), "f", [len(self), 4])

    def _open_reports(self) -> _Reports:
        if self._reports is None:
            raise QueltaError("This Recording is closed.")
        return self._reports


def read(file: Path) -> Recording:
    """Reads a capture (.mcap) or a file of reports (.bin) into columns."""
    return Recording(file)


def replay(file: Path, filter: str = "core") -> Column:
    """Computes the orientation after each report of a file: rows of w, x, y and z. filter is "core",
    which gives the bits of `qlt replay --csv`, or "kit"."""
    with Recording(file) as recording:
        return recording.replay(filter)


class CaptureReader(_Object):
    """Reads a capture: a loop over it gives one CaptureItem after another."""

    _KINDS = ("report", "event", "text", "frame", "other")

    def __init__(self, file: Path) -> None:
        super().__init__("CaptureReader_Open", os.fspath(file).encode())

    def __iter__(self) -> CaptureReader:
        return self

    def __next__(self) -> CaptureItem:
        item = _native.Item()
        if call("CaptureReader_Next", self._handle, byref(item)) == _native.END:
            raise StopIteration
        frame = item.frame
        picture = Frame(frame.width, frame.height, frame.step, frame.encoding.decode(),
                        _native.bytes_at(frame.pixels, frame.size))
        return CaptureItem(self._KINDS[item.kind], item.host_time_ns, item.log_time_ns,
                           item.publish_time_ns, item.device_time_us, item.sequence, item.level,
                           bytes(item.report) if item.kind == 0 else b"", item.topic.decode(), item.name.decode(),
                           item.text.decode(), _native.bytes_at(item.data, item.size),
                           picture if frame.pixels else None)

    @property
    def metadata(self) -> Dict[str, Dict[str, str]]:
        """The metadata records that were read so far. The writer makes the record "capture"."""
        records: Dict[str, Dict[str, str]] = {}
        record, key, value = c_char_p(), c_char_p(), c_char_p()
        index = 0
        while call("CaptureReader_Metadata", self._handle, index, byref(record), byref(key),
                   byref(value)) == _native.OK:
            entries = records.setdefault((record.value or b"").decode(), {})
            entries[(key.value or b"").decode()] = (value.value or b"").decode()
            index += 1
        return records

    @property
    def problems(self) -> List[Tuple[int, str]]:
        """The offsets of damaged or missing parts that were found so far, each with a sentence."""
        found: List[Tuple[int, str]] = []
        offset, text = c_uint64(), c_char_p()
        while call("CaptureReader_Problem", self._handle, len(found), byref(offset),
                   byref(text)) == _native.OK:
            found.append((offset.value, (text.value or b"").decode()))
        return found

    @property
    def position(self) -> Tuple[int, int]:
        """The current position and the size of the file in bytes."""
        position, size = c_uint64(), c_uint64()
        call("CaptureReader_Position", self._handle, byref(position), byref(size))
        return position.value, size.value


class CaptureWriter(_Object):
    """Writes a capture. The file has a temporary name until close().

    Adding never waits. A host time of None is the current time. An item without room is dropped, and
    status counts it.
    """

    def __init__(self, file: Path, metadata: Mapping[str, str] = {}) -> None:
        texts = [text.encode() for entry in metadata.items() for text in entry]
        super().__init__("CaptureWriter_Open", os.fspath(file).encode(),
                         (c_char_p * (len(texts) + 1))(*texts, None))

    def add_report(self, report: bytes, host_time_ns: Optional[int] = None) -> None:
        """Adds a report of 64 bytes."""
        if len(report) != 64:
            raise QueltaError(f"A report has 64 bytes, and this one has {len(report)}.")
        call("CaptureWriter_AddReport", self._handle, report, _time(host_time_ns))

    def add_event(self, name: str, detail: str = "", host_time_ns: Optional[int] = None) -> None:
        """Adds an event, for example "connected"."""
        call("CaptureWriter_AddEvent", self._handle, name.encode(), detail.encode(),
             _time(host_time_ns))

    def add_text(self, level: int, text: str, host_time_ns: Optional[int] = None) -> None:
        """Adds a text. The level is 1 debug, 2 information, 3 warning, 4 error, 5 fatal or 0."""
        call("CaptureWriter_AddText", self._handle, level, text.encode(), _time(host_time_ns))

    def add_frame(self, frame: Frame, host_time_ns: Optional[int] = None) -> None:
        """Adds a picture of the camera, whose pixels are step * height bytes."""
        pixels = ctypes.create_string_buffer(frame.pixels, max(1, len(frame.pixels)))
        native = _native.Frame(frame.width, frame.height, frame.step, len(frame.pixels),
                               frame.encoding.encode(), ctypes.addressof(pixels))
        call("CaptureWriter_AddFrame", self._handle, byref(native), _time(host_time_ns))

    @property
    def status(self) -> CaptureStatus:
        """The numbers of reports that were accepted, written and dropped so far, and of other drops."""
        status = _native.Status()
        call("CaptureWriter_Status", self._handle, byref(status))
        return CaptureStatus(status.reports, status.written_reports, status.dropped_reports,
                             status.dropped_others)

    def flush(self) -> None:
        """Gives everything to the system, and waits for the disk."""
        call("CaptureWriter_Flush", self._handle)

    def close(self) -> None:
        """Completes the capture. QueltaError says where the file is when something is missing."""
        if self._deleter.alive:
            try:
                call("CaptureWriter_Close", self._handle)
            finally:
                super().close()


def set_log_handler(handler: Optional[Callable[[int, str], None]]) -> None:
    """Passes each line that the library prints to handler(level, line) instead: level 0 is
    information, 1 is an error. None removes it after its running calls have returned. Any thread
    of the library may call the handler, which must not use a tracker."""
    global _log_callback
    callback = _native.LogHandler(0)
    if handler is not None:
        function = handler
        callback = _native.LogHandler(
            lambda level, line, _: function(level, line.decode(errors="replace")))
        atexit.register(set_log_handler, None)
    call("set_log_handler", callback, None)
    _log_callback = callback  # the library holds no reference


_log_callback: Any = None


def _filter(name: str) -> int:
    if name not in _FILTERS:
        raise QueltaError(f"There is no filter {name!r}; the filters are 'kit' and 'core'.")
    return _FILTERS[name]


def _time(host_time_ns: Optional[int]) -> int:
    return _native.NOW if host_time_ns is None else host_time_ns


def _column(memory: memoryview, kind: str, shape: List[int]) -> Column:
    view = memory.cast("B").cast(kind, shape).toreadonly()
    try:
        import numpy
    except ImportError:
        return view
    return numpy.asarray(view)
