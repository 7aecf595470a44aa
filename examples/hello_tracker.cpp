// This program prints the head's orientation for one second.
#include <qlt/qlt.h>

#include <chrono>
#include <cstdio>
#include <thread>

class Printer : public qlt::TrackerListener
{
    // The tracker calls this on its own thread, a thousand times a second.
    void OnOrientationEvent(const qlt::Quaternion& q, float time) override
    {
        if (mEvents++ % 100 == 0)
        {
            std::printf("%.3f s: %.4f %.4f %.4f %.4f\n", time, q.w(), q.x(), q.y(), q.z());
        }
    }

    int mEvents = 0;
};

int main()
{
    qlt::SimulatorTracker tracker; // qlt::Hmd waits for the real headset instead
    Printer printer;
    tracker.AddListener(printer);
    tracker.Start();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    tracker.Stop();
    tracker.RemoveListener(printer);
}
