// This header includes every public header of QueltaKit.
#pragma once

#include <qltkit/Capture/CaptureItem.h>
#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Capture/McapWriter.h>
#include <qltkit/Error.h>
#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/HeadsetScript.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Headset/SoftwareHeadset.h>
#include <qltkit/Headset/Source.h>
#include <qltkit/Tracking/ClockFit.h>
#include <qltkit/Tracking/HeadTracker.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/OrientationState.h>
#include <qltkit/Tracking/Pose.h>
#include <qltkit/Tracking/PredictionTerms.h>
#include <qltkit/Tracking/Predictor.h>
#include <qltkit/Tracking/Rotation.h>
#include <qltkit/Tracking/TrackerEvent.h>
