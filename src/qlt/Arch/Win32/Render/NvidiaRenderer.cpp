#include <qlt/Render/NvidiaRenderer.h>

#include "Render/NvApi.h"

#include "DirectModePipeline.h"

#include <atomic>
#include <new>
#include <optional>
#include <utility>
#include <windows.h>

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

using Microsoft::WRL::ComPtr;
using qlt::NvApi;

namespace
{

/// "QLT" as displays encode it, with five bits for each letter.
constexpr std::uint32_t VENDOR_ID = 0x9445;
constexpr std::uint32_t PRESENT_ARGUMENT = 2;

/// The driver's functions. The first call loads the driver, which stays loaded. No constructor
/// calls this, because an engine's constructors may run where no library may be loaded. The library
/// comes from System32 only, because anybody may have put one of that name elsewhere.
const NvApi& SystemNvApi()
{
    static const NvApi api = []
    {
        const HMODULE library =
            LoadLibraryExW(L"nvapi64.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        return NvApi::Load(library == nullptr
                               ? nullptr
                               : reinterpret_cast<NvApi::QueryInterface>(reinterpret_cast<void*>(
                                     GetProcAddress(library, "nvapi_QueryInterface"))));
    }();
    return api;
}

/// The display, and the objects that draw on it.
struct Screen
{
    /// False when a step fails. The results of the earlier steps stay.
    bool Open(ID3D11Device& device, ID3D11DeviceContext& context);

    bool Take(ID3D11Device& device);
    bool SetTarget(ID3D11Device& device, HANDLE shared);

    NvApi::Display display{};
    NvApi::Mode mode{};
    std::uint32_t surface = 0;
    qlt::DirectModePipeline pipeline;
};

bool Screen::Open(ID3D11Device& device, ID3D11DeviceContext& context)
{
    try
    {
        return Take(device) && pipeline.Make(device, context);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

bool Screen::Take(ID3D11Device& device)
{
    const NvApi& api = SystemNvApi();
    ComPtr<IDXGIDevice> dxgiDevice;
    HANDLE shared = nullptr;
    return SUCCEEDED(device.QueryInterface(IID_PPV_ARGS(dxgiDevice.GetAddressOf()))) &&
           api.FindDisplay(VENDOR_ID, display) && api.FindMode(display, mode) &&
           api.acquireDisplay(VENDOR_ID, dxgiDevice.Get(), &display) == 0 &&
           api.createSurface(display, &mode, &surface, &shared) == 0 && SetTarget(device, shared) &&
           api.setMode(display, &mode) == 0;
}

/// This function also releases the texture before the mode is set. The view keeps the texture
/// alive.
bool Screen::SetTarget(ID3D11Device& device, HANDLE shared)
{
    ComPtr<ID3D11Texture2D> texture;
    return SUCCEEDED(device.OpenSharedResource(shared, IID_PPV_ARGS(texture.GetAddressOf()))) &&
           pipeline.SetTarget(device, *texture.Get(),
                              static_cast<DXGI_FORMAT>(SurfaceFormat(mode)));
}

} // namespace

struct NvidiaRenderer::State
{
    void RemoveOwner()
    {
        if (--owners == 0)
        {
            delete this;
        }
    }

    std::atomic<int> owners{1};
    bool initialized = false;
    std::optional<Screen> screen;           // the result of the last attempt
    ID3D11Device* device = nullptr;         // deliberate: released, although no reference is taken
    ID3D11DeviceContext* context = nullptr; // deliberate: never released after a failed attempt
};

NvidiaRenderer::NvidiaRenderer()
    : mState(new State)
{
}

NvidiaRenderer::~NvidiaRenderer()
{
    Shutdown();
    mState->RemoveOwner();
}

NvidiaRenderer::NvidiaRenderer(const NvidiaRenderer& other)
    : mState(other.mState)
{
    ++mState->owners;
}

NvidiaRenderer& NvidiaRenderer::operator=(const NvidiaRenderer& other)
{
    ++other.mState->owners; // both may share one state, so add the owner first
    mState->RemoveOwner();
    mState = other.mState;
    return *this;
}

bool NvidiaRenderer::IsInitialized() { return mState->initialized; }

bool NvidiaRenderer::Initialize()
{
    State& s = *mState;
    Screen screen;
    const bool opened = SystemNvApi().HasDisplay(VENDOR_ID) && s.device != nullptr &&
                        screen.Open(*s.device, *s.context);
    // Keep the results of a failed attempt until the next one, but never replace a screen that
    // works.
    if (opened || !s.initialized)
    {
        s.screen.emplace(std::move(screen)); // an assignment could copy and add references
    }
    s.initialized = s.initialized || opened;
    return opened;
}

void NvidiaRenderer::Shutdown()
{
    State& s = *mState;
    if (!s.initialized)
    {
        return;
    }
    SystemNvApi().releaseDisplay(VENDOR_ID, s.screen->display);
    s.context->Release();
    s.context = nullptr;
    s.device->Release();
    s.device = nullptr;
    s.screen->pipeline.Release();
    s.initialized = false;
}

void NvidiaRenderer::Submit(ID3D11Device* device, ID3D11Texture2D* texture)
{
    State& s = *mState;
    if (!s.initialized)
    {
        s.device = device;
        if (device != nullptr)
        {
            device->GetImmediateContext(&s.context);
        }
        Initialize();
    }
    if (s.device == nullptr || texture == nullptr || !s.initialized)
    {
        return;
    }
    HANDLE wanted = nullptr;
    SystemNvApi().getFrameEvent(s.screen->display, &wanted);
    WaitForSingleObject(wanted, INFINITE);

    D3D11_SHADER_RESOURCE_VIEW_DESC description{};
    description.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    description.ViewDimension = D3D11_SRV_DIMENSION_TEXTURE2D;
    description.Texture2D.MipLevels = 1;
    ComPtr<ID3D11ShaderResourceView> view;
    if (FAILED(s.device->CreateShaderResourceView(texture, &description, view.GetAddressOf())))
    {
        return;
    }
    s.screen->pipeline.Draw(*s.context, view.Get());
    s.context->Flush();
    view.Reset();
    SystemNvApi().present(s.screen->display, s.screen->surface, PRESENT_ARGUMENT, s.device);
}
