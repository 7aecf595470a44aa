#include <qlt/Sensors/TrackerListener.h>

namespace qlt
{

TrackerListener::~TrackerListener() = default;

void TrackerListener::OnAccelerometerEvent(const Vec3&, float) {}

void TrackerListener::OnGyroscopeEvent(const Vec3&, float) {}

void TrackerListener::OnMagnetometerEvent(const Vec3&, float) {}

void TrackerListener::OnQuaternionEvent(const Quaternion&, float) {}

void TrackerListener::OnTemperatureEvent(float, float) {}

void TrackerListener::OnOrientationEvent(const Quaternion&, float) {}

void TrackerListener::OnPositionEvent(const Vec3&, float) {}

} // namespace qlt
