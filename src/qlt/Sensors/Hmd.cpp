#include <qlt/Sensors/Hmd.h>

#include "Sensors/HardwareIo.h"

namespace qlt
{

Hmd::Hmd()
    : Hmd(UsbHost::System())
{
}

Hmd::Hmd(UsbHost& host, Clock& clock)
    : mHardwareIo(std::make_unique<HardwareIo>(this, host, clock))
    , mFusion(clock)
{
}

Hmd::~Hmd()
{
    EndProcessing();
    mHardwareIo.reset(); // before the fusion that its thread feeds
}

bool Hmd::IsConnected() const { return mHardwareIo->IsConnected(); }

Quaternion Hmd::GetPredictedQuaternion(float /*dt*/) const { return GetOrientation(); }

void Hmd::DoProcess()
{
    while (!ShouldStop())
    {
        if (!mHardwareIo->Read())
        {
            std::this_thread::yield(); // no headset
        }
    }
}

} // namespace qlt
