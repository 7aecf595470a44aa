/// @file
/// This header includes every public header of QueltaKit. The kit stands on the core and uses only
/// its public headers. It has three rooms:
///
/// - Tracking gives the pose of the head at any moment. HeadTracker is the class for programs;
///   OrientationEstimator, Predictor and ClockFit are its parts for programs with their own input.
/// - Headset makes and observes reports. OpenSource and ScriptedHeadset give a headset in software,
///   RecordingPlayer plays a recording, and ReportTap shows the reports of any host to a sink.
/// - Capture stores reports. CaptureWriter and CaptureReader handle captures, which are MCAP files,
///   and LoadRecording reads plain recordings.
///
/// All failures are exceptions of the class Error. Link the CMake target `QueltaSDK::QueltaKit`.
#pragma once

#include <qltkit/Capture/CaptureItem.h>
#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Capture/InputFile.h>
#include <qltkit/Capture/JsonCaptureWriter.h>
#include <qltkit/Capture/McapWriter.h>
#include <qltkit/Capture/OutputFile.h>
#include <qltkit/Capture/Recording.h>
#include <qltkit/Capture/RecordingCheck.h>
#include <qltkit/Error.h>
#include <qltkit/Headset/CaptureRecorder.h>
#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/HeadsetScript.h>
#include <qltkit/Headset/RecordingPlayer.h>
#include <qltkit/Headset/ReportFollower.h>
#include <qltkit/Headset/ReportRecorder.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Headset/SoftwareHeadset.h>
#include <qltkit/Headset/Source.h>
#include <qltkit/Tracking/Calibration.h>
#include <qltkit/Tracking/Calibrator.h>
#include <qltkit/Tracking/ClockFit.h>
#include <qltkit/Tracking/Comparison.h>
#include <qltkit/Tracking/HeadTracker.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/OrientationState.h>
#include <qltkit/Tracking/Pose.h>
#include <qltkit/Tracking/PredictionTerms.h>
#include <qltkit/Tracking/Predictor.h>
#include <qltkit/Tracking/Replay.h>
#include <qltkit/Tracking/Rotation.h>
#include <qltkit/Tracking/TrackerEvent.h>
