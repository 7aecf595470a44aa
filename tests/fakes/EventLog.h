// Two listeners: one calls back, and one logs every event.
#pragma once

#include <qlt/Sensors/TrackerListener.h>

#include "fakes/ManualClock.h"

#include <functional>
#include <mutex>
#include <sstream>
#include <vector>

/// Calls back with every orientation, which is the last event of a report.
struct OrientationListener : qlt::TrackerListener
{
    void OnOrientationEvent(const qlt::Quaternion& q, float) override { call(q); }
    std::function<void(const qlt::Quaternion&)> call;
};

/// The log shows six digits of each value.
template <typename... Values>
std::string Text(float first, Values... others)
{
    std::ostringstream text;
    text << first;
    ((text << ' ' << others), ...);
    return text.str();
}
inline std::string Text(const qlt::Vec3& v) { return Text(v.x(), v.y(), v.z()); }
inline std::string Text(const qlt::Quaternion& q) { return Text(q.w(), q.x(), q.y(), q.z()); }

/// Logs lines such as "gyroscope 1 2 3 @ 0.001".
class EventLog : public qlt::TrackerListener
{
    using V = qlt::Vec3;
    using Q = qlt::Quaternion;

public:
    void OnAccelerometerEvent(const V& v, float t) override { Add("accelerometer ", v, t); }
    void OnGyroscopeEvent(const V& v, float t) override { Add("gyroscope ", v, t); }
    void OnMagnetometerEvent(const V& v, float t) override { Add("magnetometer ", v, t); }
    void OnQuaternionEvent(const Q& q, float t) override { Add("quaternion ", q, t); }
    void OnTemperatureEvent(float degrees, float t) override { Add("temperature ", degrees, t); }
    void OnOrientationEvent(const Q& q, float t) override { Add("orientation ", q, t); }
    void OnPositionEvent(const V& v, float t) override { Add("position ", v, t); }

    /// Waits for the first `count` lines and returns them.
    std::vector<std::string> WaitFor(std::size_t count)
    {
        Until([&] { return Count() >= count; });
        const std::lock_guard<std::mutex> lock(mMutex);
        return {mLines.begin(), mLines.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    std::size_t Count()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mLines.size();
    }

private:
    template <typename Value>
    void Add(const char* kind, const Value& value, float time)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mLines.push_back(kind + Text(value) + " @ " + Text(time));
    }

    std::mutex mMutex;
    std::vector<std::string> mLines;
};
