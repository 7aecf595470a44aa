// All of QueltaKit's class interface.
#pragma once

#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/SoftwareHeadset.h>
#include <qltkit/Tracking/ClockFit.h>
