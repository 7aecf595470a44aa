"""The functions and records of qltkit/qltkit_c_api.h for ctypes."""

from __future__ import annotations

import ctypes
import os
import pathlib
import sys
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char_p, c_double, c_float, c_int32, c_int64,
                    c_uint8, c_uint32, c_uint64, c_void_p)
from typing import Any

OK, NONE, END = 0, 1, 2
NOW = -2**63

_FILE = "QueltaKit.dll" if sys.platform == "win32" else "libQueltaKit.so"


class Person(Structure):
    _fields_ = [("ipd_m", c_float), ("neck_eye_h_m", c_float), ("neck_eye_v_m", c_float)]


class Options(Structure):
    _fields_ = [("filter", c_int32), ("person", Person), ("capture", c_void_p)]


class Pose(Structure):
    _fields_ = [("orientation", c_float * 4), ("angular_velocity", c_float * 3),
                ("state", c_int32), ("time_ns", c_int64), ("device_time_us", c_int64),
                ("since_ns", c_int64), ("report_number", c_uint64), ("sequence", c_uint32),
                ("clamped", c_int32)]


class EyePose(Structure):
    _fields_ = [("position", c_float * 3), ("orientation", c_float * 4)]


class Sample(Structure):
    _fields_ = [("pose", Pose), ("arrival_ns", c_int64), ("gyroscope", c_float * 3),
                ("accelerometer", c_float * 3), ("magnetometer", c_float * 3),
                ("temperature", c_float), ("report", c_uint8 * 64)]


class Event(Structure):
    _fields_ = [("kind", c_int32), ("reports", c_uint32), ("time_ns", c_int64),
                ("number", c_uint64)]


class Truth(Structure):
    _fields_ = [("orientation", c_double * 4), ("sample_ns", c_int64), ("arrival_ns", c_int64),
                ("sequence", c_uint32), ("is_known", c_int32)]


class Columns(Structure):
    _fields_ = [("count", c_uint64), ("host_time_ns", c_void_p), ("device_time_us", c_void_p),
                ("sequence", c_void_p), ("gyroscope", c_void_p), ("accelerometer", c_void_p),
                ("magnetometer", c_void_p), ("temperature", c_void_p), ("reports", c_void_p)]


class Frame(Structure):
    _fields_ = [("width", c_uint32), ("height", c_uint32), ("step", c_uint32), ("size", c_uint32),
                ("encoding", c_char_p), ("pixels", c_void_p)]


class Item(Structure):
    _fields_ = [("kind", c_int32), ("level", c_int32), ("host_time_ns", c_int64),
                ("log_time_ns", c_uint64), ("publish_time_ns", c_uint64),
                ("device_time_us", c_int64), ("sequence", c_uint32), ("size", c_uint32),
                ("report", c_uint8 * 64), ("topic", c_char_p), ("name", c_char_p),
                ("text", c_char_p), ("data", c_void_p), ("frame", Frame)]


class Status(Structure):
    _fields_ = [("reports", c_uint64), ("written_reports", c_uint64),
                ("dropped_reports", c_uint64), ("dropped_others", c_uint64)]


LogHandler = CFUNCTYPE(None, c_int32, c_char_p, c_void_p)
EventHandler = CFUNCTYPE(None, POINTER(Event), c_void_p)

_OUT = POINTER(c_void_p)  # the place for a handle
_TEXT = POINTER(c_char_p)

# The types of the arguments. All functions return a result unless _RESULTS says otherwise.
_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "version": (), "last_error": (), "set_log_handler": (LogHandler, c_void_p),
    "ScriptedHeadset_Open": (c_char_p, c_int32, _OUT),
    "ScriptedHeadset_Parse": (c_char_p, c_int32, _OUT),
    "ScriptedHeadset_State": (c_void_p,),
    "ScriptedHeadset_Truth": (c_void_p, POINTER(Truth)),
    "ScriptedHeadset_Delete": (c_void_p,),
    "HeadTrackerOptions_Init": (POINTER(Options),),
    "HeadTracker_Open": (c_char_p, POINTER(Options), _OUT),
    "HeadTracker_OpenScripted": (c_void_p, POINTER(Options), _OUT),
    "HeadTracker_Delete": (c_void_p,),
    "HeadTracker_Latest": (c_void_p, POINTER(Pose)),
    "HeadTracker_At": (c_void_p, c_int64, POINTER(Pose)),
    "HeadTracker_EyePose": (c_void_p, POINTER(Pose), c_int32, POINTER(EyePose)),
    "HeadTracker_NextSample": (c_void_p, c_int32, POINTER(Sample)),
    "HeadTracker_NextEvent": (c_void_p, POINTER(Event)),
    "HeadTracker_SetEventHandler": (c_void_p, EventHandler, c_void_p),
    "HeadTracker_Recentre": (c_void_p,),
    "HeadTracker_Now": (c_void_p, POINTER(c_int64)),
    "HeadTracker_PredictionError": (c_void_p, c_double, POINTER(c_double), POINTER(c_double)),
    "Recording_Open": (c_char_p, _OUT),
    "Recording_Columns": (c_void_p, POINTER(Columns)),
    "Recording_Problem": (c_void_p, c_uint64),
    "Recording_Replay": (c_void_p, c_int32, c_void_p),
    "Recording_Delete": (c_void_p,),
    "CaptureReader_Open": (c_char_p, _OUT),
    "CaptureReader_Next": (c_void_p, POINTER(Item)),
    "CaptureReader_Metadata": (c_void_p, c_uint64, _TEXT, _TEXT, _TEXT),
    "CaptureReader_Problem": (c_void_p, c_uint64, POINTER(c_uint64), _TEXT),
    "CaptureReader_Position": (c_void_p, POINTER(c_uint64), POINTER(c_uint64)),
    "CaptureReader_Delete": (c_void_p,),
    "CaptureWriter_Open": (c_char_p, _TEXT, _OUT),
    "CaptureWriter_AddReport": (c_void_p, c_char_p, c_int64),
    "CaptureWriter_AddEvent": (c_void_p, c_char_p, c_char_p, c_int64),
    "CaptureWriter_AddText": (c_void_p, c_int32, c_char_p, c_int64),
    "CaptureWriter_AddFrame": (c_void_p, POINTER(Frame), c_int64),
    "CaptureWriter_Status": (c_void_p, POINTER(Status)),
    "CaptureWriter_Flush": (c_void_p,), "CaptureWriter_Close": (c_void_p,),
    "CaptureWriter_Delete": (c_void_p,),
}
_RESULTS = {"version": c_char_p, "last_error": c_char_p, "Recording_Problem": c_char_p}

_kit: Any = None


def kit() -> Any:
    """Loads QueltaKit beside QueltaSDK, declares its functions, and returns it."""
    global _kit
    from . import QueltaError, load
    sdk = load()
    if _kit is None:
        file = os.environ.get("QUELTA_KIT") or pathlib.Path(sdk._name).with_name(_FILE)
        try:
            library = ctypes.CDLL(str(file))
            for name, arguments in _FUNCTIONS.items():
                function = getattr(library, "qltkit_" + name)
                function.argtypes = arguments
                function.restype = None if name.endswith("_Delete") else _RESULTS.get(name, c_int32)
        except (OSError, AttributeError) as error:
            raise QueltaError(f"QueltaKit of this version is missing: put {_FILE} beside QueltaSDK"
                              f" ({error}).") from None
        _kit = library
    return _kit


def call(name: str, *arguments: Any) -> int:
    """Calls a function that returns a result. Raises QueltaError with the sentence of an error."""
    from . import QueltaError
    result = int(getattr(kit(), "qltkit_" + name)(*arguments))
    if result < 0:
        raise QueltaError(kit().qltkit_last_error().decode() + ".")
    return result


def bytes_at(address: int | None, size: int) -> bytes:
    """Copies bytes of the library."""
    return ctypes.string_at(address, size) if address else b""
