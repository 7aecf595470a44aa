#include "DirectModeFixture.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <dxgi.h>

namespace
{

using Arguments = FunctionTable::Arguments;
using Result = std::optional<std::int32_t>;

void Require(bool success, const char* what)
{
    if (!success)
    {
        throw std::runtime_error(what);
    }
}

/// The file of the fake driver. It is in System32 until the program ends, and the library itself
/// loads it.
class InstalledDriver
{
public:
    InstalledDriver()
    {
        wchar_t path[MAX_PATH];
        Require(GetSystemDirectoryW(path, MAX_PATH) != 0, "find System32");
        mFile = std::filesystem::path(path) / "nvapi64.dll";
        std::filesystem::copy_file(QLT_FAKE_DRIVER, mFile,
                                   std::filesystem::copy_options::overwrite_existing);
        NvidiaRenderer().Initialize();
        const HMODULE module = GetModuleHandleW(L"nvapi64.dll");
        Require(GetModuleFileNameW(module, path, MAX_PATH) != 0 &&
                    _wcsicmp(path, mFile.c_str()) == 0,
                "load the driver from System32");
        SetScript = reinterpret_cast<SetNvApiScript>(
            reinterpret_cast<void*>(GetProcAddress(module, SET_NVAPI_SCRIPT)));
    }

    ~InstalledDriver()
    {
        // The library never unloads it, and nobody can delete a loaded file.
        while (const HMODULE module = GetModuleHandleW(L"nvapi64.dll"))
        {
            FreeLibrary(module);
        }
        std::filesystem::remove(mFile);
    }

    SetNvApiScript SetScript = nullptr;

private:
    std::filesystem::path mFile;
};

const InstalledDriver& Driver()
{
    static const InstalledDriver driver;
    return driver;
}

template <typename Pointed>
Pointed& At(std::uintptr_t argument)
{
    return *reinterpret_cast<Pointed*>(argument);
}

template <typename... Values>
std::string Text(const char* format, Values... values)
{
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

template <typename Interface>
void ReleaseAll(Microsoft::WRL::ComPtr<Interface>& object)
{
    while (CountReferences(object) > 1)
    {
        object->Release();
    }
    object.Reset();
}

std::string DescribeView(Arguments a)
{
    const auto& d = At<D3D11_SHADER_RESOURCE_VIEW_DESC>(a[2]);
    return Text("CreateShaderResourceView %d %d %u %u", d.Format, d.ViewDimension,
                d.Texture2D.MostDetailedMip, d.Texture2D.MipLevels);
}

std::string DescribeTarget(Arguments a)
{
    const auto& d = At<D3D11_RENDER_TARGET_VIEW_DESC>(a[2]);
    return Text("CreateRenderTargetView %d %d %u", d.Format, d.ViewDimension, d.Texture2D.MipSlice);
}

std::string DescribeSampler(Arguments a)
{
    const auto& d = At<D3D11_SAMPLER_DESC>(a[1]);
    return Text("CreateSamplerState %d %d %d %d %g %u %d %g %g %g %g %g %.9g", d.Filter, d.AddressU,
                d.AddressV, d.AddressW, d.MipLODBias, d.MaxAnisotropy, d.ComparisonFunc,
                d.BorderColor[0], d.BorderColor[1], d.BorderColor[2], d.BorderColor[3], d.MinLOD,
                d.MaxLOD);
}

} // namespace

DirectModeFixture::DirectModeFixture()
{
    Require(SUCCEEDED(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0,
                                        D3D11_SDK_VERSION, device.GetAddressOf(), nullptr,
                                        context.GetAddressOf())),
            "make a Direct3D 11 device");
    ComPtr<IDXGIDevice> dxgiDevice;
    device.As(&dxgiDevice);
    dxgiDevicePointer = Text("%p", dxgiDevice.Get());
    devicePointer = Text("%p", device.Get());
    const Bytes grey(std::size_t{4} * WIDTH * HEIGHT, 0x55);
    surface = MakeTexture(D3D11_BIND_RENDER_TARGET, grey);
    image = MakeTexture(D3D11_BIND_SHADER_RESOURCE, grey);
    WatchDevice();
    WatchContext();
    driver.surface = surface.Get();
    driver.frameEvent = frameEvent;
    driver.context = this;
    driver.onCall = [](void* self, const char* call) -> std::int32_t
    { return static_cast<DirectModeFixture*>(self)->Fails(call) ? -1 : 0; };
    Driver().SetScript(&driver);
}

DirectModeFixture::~DirectModeFixture()
{
    renderer.reset();
    Driver().SetScript(nullptr);
    CloseHandle(frameEvent);
    contextFunctions.reset();
    deviceFunctions.reset();
    image.Reset();
    surface.Reset();
    // Release the renderer's references, too, because Wine fails when a process ends before its
    // device.
    ReleaseAll(context);
    ReleaseAll(device);
}

void DirectModeFixture::SubmitFirst(NvidiaRenderer& to)
{
    device->AddRef();
    to.Submit(device.Get(), image.Get());
}

/// Logs a call. True when this call must fail.
bool DirectModeFixture::Fails(const std::string& call)
{
    if (!mWatching)
    {
        return false;
    }
    log.push_back(call);
    if (call.rfind("setMode", 0) == 0)
    {
        surfaceReferences = CountReferences(surface);
    }
    if (call.rfind("present", 0) == 0)
    {
        SetEvent(frameEvent);
    }
    return log.size() == failing + 1;
}

void DirectModeFixture::WatchDevice()
{
    deviceFunctions = std::make_unique<FunctionTable>(device.Get());
    const auto watch = [this](std::size_t slot, std::string (*describe)(Arguments))
    {
        deviceFunctions->Watch(slot, [=](Arguments a)
                               { return Fails(describe(a)) ? Result(E_FAIL) : Result(); });
    };
    watch(3, [](Arguments) { return Text("CreateBuffer"); });
    watch(7, DescribeView);
    watch(9, DescribeTarget);
    watch(11, [](Arguments) { return Text("CreateInputLayout"); });
    watch(12, [](Arguments) { return Text("CreateVertexShader"); });
    watch(15, [](Arguments) { return Text("CreatePixelShader"); });
    watch(23, DescribeSampler);
    deviceFunctions->Watch(0,
                           [this](Arguments a)
                           {
                               return At<IID>(a[1]) == __uuidof(IDXGIDevice) &&
                                              Fails("QueryInterface IDXGIDevice")
                                          ? Result(E_FAIL)
                                          : Result();
                           });
    // Wine does not have this function, so the handle is the texture itself.
    deviceFunctions->Watch(28,
                           [this](Arguments a) -> Result
                           {
                               return Fails("OpenSharedResource")
                                          ? E_FAIL
                                          : At<IUnknown>(a[1]).QueryInterface(At<IID>(a[2]),
                                                                              &At<void*>(a[3]));
                           });
}

void DirectModeFixture::WatchContext()
{
    contextFunctions = std::make_unique<FunctionTable>(context.Get());
    contextFunctions->Watch(12,
                            [this](Arguments a)
                            {
                                Fails(Text("DrawIndexed %u %u %d", static_cast<UINT>(a[1]),
                                           static_cast<UINT>(a[2]), static_cast<INT>(a[3])));
                                return Result();
                            });
    contextFunctions->Watch(
        14, [this](Arguments a)
        { return Fails(Text("Map %d", static_cast<int>(a[3]))) ? Result(E_FAIL) : Result(); });
    contextFunctions->Watch(111, [this](Arguments) { return Fails("Flush"), Result(); });
}

DirectModeFixture::ComPtr<ID3D11Texture2D> DirectModeFixture::MakeTexture(UINT bind,
                                                                          const Bytes& pixels)
{
    D3D11_TEXTURE2D_DESC description{};
    description.Width = WIDTH;
    description.Height = HEIGHT;
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    description.SampleDesc.Count = 1;
    description.BindFlags = bind;
    const D3D11_SUBRESOURCE_DATA contents = {pixels.data(), 4 * WIDTH, 0};
    ComPtr<ID3D11Texture2D> texture;
    Require(SUCCEEDED(device->CreateTexture2D(&description, &contents, texture.GetAddressOf())),
            "make a texture");
    return texture;
}

DirectModeFixture::Bytes DirectModeFixture::Read(ID3D11Texture2D* texture)
{
    D3D11_TEXTURE2D_DESC description;
    texture->GetDesc(&description);
    description.Usage = D3D11_USAGE_STAGING;
    description.BindFlags = 0;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    ComPtr<ID3D11Texture2D> staging;
    device->CreateTexture2D(&description, nullptr, staging.GetAddressOf());
    context->CopyResource(staging.Get(), texture);
    const std::size_t rowSize = std::size_t{4} * WIDTH;
    Bytes bytes(HEIGHT * rowSize);
    D3D11_MAPPED_SUBRESOURCE mapped;
    Require(SUCCEEDED(context->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped)), "read back");
    for (UINT row = 0; row < HEIGHT; ++row)
    {
        std::memcpy(&bytes[row * rowSize], &static_cast<char*>(mapped.pData)[row * mapped.RowPitch],
                    rowSize);
    }
    context->Unmap(staging.Get(), 0);
    return bytes;
}
