// A fixture with the machine's Direct3D 11 and a fake driver, which is in System32 while the tests
// run. It logs the renderer's calls of both.
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

    static constexpr UINT WIDTH = 1280; // the size of the display and of the image
    static constexpr UINT HEIGHT = 720;
    static constexpr std::size_t NEVER = SIZE_MAX;

    DirectModeFixture();
    ~DirectModeFixture() override;

    /// Submits the first frame, with a reference of the device that the renderer will release.
    void SubmitFirst(NvidiaRenderer& to);

    ComPtr<ID3D11Texture2D> MakeTexture(UINT bind, const Bytes& pixels);
    Bytes Read(ID3D11Texture2D* texture);

    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    ComPtr<ID3D11Texture2D> surface; // the surface of the display
    ComPtr<ID3D11Texture2D> image;   // the image of the engine
    ULONG surfaceReferences = 0;     // the count when the mode was set
    std::string devicePointer;       // the pointers as the log shows them
    std::string dxgiDevicePointer;

    NvApiScript driver;
    HANDLE frameEvent = CreateEventW(nullptr, FALSE, TRUE, nullptr); // set by each present

    Log log;
    std::size_t failing = NEVER; // the index in the log of the call that fails

    std::unique_ptr<FunctionTable> deviceFunctions; // destroyed before the device
    std::unique_ptr<FunctionTable> contextFunctions;
    std::unique_ptr<NvidiaRenderer> renderer = std::make_unique<NvidiaRenderer>();

private:
    bool Fails(const std::string& call);
    void WatchDevice();
    void WatchContext();

    bool mWatching = true;
};
