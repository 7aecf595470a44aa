#include "qltkit_c_api/Handles.h"

#include <qlt/Sensors/SensorReport.h>

#include "qltkit_c_api/TrackerFeed.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

using qltkit::Guarded;
using qltkit::HeadTracker;
using qltkit::Required;
using qltkit::ScriptedHeadset;

struct qltkit_HeadTracker
{
    explicit qltkit_HeadTracker(std::shared_ptr<qltkit::CaptureWriter> capture)
        : feed(std::move(capture))
    {
    }

    /// True when a script or a file has ended and the tracker has noticed it.
    bool IsOver() const { return source->IsOver() && !feed.IsUp(); }

    qltkit::TrackerFeed feed;
    const qltkit::Source* source = nullptr; // the tracker owns it
    std::optional<HeadTracker> tracker;     // destroyed before the members that it uses
};

namespace
{

/// A scripted headset as a source that the tracker shares with the caller.
class SharedSource final : public qltkit::Source
{
public:
    explicit SharedSource(std::shared_ptr<ScriptedHeadset> headset)
        : mHeadset(std::move(headset))
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override { return mHeadset->OpenFirst(); }
    std::uint32_t CountDevices() override { return mHeadset->CountDevices(); }
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override
    {
        return mHeadset->Open(index);
    }
    std::string Name() const override { return mHeadset->Name(); }
    std::int64_t NowNs() override { return mHeadset->NowNs(); }
    void SleepNs(std::int64_t durationNs) override { mHeadset->SleepNs(durationNs); }
    void Close() override { mHeadset->Close(); }
    bool IsOver() const override { return mHeadset->IsOver(); }

private:
    const std::shared_ptr<ScriptedHeadset> mHeadset;
};

HeadTracker& Tracker(qltkit_HeadTracker* tracker)
{
    return *Required(tracker, "the tracker is null").tracker;
}

const HeadTracker& Tracker(const qltkit_HeadTracker* tracker)
{
    return *Required(tracker, "the tracker is null").tracker;
}

/// Makes a tracker and its handle.
qltkit_HeadTracker* Open(std::unique_ptr<qltkit::Source> source,
                         const qltkit_HeadTrackerOptions* options)
{
    qltkit_HeadTrackerOptions chosen;
    qltkit_HeadTrackerOptions_Init(&chosen);
    chosen = options != nullptr ? *options : chosen;
    auto handle = std::make_unique<qltkit_HeadTracker>(
        chosen.capture != nullptr ? chosen.capture->writer : nullptr);
    qltkit::HeadTrackerOptions made;
    made.filter = qltkit::FilterOf(chosen.filter);
    made.person = {chosen.person.ipdM, chosen.person.neckEyeHM, chosen.person.neckEyeVM};
    made.sink = &handle->feed;
    handle->source = source.get();
    handle->tracker.emplace(std::move(source), made);
    return handle.release();
}

void Store(const qlt::Quaternion& q, float* place)
{
    const std::array<float, 4> parts = {q.w(), q.x(), q.y(), q.z()};
    std::copy(parts.begin(), parts.end(), place);
}

void Store(const qlt::Vec3& v, float* place)
{
    const std::array<float, 3> parts = {v.x(), v.y(), v.z()};
    std::copy(parts.begin(), parts.end(), place);
}

void Store(const qltkit::Pose& pose, qltkit_Pose& place)
{
    Store(pose.orientation, place.orientation);
    Store(pose.angularVelocity, place.angularVelocity);
    place.state = static_cast<std::int32_t>(pose.state);
    place.timeNs = pose.timeNs;
    place.deviceTimeUs = pose.deviceTimeUs;
    place.sinceNs = pose.sinceNs;
    place.reportNumber = pose.reportNumber;
    place.sequence = pose.sequence;
    place.clamped = pose.clamped ? 1 : 0;
}

void Store(const qltkit::TrackerFeed::Arrival& arrival, qltkit_Sample& place)
{
    const qlt::SensorSample sample = qlt::DecodeSensorReport(arrival.report);
    place.arrivalNs = arrival.hostNs;
    Store(sample.gyroscope, place.gyroscope);
    Store(sample.accelerometer, place.accelerometer);
    Store(sample.magnetometer, place.magnetometer);
    place.temperature = sample.temperature;
    std::copy(arrival.report.begin(), arrival.report.end(), place.report);
}

qltkit_TrackerEvent EventOf(const qltkit::TrackerEvent& event)
{
    return {static_cast<std::int32_t>(event.kind), event.reports, event.timeNs, event.number};
}

/// Takes the oldest pose whose report still exists.
bool TakeSample(qltkit_HeadTracker& handle, qltkit_Sample& sample)
{
    while (const std::optional<qltkit::Pose> pose = handle.tracker->PollPose())
    {
        qltkit::TrackerFeed::Arrival arrival;
        if (handle.feed.Read(pose->reportNumber, arrival))
        {
            Store(*pose, sample.pose);
            Store(arrival, sample);
            return true;
        }
    }
    return false;
}

} // namespace

qltkit_Result qltkit_HeadTrackerOptions_Init(qltkit_HeadTrackerOptions* options)
{
    return Guarded(
        [&]
        {
            const qltkit::Person person;
            Required(options, "the options are null") = {
                QLTKIT_FILTER_KIT, {person.ipdM, person.neckEyeHM, person.neckEyeVM}, nullptr};
        });
}

qltkit_Result qltkit_HeadTracker_Open(const char* source, const qltkit_HeadTrackerOptions* options,
                                      qltkit_HeadTracker** tracker)
{
    return Guarded(
        [&]
        {
            auto& result = Required(tracker, "the place for the tracker is null");
            Required(source, "the source is null");
            result = Open(qltkit::OpenSource(qltkit::PathOf(source).string()), options);
        });
}

qltkit_Result qltkit_HeadTracker_OpenScripted(qltkit_ScriptedHeadset* headset,
                                              const qltkit_HeadTrackerOptions* options,
                                              qltkit_HeadTracker** tracker)
{
    return Guarded(
        [&]
        {
            auto& result = Required(tracker, "the place for the tracker is null");
            const auto shared = Required(headset, "the headset is null").headset;
            result = Open(std::make_unique<SharedSource>(shared), options);
        });
}

void qltkit_HeadTracker_Delete(qltkit_HeadTracker* tracker) { delete tracker; }

qltkit_Result qltkit_HeadTracker_Latest(const qltkit_HeadTracker* tracker, qltkit_Pose* pose)
{
    return Guarded(
        [&]
        { Store(Tracker(tracker).Latest(), Required(pose, "the place for the pose is null")); });
}

qltkit_Result qltkit_HeadTracker_At(const qltkit_HeadTracker* tracker, int64_t timeNs,
                                    qltkit_Pose* pose)
{
    return Guarded(
        [&]
        { Store(Tracker(tracker).At(timeNs), Required(pose, "the place for the pose is null")); });
}

qltkit_Result qltkit_HeadTracker_EyePose(const qltkit_HeadTracker* tracker, const qltkit_Pose* pose,
                                         int32_t eye, qltkit_EyePose* eyePose)
{
    return Guarded(
        [&]
        {
            const auto& q = Required(pose, "the pose is null").orientation;
            qltkit::Require(eye == QLTKIT_EYE_LEFT || eye == QLTKIT_EYE_RIGHT,
                            "the eye is neither QLTKIT_EYE_LEFT nor QLTKIT_EYE_RIGHT");
            auto& result = Required(eyePose, "the place for the pose of the eye is null");
            qltkit::Pose head;
            head.orientation = {q[0], q[1], q[2], q[3]};
            const qltkit::EyePose found = qltkit::EyePoseOf(
                head, static_cast<qlt::Params::Eye>(eye), Tracker(tracker).GetPerson());
            Store(found.position, result.position);
            Store(found.orientation, result.orientation);
        });
}

qltkit_Result qltkit_HeadTracker_NextSample(qltkit_HeadTracker* tracker, int32_t timeoutMs,
                                            qltkit_Sample* sample)
{
    return Guarded(
        [&]() -> qltkit_Result
        {
            auto& handle = Required(tracker, "the tracker is null");
            auto& result = Required(sample, "the place for the sample is null");
            const auto end =
                std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
            for (;;)
            {
                // Ask first, because the last pose comes before the end.
                const bool isOver = handle.IsOver();
                if (TakeSample(handle, result))
                {
                    return QLTKIT_OK;
                }
                if (isOver || std::chrono::steady_clock::now() >= end)
                {
                    return isOver ? QLTKIT_END : QLTKIT_NONE;
                }
                // The tracker does not wake its readers, because waking a thread may take a lock.
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            }
        });
}

qltkit_Result qltkit_HeadTracker_NextEvent(qltkit_HeadTracker* tracker, qltkit_TrackerEvent* event)
{
    return Guarded(
        [&]
        {
            auto& result = Required(event, "the place for the event is null");
            const auto next = Tracker(tracker).PollEvent();
            result = next ? EventOf(*next) : result;
            return next ? QLTKIT_OK : QLTKIT_NONE;
        });
}

qltkit_Result qltkit_HeadTracker_SetEventHandler(qltkit_HeadTracker* tracker,
                                                 qltkit_EventHandler handler, void* user)
{
    return Guarded(
        [&]
        {
            HeadTracker::EventHandler passOn;
            if (handler != nullptr)
            {
                passOn = [handler, user](const qltkit::TrackerEvent& event)
                {
                    const qltkit_TrackerEvent passed = EventOf(event);
                    handler(&passed, user);
                };
            }
            Tracker(tracker).SetEventHandler(std::move(passOn));
        });
}

qltkit_Result qltkit_HeadTracker_Recentre(qltkit_HeadTracker* tracker)
{
    return Guarded([&] { return Tracker(tracker).Recentre() ? QLTKIT_OK : QLTKIT_NONE; });
}

qltkit_Result qltkit_HeadTracker_Now(const qltkit_HeadTracker* tracker, int64_t* timeNs)
{
    return Guarded(
        [&] { Required(timeNs, "the place for the time is null") = Tracker(tracker).NowNs(); });
}

qltkit_Result qltkit_HeadTracker_PredictionError(const qltkit_HeadTracker* tracker, double seconds,
                                                 double* all, double* recent)
{
    return Guarded(
        [&]
        {
            const HeadTracker& asked = Tracker(tracker);
            if (all != nullptr)
            {
                *all = asked.PredictionError(seconds);
            }
            if (recent != nullptr)
            {
                *recent = asked.RecentPredictionError(seconds);
            }
        });
}
