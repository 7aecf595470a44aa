"""The Quelta Orbel Ixo in Python: the flat interface of QueltaSDK with three classes over it, and
the kit: poses with a time, headsets in software, recordings as columns, and captures.

The first use, or load(), loads the library. Orientations are right-handed, y up, -z forward. The
units are metres, seconds and radians. Any thread may call the getters. A failure of the system
inside the library is a C++ exception, which ends the process.
"""

from __future__ import annotations

import ctypes
import ctypes.util
import math
import os
import pathlib
import sys
import weakref
from ctypes import POINTER, c_bool, c_float, c_int32, c_uint32, c_void_p
from typing import Any, Callable, NamedTuple, Optional, Tuple, Type, TypeVar, Union

__all__ = ["Camera", "CaptureItem", "CaptureReader", "CaptureStatus", "CaptureWriter", "Event",
           "EventKind", "EyePose", "Frame", "Headset", "Mesh", "Params", "Person", "Pose", "PoseState",
           "Quaternion", "QueltaError", "Recording", "Sample", "ScriptedHeadset", "Tracker", "Truth",
           "Vec3", "load", "params", "read", "replay", "set_log_handler", "version"]
__version__ = "1.0.0"


class QueltaError(Exception):
    """An error of the SDK. The message is one sentence."""


# ---- The functions of qlt/qlt_c_api.h, without the prefix qlt_.


class _Camera(ctypes.Structure):
    """Each kind of handle has its own class, so that ctypes rejects a handle of another kind."""


class _Mesh(ctypes.Structure):
    pass


class _Tracker(ctypes.Structure):
    pass


_CAMERA, _MESH, _TRACKER = POINTER(_Camera), POINTER(_Mesh), POINTER(_Tracker)
_VALUE = POINTER(c_float)  # a Quaternion, Vec2 or Vec3: four, two or three floats

# The tuples hold the type of the result, then the types of the arguments.
_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "Camera_New": (_CAMERA, c_uint32),
    "Camera_Delete": (None, _CAMERA),
    "Camera_Update": (None, _CAMERA),
    "Camera_GetTextureId": (c_int32, _CAMERA),
    "Camera_GetWidth": (c_int32, _CAMERA),
    "Camera_GetHeight": (c_int32, _CAMERA),
    "DistortionMeshBuilder_New": (_MESH, c_int32, c_int32, c_bool, c_bool),
    "DistortionMeshBuilder_Delete": (None, _MESH),
    "DistortionMeshBuilder_GetNumVertices": (c_int32, _MESH),
    "DistortionMeshBuilder_GetNumIndices": (c_int32, _MESH),
    "DistortionMeshBuilder_GetPosition": (c_void_p, _MESH),
    "DistortionMeshBuilder_GetTextureR": (c_void_p, _MESH),
    "DistortionMeshBuilder_GetTextureG": (c_void_p, _MESH),
    "DistortionMeshBuilder_GetTextureB": (c_void_p, _MESH),
    "DistortionMeshBuilder_GetIndices": (c_void_p, _MESH),
    "DistortionMeshBuilder_BuildMesh": (None, _MESH),
    "Hmd_New": (_TRACKER,),
    "SimulationTracker_New": (_TRACKER,),
    "Tracker_Delete": (None, _TRACKER),
    "Tracker_IsConnected": (c_bool, _TRACKER),
    "Tracker_IsTracking": (c_bool, _TRACKER),
    "Tracker_GetOrientation": (None, _TRACKER, _VALUE),
    "Tracker_GetPredictedOrientation": (None, _TRACKER, _VALUE, c_float),
    "Tracker_GetPosition": (None, _TRACKER, _VALUE),
    "Tracker_GetObjectPosition": (None, _TRACKER, _VALUE, c_int32),
    "Tracker_GetObjectOrientation": (None, _TRACKER, _VALUE, c_int32),
    "Tracker_ResetYawOrigin": (None, _TRACKER),
    "Tracker_Start": (c_bool, _TRACKER),
    "Tracker_Stop": (c_bool, _TRACKER),
    "Quaternion_New": (_VALUE,),
    "Quaternion_New4": (_VALUE, c_float, c_float, c_float, c_float),
    "Quaternion_Delete": (None, _VALUE),
    "Quaternion_w": (c_float, _VALUE),
    "Quaternion_x": (c_float, _VALUE),
    "Quaternion_y": (c_float, _VALUE),
    "Quaternion_z": (c_float, _VALUE),
    "Quaternion_set_w": (None, _VALUE, c_float),
    "Quaternion_set_x": (None, _VALUE, c_float),
    "Quaternion_set_y": (None, _VALUE, c_float),
    "Quaternion_set_z": (None, _VALUE, c_float),
    "Quaternion_ConvertToUnity": (None, _VALUE),
    "Vec2_New": (_VALUE,),
    "Vec2_Delete": (None, _VALUE),
    "Vec2_x": (c_float, _VALUE),
    "Vec2_y": (c_float, _VALUE),
    "Vec3_New": (_VALUE,),
    "Vec3_Delete": (None, _VALUE),
    "Vec3_x": (c_float, _VALUE),
    "Vec3_y": (c_float, _VALUE),
    "Vec3_z": (c_float, _VALUE),
    "Params_EYE_FOV_DEG": (c_float,),
    "Params_EYE_RESOLUTION": (c_int32,),
    "Params_EYE_STRETCH": (c_float,),
    "Params_EYE_DISTORT": (c_bool,),
    "Params_USER_IPD_M": (c_float,),
    "Params_USER_NECK_EYE_H_M": (c_float,),
    "Params_USER_NECK_EYE_V_M": (c_float,),
}

_FILE = "QueltaSDK.dll" if sys.platform == "win32" else "libQueltaSDK.so"
_sdk: Any = None
_Value = TypeVar("_Value", "Quaternion", "Vec3")
_Path = Union[str, "os.PathLike[str]"]


def load(path: Optional[_Path] = None) -> Any:
    """Loads the library, declares its functions and returns it.

    The file is `path`, or else the value of the environment variable QUELTA_SDK, or else the file
    beside this module, or else the one of the installation that the module is in, or else the one
    that the system finds. A call without a path loads the
    library once. Raises QueltaError.
    """
    global _sdk
    if _sdk is None or path is not None:
        _sdk = _declare(_open(path))
    return _sdk


def _open(path: Optional[_Path]) -> ctypes.CDLL:
    named = path or os.environ.get("QUELTA_SDK")
    beside = pathlib.Path(__file__).resolve().with_name(_FILE)
    if not beside.exists() and len(beside.parents) > 5:  # PREFIX/share/QueltaSDK/bindings/python/quelta
        installed = beside.parents[5] / ("bin" if sys.platform == "win32" else "lib") / _FILE
        beside = installed if installed.exists() else beside
    if named or beside.exists():
        file = os.path.abspath(named or beside)
        if not os.path.isfile(file):
            raise QueltaError(f"QueltaSDK is missing: there is no file {file}.")
    elif sys.platform == "win32":  # because Python does not search the PATH there
        file = ctypes.util.find_library("QueltaSDK") or _FILE
    else:
        file = _FILE
    try:
        return ctypes.CDLL(file)
    except OSError as error:
        if os.path.isfile(file):
            bits = 64 if sys.maxsize > 2**32 else 32
            raise QueltaError(f"{file} is no library for this {bits}-bit Python: {error}.") from None
        raise QueltaError(f"QueltaSDK is missing: name {_FILE} by the variable QUELTA_SDK, or put it"
                          f" beside {beside.parent} or where the system finds it ({error}).") from None


def _declare(sdk: Any) -> Any:
    for name, (result, *arguments) in _FUNCTIONS.items():
        try:
            function = getattr(sdk, "qlt_" + name)
        except AttributeError:
            raise QueltaError(f"{sdk._name} is not QueltaSDK, or another version of it: it has no"
                              f" function qlt_{name}.") from None
        function.restype = result
        function.argtypes = arguments
    return sdk


# ---- Values.


class Vec3(NamedTuple):
    """A vector."""
    x: float
    y: float
    z: float


class Quaternion(NamedTuple):
    """A rotation, with the scalar part first."""
    w: float
    x: float
    y: float
    z: float

    def to_unity(self) -> Quaternion:
        """Returns the same orientation in the axes of Unity."""
        value = (c_float * 4)(*self)
        load().qlt_Quaternion_ConvertToUnity(value)
        return Quaternion(*value)


class Params(NamedTuple):
    """The constants of the headset and of a default user, in degrees, pixels and metres."""
    eye_fov_deg: float
    eye_resolution: int
    eye_stretch: float
    eye_distort: bool
    user_ipd_m: float
    user_neck_eye_h_m: float
    user_neck_eye_v_m: float


def params() -> Params:
    """Returns the constants."""
    return Params(*(getattr(load(), "qlt_Params_" + name.upper())() for name in Params._fields))


# ---- Objects.


_Self = TypeVar("_Self", bound="_Closing")


class _Closing:
    """A base for objects that a with statement closes at its end."""

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Ends the object."""


class _Owned(_Closing):
    """An object of the library. It is deleted by close(), by Python's garbage collection, or at the
    end of the program, whichever comes first."""

    def __init__(self, new: str, delete: Callable[[Any, Any], None], *arguments: Any) -> None:
        self._sdk = load()
        pointer = getattr(self._sdk, new)(*arguments)
        if not pointer:
            raise QueltaError("There is no memory left for QueltaSDK.")
        self._pointer = pointer
        self._deleter = weakref.finalize(self, delete, self._sdk, pointer)

    @property
    def _handle(self) -> Any:
        if not self._deleter.alive:
            raise QueltaError(f"This {type(self).__name__} is closed.")
        return self._pointer

    def close(self) -> None:
        """Deletes the object. A second call does nothing."""
        self._deleter()


class Tracker(_Owned):
    """A source of head poses. Tracker.headset() and Tracker.simulator() make one.

    close() stops the tracker.
    """

    def __init__(self, kind: str, new: str) -> None:
        super().__init__(new, self._end)
        self.kind = kind

    @classmethod
    def headset(cls) -> Tracker:
        """Makes a tracker for the headset, which may be plugged in at any time."""
        return cls("headset", "qlt_Hmd_New")

    @classmethod
    def simulator(cls) -> Tracker:
        """Makes a tracker that moves without hardware."""
        return cls("simulator", "qlt_SimulationTracker_New")

    @staticmethod
    def _end(sdk: Any, tracker: Any) -> None:
        if sdk.qlt_Tracker_IsTracking(tracker):
            sdk.qlt_Tracker_Stop(tracker)
        sdk.qlt_Tracker_Delete(tracker)

    def start(self) -> bool:
        """Starts the tracker."""
        return bool(self._sdk.qlt_Tracker_Start(self._handle))

    def stop(self) -> bool:
        """Stops the tracker and waits for its threads."""
        return bool(self._sdk.qlt_Tracker_Stop(self._handle))

    @property
    def is_connected(self) -> bool:
        """True when the device is connected. The call waits while a report is being read."""
        return bool(self._sdk.qlt_Tracker_IsConnected(self._handle))

    @property
    def is_tracking(self) -> bool:
        """True when the tracker is started."""
        return bool(self._sdk.qlt_Tracker_IsTracking(self._handle))

    @property
    def orientation(self) -> Quaternion:
        """The orientation of the head."""
        return self._value(Quaternion, self._sdk.qlt_Tracker_GetOrientation)

    def predicted_orientation(self, look_ahead: float) -> Quaternion:
        """Returns the last orientation with the yaw origin applied once more.

        Both kinds of tracker ignore look_ahead, which is in seconds.
        """
        return self._value(Quaternion, self._sdk.qlt_Tracker_GetPredictedOrientation, look_ahead)

    @property
    def position(self) -> Vec3:
        """The position of the head in metres."""
        return self._value(Vec3, self._sdk.qlt_Tracker_GetPosition)

    def object_orientation(self, index: int) -> Quaternion:
        """Returns the orientation of an object that the host service tracks. A missing object has
        the identity."""
        return self._value(Quaternion, self._sdk.qlt_Tracker_GetObjectOrientation, index)

    def object_position(self, index: int) -> Vec3:
        """Returns the position of an object that the host service tracks, in metres. A missing object
        has zero."""
        return self._value(Vec3, self._sdk.qlt_Tracker_GetObjectPosition, index)

    def reset_yaw_origin(self) -> None:
        """Makes the current heading the direction of yaw 0."""
        self._sdk.qlt_Tracker_ResetYawOrigin(self._handle)

    def _value(self, kind: Type[_Value], getter: Any, *arguments: Any) -> _Value:
        value = (c_float * len(kind._fields))()
        getter(self._handle, value, *arguments)
        return kind(*value)


class _Builder(_Owned):
    def __init__(self, *arguments: Any) -> None:
        super().__init__("qlt_DistortionMeshBuilder_New", self._end, *arguments)
        self.get("BuildMesh")

    @staticmethod
    def _end(sdk: Any, builder: Any) -> None:
        sdk.qlt_DistortionMeshBuilder_Delete(builder)

    def get(self, name: str) -> Any:
        return getattr(self._sdk, "qlt_DistortionMeshBuilder_" + name)(self._handle)


class Mesh(_Closing):
    """The lens mesh of one eye. Draw it over the eye's viewport without back-face culling.

    The indices are those of a triangle list or of one strip. The arrays are read-only memoryviews of
    the library's memory, one row per vertex; tolist() copies one into lists. A view keeps that memory
    alive, even after the mesh is closed or deleted.
    """

    def __init__(self, columns: int, rows: int, left_eye: bool = True,
                 triangle_list: bool = True) -> None:
        if columns < 1 or rows < 1:
            raise QueltaError(f"A mesh of {columns} x {rows} cells has nothing to draw.")
        indices = 6 * columns * rows if triangle_list else 2 * rows * (columns + 2) - 2
        if indices >= 2**31:
            raise QueltaError(f"A mesh of {columns} x {rows} cells has too many indices.")
        self._builder: Optional[_Builder] = _Builder(columns, rows, left_eye, triangle_list)

    @property
    def positions(self) -> memoryview:
        """Rows of x, y and depth. x and y are in the viewport, from -1 to 1. The depth is 0 inside
        the lens and -1.1 outside."""
        return self._vertices("GetPosition", 3)

    @property
    def texture_r(self) -> memoryview:
        """Rows of texture coordinates of the red channel, from 0 to 1."""
        return self._vertices("GetTextureR", 2)

    @property
    def texture_g(self) -> memoryview:
        """Rows of texture coordinates of the green channel."""
        return self._vertices("GetTextureG", 2)

    @property
    def texture_b(self) -> memoryview:
        """Rows of texture coordinates of the blue channel."""
        return self._vertices("GetTextureB", 2)

    @property
    def indices(self) -> memoryview:
        """The indices of the vertices."""
        return self._array("GetIndices", "i", [self._open_builder().get("GetNumIndices")])

    def close(self) -> None:
        """Releases the memory as soon as no view uses it any more."""
        self._builder = None

    def _vertices(self, getter: str, columns: int) -> memoryview:
        return self._array(getter, "f", [self._open_builder().get("GetNumVertices"), columns])

    def _array(self, getter: str, kind: str, shape: list[int]) -> memoryview:
        builder = self._open_builder()
        # Floats and indices have four bytes each. memoryview casts only from bytes.
        array: Any = (ctypes.c_ubyte * (4 * math.prod(shape))).from_address(builder.get(getter))
        array.builder = builder
        return memoryview(array).cast("B").cast(kind, shape).toreadonly()

    def _open_builder(self) -> _Builder:
        if self._builder is None:
            raise QueltaError("This Mesh is closed.")
        return self._builder


class Camera(_Owned):
    """The headset's passthrough image as an OpenGL texture.

    Call every operation, and close(), on the thread whose OpenGL context is current. A process has
    one camera at a time.
    """

    def __init__(self, headset: Tracker, texture_id: int = 0) -> None:
        """headset is a tracker that is connected. A texture_id of 0 makes a new texture name. Without a
        headset the library would end the process, so this raises QueltaError instead."""
        if headset.kind != "headset" or not headset.is_connected:
            raise QueltaError("The camera needs a headset, and none is connected.")
        super().__init__("qlt_Camera_New", self._end, texture_id)

    @staticmethod
    def _end(sdk: Any, camera: Any) -> None:
        sdk.qlt_Camera_Delete(camera)

    def update(self) -> None:
        """Waits for the next frame without a time limit, and uploads it."""
        self._sdk.qlt_Camera_Update(self._handle)

    @property
    def texture_id(self) -> int:
        """The name of the OpenGL texture."""
        return int(self._sdk.qlt_Camera_GetTextureId(self._handle))

    @staticmethod
    def size() -> Tuple[int, int]:
        """Returns the width and height of the image in pixels. It needs no camera."""
        return load().qlt_Camera_GetWidth(None), load().qlt_Camera_GetHeight(None)


# The kit uses the names above.
from .kit import (CaptureItem, CaptureReader, CaptureStatus, CaptureWriter, Event,  # noqa: E402
                  EventKind, EyePose, Frame, Headset, Person, Pose, PoseState, Recording, Sample,
                  ScriptedHeadset, Truth, read, replay, set_log_handler, version)
