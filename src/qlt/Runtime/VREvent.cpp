#include "Runtime/VREvent.h"

#include <qlt/Runtime/VRException.h>

#include "Runtime/LastErrorText.h"

void VREvent::Create(const std::wstring& name, bool manualReset)
{
    const qlt::NativeEventHandle event = qlt::CreateNativeEvent(name, manualReset);
    if (event == qlt::InvalidEventHandle())
    {
        const std::wstring error = GetLastErrorText();
        throw VRExceptionEvent(VR_STATUS_ERROR_EVENT,
                               L"Cannot create event '" + name + L"' (" + error + L")");
    }
    mHandle = std::shared_ptr<void>(event, qlt::CloseNativeEvent);
    mName = name;
}

void VREvent::Attach(qlt::NativeEventHandle event)
{
    mHandle = std::shared_ptr<void>(event, null_deleter_t());
    mName.clear();
}

void VREvent::Set() const
{
    if (!qlt::SetNativeEvent(Handle()))
    {
        const std::wstring error = GetLastErrorText();
        throw VRExceptionEvent(VR_STATUS_ERROR_EVENT, L"Cannot set event (" + error + L")");
    }
}

void VREvent::Wait(std::uint32_t timeoutMs) const
{
    const std::uint32_t result = qlt::WaitNativeEvent(Handle(), timeoutMs);
    if (result == qlt::WAIT_TIMED_OUT)
    {
        throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT,
                                 L"Timeout waiting for event '" + mName + L"'");
    }
    if (result != qlt::WAIT_SIGNALLED)
    {
        const std::wstring error = GetLastErrorText();
        throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT,
                                 L"Error waiting for event '" + mName + L"' (" + error + L")");
    }
}
