// Tests with the machine's Direct3D 11 and the fake driver, which is in System32 while they run,
// and with the log of what the renderer calls of both.
#pragma once

#include <qlt/Render/NvidiaRenderer.h>

#include "FakeNvApi.h"
#include "FunctionTable.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>
#include <windows.h>

#include <d3d11.h>
#include <wrl/client.h>

template <typename Interface>
ULONG CountReferences(const Microsoft::WRL::ComPtr<Interface>& object)
{
    object->AddRef();
    return object->Release();
}

class DirectModeFixture : public testing::Test
{
protected:
    template <typename Interface>
    using ComPtr = Microsoft::WRL::ComPtr<Interface>;
    using Log = std::vector<std::string>;
    using Bytes = std::vector<std::uint8_t>;

    static constexpr UINT WIDTH = 1280; // of display and image
    static constexpr UINT HEIGHT = 720;
    static constexpr std::size_t NEVER = SIZE_MAX;

    DirectModeFixture();
    ~DirectModeFixture() override;

    /// With a reference of the device for the renderer to release.
    void SubmitFirst(NvidiaRenderer& to);

    ComPtr<ID3D11Texture2D> MakeTexture(UINT bind, const Bytes& pixels);
    Bytes Read(ID3D11Texture2D* texture);

    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    ComPtr<ID3D11Texture2D> surface; // of the display
    ComPtr<ID3D11Texture2D> image;   // of the engine
    ULONG surfaceReferences = 0;     // when the mode was set
    std::string devicePointer;       // as the log has them
    std::string dxgiDevicePointer;

    NvApiScript driver;
    HANDLE frameEvent = CreateEventW(nullptr, FALSE, TRUE, nullptr); // set by each present

    Log log;
    std::size_t failing = NEVER; // the place in the log whose call fails

    std::unique_ptr<FunctionTable> deviceFunctions; // gone before the device
    std::unique_ptr<FunctionTable> contextFunctions;
    std::unique_ptr<NvidiaRenderer> renderer = std::make_unique<NvidiaRenderer>();

private:
    bool Fails(const std::string& call);
    void WatchDevice();
    void WatchContext();

    bool mWatching = true;
};
