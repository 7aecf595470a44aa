/// @file
/// This header includes the whole class interface of the core. Programs usually begin with these
/// classes:
///
/// - Hmd tracks the head. SimulatorTracker does the same without a headset.
/// - TrackerListener gets every report of a tracker.
/// - DistortionMeshBuilder makes the mesh that pre-distorts an eye image for the lens.
/// - Camera gives the passthrough image as a texture.
/// - Params has the constants of the headset.
///
/// Bindings of other languages use qlt/qlt_c_api.h instead.
#pragma once

#include <qlt/Math/MathUtil.h>
#include <qlt/Math/Matrix.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Render/NvidiaRenderer.h>
#include <qlt/Render/Shaders.h>
#include <qlt/Runtime/Assert.h>
#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/EventHandle.h>
#include <qlt/Runtime/Log.h>
#include <qlt/Runtime/Usb.h>
#include <qlt/Runtime/VRException.h>
#include <qlt/Runtime/VRStatus.h>
#include <qlt/Sensors/Camera.h>
#include <qlt/Sensors/DistortionFunction.h>
#include <qlt/Sensors/DistortionMeshBuilder.h>
#include <qlt/Sensors/Hmd.h>
#include <qlt/Sensors/Params.h>
#include <qlt/Sensors/SensorFusion.h>
#include <qlt/Sensors/SensorReport.h>
#include <qlt/Sensors/SimulatorTracker.h>
#include <qlt/Sensors/Tracker.h>
#include <qlt/Sensors/TrackerListener.h>
#include <qlt/Version.h>
