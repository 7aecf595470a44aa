#include <qlt/Render/NvidiaRenderer.h>

#include <gtest/gtest.h>

// On every system, with a driver or without one. Engines count on the size.
TEST(NvidiaRendererTest, WithoutADeviceNothingHappens)
{
    EXPECT_EQ(sizeof(NvidiaRenderer), sizeof(void*));
    NvidiaRenderer renderer;
    EXPECT_FALSE(renderer.Initialize());
    renderer.Submit(nullptr, nullptr);
    EXPECT_FALSE(renderer.IsInitialized());
    NvidiaRenderer copy(renderer);
    copy = renderer;
    copy.Shutdown();
    EXPECT_FALSE(copy.IsInitialized());
}
