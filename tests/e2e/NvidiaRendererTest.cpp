#include <qlt/Render/NvidiaRenderer.h>

#include <gtest/gtest.h>

// This holds on every system, with a driver and without one. Engines rely on the size.
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
