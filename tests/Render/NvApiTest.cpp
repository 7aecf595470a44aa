#include "Render/NvApi.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{

using qlt::NvApi;

constexpr std::uint32_t IDENTIFIERS[] = {0x602F60D8, 0x79C3FE22, 0xC4E4EFDA, 0x86BDB518,
                                         0x56DF9D51, 0xF64D320F, 0x8C84A92A, 0x2523CAB6};

/// The script and the log of the driver. They are global, because the entry points are plain
/// functions.
struct
{
    std::uint32_t missing = 0;
    NvApi::Status statuses[2] = {}; // the arguments of the calls, in their order
    std::uint32_t counts[2] = {};   // the status that the calls return
    std::string calls;
    int initializations = 0;
} driver;

NvApi::Status Initialize()
{
    ++driver.initializations;
    return -1;
}

/// The addresses of the entry points are their identifiers. Only the first one is called.
void* Query(std::uint32_t identifier)
{
    if (identifier == 0x0150E828 && driver.missing != identifier)
    {
        return reinterpret_cast<void*>(Initialize);
    }
    return identifier == driver.missing ? nullptr
                                        : reinterpret_cast<void*>(std::uintptr_t{identifier});
}

/// Notes a call and returns its index. Each row makes two calls.
std::size_t Record(const char* name, std::uint32_t first, std::uint32_t* count, const void* array,
                   std::uint32_t last)
{
    char text[80];
    std::snprintf(text, sizeof text, "%s(%X, %u, %s, %u)", name, first, *count,
                  array == nullptr ? "none" : "array", last);
    const std::size_t call = driver.calls.empty() ? 0 : 1;
    driver.calls += (call == 0 ? "" : " ") + std::string(text);
    *count = driver.counts[call];
    return call;
}

NvApi::Status EnumerateDisplays(std::uint32_t vendorId, std::uint32_t* count,
                                NvApi::Display* displays, std::uint32_t one)
{
    const std::size_t call = Record("displays", vendorId, count, displays, one);
    for (std::uint32_t i = 0; displays != nullptr && i < *count; ++i)
    {
        displays[i].bytes[15] = static_cast<std::uint8_t>(0xD0 + i);
    }
    return driver.statuses[call];
}

NvApi::Status EnumerateModes(NvApi::Display display, std::uint32_t* count, NvApi::Mode* modes,
                             std::uint32_t zero)
{
    const std::uint32_t room = *count;
    const std::size_t call = Record("modes", display.bytes[15], count, modes, zero);
    for (std::uint32_t i = 0; modes != nullptr && i < room; ++i)
    {
        EXPECT_EQ(modes[i].version, 0x10020u);
        modes[i].pixelFormat = 21 + i;
    }
    return driver.statuses[call];
}

NvApi Driver(NvApi::Status first, std::uint32_t firstCount, NvApi::Status second = 0,
             std::uint32_t secondCount = 0)
{
    driver = {0, {first, second}, {firstCount, secondCount}, ""};
    NvApi api = NvApi::Load(Query);
    api.enumerateDisplays = EnumerateDisplays;
    api.enumerateModes = EnumerateModes;
    return api;
}

} // namespace

TEST(NvApiTest, IsInitialisedOnceAndCompleteOnlyWithEveryOtherEntryPoint)
{
    driver = {};
    driver.missing = 0x0150E828;
    EXPECT_TRUE(NvApi::Load(Query).complete);
    EXPECT_EQ(driver.initializations, 0);
    driver.missing = 0;
    const NvApi api = NvApi::Load(Query);
    EXPECT_TRUE(api.complete);
    EXPECT_EQ(driver.initializations, 1);
    const std::uintptr_t entries[] = {reinterpret_cast<std::uintptr_t>(api.enumerateDisplays),
                                      reinterpret_cast<std::uintptr_t>(api.enumerateModes),
                                      reinterpret_cast<std::uintptr_t>(api.acquireDisplay),
                                      reinterpret_cast<std::uintptr_t>(api.createSurface),
                                      reinterpret_cast<std::uintptr_t>(api.setMode),
                                      reinterpret_cast<std::uintptr_t>(api.getFrameEvent),
                                      reinterpret_cast<std::uintptr_t>(api.present),
                                      reinterpret_cast<std::uintptr_t>(api.releaseDisplay)};
    for (std::size_t i = 0; i < std::size(IDENTIFIERS); ++i)
    {
        EXPECT_EQ(entries[i], IDENTIFIERS[i]);
        driver.missing = IDENTIFIERS[i];
        const NvApi incomplete = NvApi::Load(Query);
        EXPECT_FALSE(incomplete.complete);
        EXPECT_FALSE(incomplete.HasDisplay(0x9445)); // it calls no function of the driver
    }
    EXPECT_FALSE(NvApi::Load(nullptr).HasDisplay(0x9445));
}

TEST(NvApiTest, TheFirstDisplayIsChosen)
{
    const struct
    {
        NvApi::Status status;
        std::uint32_t count;
        bool found;
    } rows[] = {{0, 1, true}, {0, 3, true}, {0, 0, false}, {-6, 1, false}, {-6, 0, false}};
    for (const auto& row : rows)
    {
        NvApi::Display display{};
        EXPECT_EQ(Driver(row.status, row.count).HasDisplay(0x9445), row.found);
        EXPECT_EQ(driver.calls, "displays(9445, 0, none, 1)");
        EXPECT_EQ(Driver(row.status, row.count).FindDisplay(0x9445, display), row.found);
        EXPECT_EQ(driver.calls, "displays(9445, 4, array, 1)");
        EXPECT_EQ(display.bytes[15], row.found ? 0xD0 : 0);
    }
}

TEST(NvApiTest, TheFirstModeIsChosen)
{
    const std::string counting = "modes(AB, 0, none, 0)";
    const struct
    {
        NvApi::Status statuses[2];
        std::uint32_t counts[2];
        bool found;
        std::string calls;
    } rows[] = {
        {{0, 0}, {1, 1}, true, counting + " modes(AB, 1, array, 0)"},
        {{0, 0}, {3, 3}, true, counting + " modes(AB, 3, array, 0)"},
        {{0, 0}, {1024, 1024}, true, counting + " modes(AB, 1024, array, 0)"},
        {{0, 0}, {1025, 1}, false, counting},
        {{0, 0}, {1, 1025}, false, counting + " modes(AB, 1, array, 0)"},
        {{0, 0}, {3, 0}, false, counting + " modes(AB, 3, array, 0)"},
        {{0, -1}, {2, 2}, false, counting + " modes(AB, 2, array, 0)"},
        {{-1, 0}, {1, 1}, false, counting},
        {{0, 0}, {0, 1}, false, counting},
    };
    NvApi::Display display{};
    display.bytes[15] = 0xAB;
    for (const auto& row : rows)
    {
        const NvApi api = Driver(row.statuses[0], row.counts[0], row.statuses[1], row.counts[1]);
        NvApi::Mode mode{};
        EXPECT_EQ(api.FindMode(display, mode), row.found);
        EXPECT_EQ(driver.calls, row.calls);
        EXPECT_EQ(mode.pixelFormat, row.found ? 21u : 0u);
    }
}

TEST(NvApiTest, APixelFormatHasItsSurfaceFormatOrNone)
{
    const std::uint32_t rows[][2] = {{21, 87}, {22, 88}, {31, 24}, {32, 28}, {113, 10},
                                     {0, 0},   {20, 0},  {23, 0},  {114, 0}, {0xFFFFFFFF, 0}};
    for (const auto& [pixelFormat, surfaceFormat] : rows)
    {
        EXPECT_EQ(qlt::SurfaceFormat({0x10020, {}, pixelFormat, {}}), surfaceFormat) << pixelFormat;
    }
}
