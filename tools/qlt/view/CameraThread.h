#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// Runs the headset's camera on its own thread with its own OpenGL context. It needs a thread,
/// because the camera may wait for a frame forever.
class CameraThread
{
public:
    /// The grey levels of a frame, the upper row first.
    using Pixels = std::vector<unsigned char>;

    /// Receives each frame. The new thread calls it.
    using Handler = std::function<void(const Pixels&)>;

    /// Starts the camera. With a handler every frame is read back, and otherwise only the last one.
    /// The headset must be connected (see RequireHeadset).
    explicit CameraThread(Handler handler = {});

    /// Waits for the thread. So call Stop before, which must return true.
    ~CameraThread();

    CameraThread(const CameraThread&) = delete;
    CameraThread& operator=(const CameraThread&) = delete;

    unsigned long Frames() const;

    /// True when the camera has failed. Stop then throws its exception.
    bool HasEnded() const;

    /// Ends the camera after its next frame. Returns false when no frame comes within five seconds.
    /// The thread then lasts as long as the process.
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
    Pixels mLastFrame; // only the thread uses it until it has ended
    std::thread mThread;
};
