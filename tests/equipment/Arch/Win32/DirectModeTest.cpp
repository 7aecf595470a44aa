#include "DirectModeFixture.h"

#include "fakes/PlainLens.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <future>
#include <set>
#include <stdexcept>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace
{

using Microsoft::WRL::ComPtr;

/// Returns true when the display waits for a frame.
bool IsWanted(HANDLE frameEvent) { return WaitForSingleObject(frameEvent, 0) == WAIT_OBJECT_0; }

/// Makes one allocation of the shipped library fail. It replaces the `malloc` under operator new.
class LibraryMemory
{
public:
    LibraryMemory()
    {
        auto* const library = reinterpret_cast<char*>(GetModuleHandleW(L"QueltaSDK.dll"));
        const auto* const headers = reinterpret_cast<IMAGE_NT_HEADERS*>(
            library + reinterpret_cast<IMAGE_DOS_HEADER*>(library)->e_lfanew);
        const IMAGE_DATA_DIRECTORY& imports =
            headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
        auto* const first = reinterpret_cast<Malloc*>(library + imports.VirtualAddress);
        Malloc* const last = first + imports.Size / sizeof *first;
        mMalloc = reinterpret_cast<Malloc>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "malloc")));
        mEntry = std::find(first, last, mMalloc);
        DWORD protection = 0;
        if (mEntry == last || !VirtualProtect(mEntry, sizeof *mEntry, PAGE_READWRITE, &protection))
        {
            throw std::runtime_error("find the library's malloc");
        }
        *mEntry = [](std::size_t size) { return left-- == 0 ? nullptr : std::malloc(size); };
    }

    ~LibraryMemory() { *mEntry = mMalloc; }

    // The number of allocations before the one that fails.
    static inline std::size_t left = SIZE_MAX;

private:
    using Malloc = void* (*)(std::size_t);

    Malloc mMalloc;
    Malloc* mEntry;
};

/// A smooth image from 0 to 1, which is different for each colour and eye.
double Image(std::size_t color, int eye, double u, double v)
{
    const double phase = static_cast<double>(color) + 0.5 * eye;
    return 0.5 + 0.45 * std::sin(25.0 * u + phase) * std::cos((20.0 + 4.0 * eye) * v - phase);
}

} // namespace

class DirectModeTest : public DirectModeFixture
{
protected:
    const Log frame = {
        "getFrameEvent DA",
        "CreateShaderResourceView 87 4 0 1",
        "DrawIndexed 390150 0 0",
        "DrawIndexed 390150 0 0",
        "Flush",
        "present DA 1234 2 " + devicePointer,
    };
    const Log release = {"release 37957 DA"};

    /// Submits a frame, and returns the steps of the initialisation before the frame's own.
    Log Steps()
    {
        SubmitFirst(*renderer);
        Log all = TakeLog();
        Log steps(all.begin(), all.end() - static_cast<std::ptrdiff_t>(frame.size()));
        EXPECT_EQ(Log(all.begin() + static_cast<std::ptrdiff_t>(steps.size()), all.end()), frame);
        return steps;
    }

    Log TakeLog() { return std::exchange(log, {}); }
};

TEST_F(DirectModeTest, TheDisplayIsAcquiredOpenedAndSetAndReleasedAtTheEnd)
{
    const Log steps = Steps();
    const Log onTheDisplay = {
        "enumerateDisplays 37957 0 1",   "QueryInterface IDXGIDevice",
        "enumerateDisplays 37957 4 1",   "enumerateModes D0 0 0 0",
        "enumerateModes D0 2 2 0",       "acquire 37957 " + dxgiDevicePointer,
        "createSurface DA 10020 100 21", "OpenSharedResource",
        "CreateRenderTargetView 87 4 0", "setMode DA 10020 100 21",
    };
    EXPECT_EQ(Log(steps.begin(), steps.begin() + 10), onTheDisplay);
    EXPECT_EQ(steps.back(), "CreateSamplerState 21 1 1 1 0 1 8 0 0 0 0 0 3.40282347e+38");
    EXPECT_TRUE(renderer->IsInitialized());
    EXPECT_EQ(surfaceReferences, CountReferences(surface)); // only the view has a reference
    renderer->Submit(nullptr, image.Get());                 // the device is known
    EXPECT_EQ(TakeLog(), frame);
    renderer->Shutdown();
    renderer->Shutdown();
    EXPECT_EQ(TakeLog(), release);
    EXPECT_FALSE(renderer->IsInitialized());
    EXPECT_EQ(Steps(), steps);
    renderer.reset();
    EXPECT_EQ(TakeLog(), release);
}

// Compares every pixel with the lens at its place, except the ring in which the weight falls to 0.
TEST_F(DirectModeTest, TheImageIsSeenThroughTheLensAndTheRestIsBlack)
{
    Bytes pixels(std::size_t{4} * WIDTH * HEIGHT);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        const std::size_t x = i / 4 % WIDTH;
        const double u = (static_cast<double>(x % (WIDTH / 2)) + 0.5) / (WIDTH / 2);
        const double v = (static_cast<double>(i / 4 / WIDTH) + 0.5) / HEIGHT;
        const double value = i % 4 == 3 ? 0.3 : Image(2 - i % 4, x < WIDTH / 2 ? 0 : 1, u, v);
        pixels[i] = static_cast<std::uint8_t>(std::lround(255.0 * value));
    }
    image = MakeTexture(D3D11_BIND_SHADER_RESOURCE, pixels);
    SubmitFirst(*renderer);
    Bytes seen = Read(surface.Get());

    const plain::Lens lens = plain::HeadsetLens();
    int inside = 0;
    int outside = 0;
    double worst = 0.0;
    for (std::size_t i = 0; i < std::size_t{WIDTH} * HEIGHT; ++i)
    {
        const int eye = i % WIDTH < WIDTH / 2 ? 0 : 1;
        const auto x =
            static_cast<float>((static_cast<double>(i % (WIDTH / 2)) + 0.5) / (WIDTH / 4) - 1.0);
        const auto y =
            static_cast<float>((static_cast<double>(i / WIDTH) + 0.5) * 2 / HEIGHT - 1.0);
        const float r = std::hypot(eye == 1 ? x - 0.012436205f : x + 0.012436205f, y * 1.125f);
        const double weight = r < 0.983f ? 1.0 : 0.0;
        inside += r < 0.983f ? 1 : 0;
        outside += r > 1.008f ? 1 : 0;
        for (std::size_t color = 0; color < 3 && (r < 0.983f || r > 1.008f); ++color)
        {
            const plain::Sample at = plain::Distort(lens, x, y, eye, color);
            const double expected = weight * 255.0 * Image(color, eye, at.u, at.v);
            worst = std::max(worst, std::abs(seen[4 * i + 2 - color] - expected));
        }
        EXPECT_EQ(seen[4 * i + 3], 255u);
        std::swap(seen[4 * i], seen[4 * i + 2]); // the picture file has the other order of colours
    }
    stbi_write_png(QLT_PICTURE, WIDTH, HEIGHT, 4, seen.data(), 4 * WIDTH);
    RecordProperty("worst", std::to_string(worst));
    EXPECT_LE(worst, 2.0);
    EXPECT_GT(inside, 600000);
    EXPECT_GT(outside, 200000);
}

TEST_F(DirectModeTest, EveryStepMayFailAndIsTriedAgain)
{
    const Log steps = Steps();
    Log firstFrame = steps;
    firstFrame.insert(firstFrame.end(), frame.begin(), frame.end());
    renderer.reset();
    TakeLog();
    for (std::size_t step = 0; step < steps.size(); ++step)
    {
        SCOPED_TRACE(steps[step]);
        const Log untilThen(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(step) + 1);
        NvidiaRenderer tried;
        failing = step;
        SubmitFirst(tried);
        EXPECT_EQ(TakeLog(), untilThen);
        EXPECT_FALSE(tried.IsInitialized());
        tried.Shutdown();
        EXPECT_EQ(TakeLog(), Log{}); // the display stays taken
        failing = NEVER;
        SubmitFirst(tried);
        EXPECT_EQ(TakeLog(), firstFrame);
        EXPECT_TRUE(tried.IsInitialized());
        failing = step;
        EXPECT_FALSE(tried.Initialize()); // it fails again when the engine calls it
        EXPECT_EQ(TakeLog(), untilThen);
        failing = NEVER;
        // The renderer still has the objects of the successful attempt.
        tried.Submit(device.Get(), image.Get());
        EXPECT_EQ(TakeLog(), frame);
        tried.Shutdown();
        TakeLog();
        failing = step;
        SubmitFirst(tried); // the renderer is destroyed after the failed attempt
        TakeLog();
    }
}

TEST_F(DirectModeTest, AFailedAllocationIsAFailedStep)
{
    Steps(); // from here on, everything that the library allocates once exists
    renderer->Shutdown();
    LibraryMemory memory;
    std::set<std::size_t> failures; // the index is the number of started steps
    for (std::size_t allocation = 0; !renderer->IsInitialized(); ++allocation)
    {
        TakeLog();
        LibraryMemory::left = allocation;
        SubmitFirst(*renderer);
        failures.insert(log.size());
    }
    // The list of modes and the two meshes need allocations. After them the frame is shown.
    EXPECT_EQ(failures, (std::set<std::size_t>{4, 10, 12, log.size()}));
}

TEST_F(DirectModeTest, EveryObjectHasOnlyTheReferenceFromItsCreation)
{
    const CD3D11_SAMPLER_DESC description(D3D11_DEFAULT);
    ComPtr<ID3D11SamplerState> sampler;
    device->CreateSamplerState(&description, sampler.GetAddressOf());
    FunctionTable functions(sampler.Get());
    int references = 0;
    functions.Watch(1, [&](FunctionTable::Arguments)
                    { return ++references, std::optional<std::int32_t>(); });
    deviceFunctions->Watch(23,
                           [&](FunctionTable::Arguments a) -> std::optional<std::int32_t>
                           {
                               sampler.CopyTo(reinterpret_cast<ID3D11SamplerState**>(a[2]));
                               return S_OK;
                           });
    device->AddRef();
    renderer->Submit(device.Get(), nullptr); // Wine draws with its own tables only
    EXPECT_TRUE(renderer->IsInitialized());
    EXPECT_EQ(references, 1);
    renderer.reset();
}

TEST_F(DirectModeTest, WithoutADisplayOrAModeNothingIsDrawn)
{
    driver.displays = 0;
    renderer->Submit(device.Get(), image.Get());
    EXPECT_EQ(TakeLog().back(), "enumerateDisplays 37957 0 1");
    driver.displays = 1;
    driver.modes = 0;
    renderer->Submit(device.Get(), image.Get());
    EXPECT_EQ(TakeLog().back(), "enumerateModes D0 0 0 0");
    EXPECT_FALSE(renderer->IsInitialized());
    driver.modes = 1;
    driver.pixelFormat = 20; // a format that is not listed
    SubmitFirst(*renderer);
    EXPECT_EQ(log[8], "CreateRenderTargetView 0 4 0");
    EXPECT_TRUE(renderer->IsInitialized());
}

TEST_F(DirectModeTest, AFrameThatCannotBeShownIsDropped)
{
    renderer->Submit(nullptr, image.Get());
    EXPECT_EQ(TakeLog(), Log{"enumerateDisplays 37957 0 1"});
    device->AddRef();
    renderer->Submit(device.Get(), nullptr); // it still initialises
    EXPECT_TRUE(renderer->IsInitialized());
    TakeLog();
    EXPECT_TRUE(IsWanted(frameEvent)); // no call has waited
    SetEvent(frameEvent);
    failing = 1;
    renderer->Submit(device.Get(), image.Get());
    EXPECT_EQ(TakeLog(), Log(frame.begin(), frame.begin() + 2));
    EXPECT_FALSE(IsWanted(frameEvent));
    failing = 0; // the value of the event, which nobody checks
    SetEvent(frameEvent);
    renderer->Submit(device.Get(), image.Get());
    EXPECT_EQ(TakeLog(), frame);
}

TEST_F(DirectModeTest, AFrameWaitsForTheDisplayWithoutATimeLimit)
{
    SubmitFirst(*renderer);
    TakeLog();
    EXPECT_TRUE(IsWanted(frameEvent)); // the call returns after that
    auto submit =
        std::async(std::launch::async, [this] { renderer->Submit(device.Get(), image.Get()); });
    EXPECT_EQ(submit.wait_for(std::chrono::seconds(1)), std::future_status::timeout);
    EXPECT_EQ(log, Log{frame[0]});
    SetEvent(frameEvent);
    submit.get();
    EXPECT_EQ(log, frame);
}

TEST_F(DirectModeTest, TheDeviceIsReleasedOnceAndAFailedAttemptKeepsTheContext)
{
    const ULONG devices = CountReferences(device);
    const ULONG contexts = CountReferences(context);
    driver.displays = 0;
    for (const ULONG attempts : {1u, 2u, 3u})
    {
        renderer->Submit(device.Get(), image.Get());
        EXPECT_EQ(CountReferences(device), devices);
        EXPECT_EQ(CountReferences(context), contexts + attempts);
    }
    driver.displays = 1;
    device->AddRef();
    device->AddRef();
    renderer->Submit(device.Get(), image.Get());
    EXPECT_EQ(CountReferences(context), contexts + 4);
    renderer->Shutdown();
    EXPECT_EQ(CountReferences(context), contexts + 3);
    EXPECT_EQ(CountReferences(device), devices + 1);
    device->Release();
}

TEST_F(DirectModeTest, CopiesShareOneStateAndTheFirstDestroyedShutsDown)
{
    auto copy = std::make_unique<NvidiaRenderer>(*renderer);
    auto assigned = std::make_unique<NvidiaRenderer>();
    *assigned = *copy;
    *copy = *renderer; // both share one state already
    SubmitFirst(*renderer);
    EXPECT_TRUE(copy->IsInitialized());
    TakeLog();
    copy.reset();
    EXPECT_EQ(TakeLog(), release);
    EXPECT_FALSE(renderer->IsInitialized());
    SubmitFirst(*assigned);
    EXPECT_TRUE(renderer->IsInitialized());
    failing = TakeLog().size() - frame.size() - 1; // the last step of the initialisation
    renderer->Shutdown();
    TakeLog();
    SubmitFirst(*renderer);
    // The objects of the earlier steps have released it, too.
    const ULONG references = CountReferences(device);
    assigned.reset();
    EXPECT_EQ(CountReferences(device), references);
    renderer.reset(); // the last one frees it
    EXPECT_LT(CountReferences(device), references);
}

// A fake driver lies beside the program. The test has its own process, because the library looks
// for the driver once.
TEST(DirectModeDeathTest, ADriverBesideTheProgramIsNotLoaded)
{
    EXPECT_EXIT(
        {
            wchar_t path[MAX_PATH];
            GetSystemDirectoryW(path, MAX_PATH);
            // Left over from a killed test.
            DeleteFileW(std::wstring(path).append(L"\\nvapi64.dll").c_str());
            NvidiaRenderer renderer;
            renderer.Submit(nullptr, nullptr);
            const bool found = GetModuleHandleW(L"nvapi64.dll") != nullptr;
            const bool isThere = LoadLibraryW(L"nvapi64.dll") != nullptr;
            std::_Exit(!found && isThere && !renderer.IsInitialized() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
