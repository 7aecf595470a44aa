#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// Runs the headset's camera on a thread with an OpenGL context of its own. A thread is needed,
/// because the camera may wait for a frame forever.
class CameraThread
{
public:
    /// The grey levels of a frame, the upper row first.
    using Pixels = std::vector<unsigned char>;

    /// Gets each frame on the thread.
    using Handler = std::function<void(const Pixels&)>;

    /// Starts the camera. With a handler every frame is read back, otherwise only the last one. The
    /// headset must be connected, see RequireHeadset.
    explicit CameraThread(Handler handler = {});

    /// Waits for the thread, so Stop must have returned true.
    ~CameraThread();

    CameraThread(const CameraThread&) = delete;
    CameraThread& operator=(const CameraThread&) = delete;

    unsigned long Frames() const;

    /// True when the camera has failed. Stop then throws its exception.
    bool HasEnded() const;

    /// Ends the camera after its next frame. Returns false when there is none in five seconds.
    /// Nothing can end the thread then but the end of the process.
    bool Stop();

    /// The last frame. Call it after Stop.
    const Pixels& LastFrame() const { return mLastFrame; }

private:
    void Run();
    void Show();

    const Handler mHandler;
    mutable std::mutex mMutex; // guards the members below, except the last frame
    std::condition_variable mChanged;
    unsigned long mFrames = 0;
    bool mStopping = false;
    bool mEnded = false;
    std::exception_ptr mFailure;
    Pixels mLastFrame; // of the thread until it has ended
    std::thread mThread;
};
