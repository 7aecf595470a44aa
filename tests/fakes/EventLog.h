// A listener that writes down everything it is told, as lines like "gyroscope 1 2 3 @ 0.001".
#pragma once

#include <qlt/Sensors/TrackerListener.h>

#include <condition_variable>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

class EventLog : public qlt::TrackerListener
{
public:
    void OnAccelerometerEvent(const qlt::Vec3& v, float time) override
    {
        Add("accelerometer", time, {v.x(), v.y(), v.z()});
    }
    void OnGyroscopeEvent(const qlt::Vec3& v, float time) override
    {
        Add("gyroscope", time, {v.x(), v.y(), v.z()});
    }
    void OnMagnetometerEvent(const qlt::Vec3& v, float time) override
    {
        Add("magnetometer", time, {v.x(), v.y(), v.z()});
    }
    void OnQuaternionEvent(const qlt::Quaternion& q, float time) override
    {
        Add("quaternion", time, {q.w(), q.x(), q.y(), q.z()});
    }
    void OnTemperatureEvent(float temperature, float time) override
    {
        Add("temperature", time, {temperature});
    }
    void OnOrientationEvent(const qlt::Quaternion& q, float time) override
    {
        Add("orientation", time, {q.w(), q.x(), q.y(), q.z()});
    }
    void OnPositionEvent(const qlt::Vec3& v, float time) override
    {
        Add("position", time, {v.x(), v.y(), v.z()});
    }

    /// Waits for the first `count` lines and returns them.
    std::vector<std::string> WaitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this, count] { return mLines.size() >= count; });
        return {mLines.begin(), mLines.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    std::size_t Count()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mLines.size();
    }

private:
    void Add(const char* kind, float time, const std::vector<float>& values)
    {
        std::ostringstream line;
        line << kind;
        for (const float value : values)
        {
            line << ' ' << value;
        }
        line << " @ " << time;
        const std::lock_guard<std::mutex> lock(mMutex);
        mLines.push_back(line.str());
        mChanged.notify_all();
    }

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<std::string> mLines;
};
