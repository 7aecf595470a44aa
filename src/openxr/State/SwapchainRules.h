// What a program may ask of a swapchain, and the order in which it uses the images. The caller
// serialises all operations.
#pragma once

#include "State/Failure.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace qltxr
{

constexpr std::uint32_t MAX_SWAPCHAIN_SIZE = 4096; // pixels, width and height
constexpr std::uint32_t MAX_SWAPCHAIN_LAYERS = 256;
constexpr std::uint32_t SWAPCHAIN_IMAGES = 3;

void RequireCreateInfo(const XrSwapchainCreateInfo& info, const std::vector<std::int64_t>& formats);

/// 1 for a static image, or else SWAPCHAIN_IMAGES.
std::uint32_t ImageCount(const XrSwapchainCreateInfo& info);

/// Which images the program has: acquired in a circle, then waited for and released in the order in
/// which they were acquired.
class SwapchainImages
{
public:
    static constexpr std::uint32_t NONE = ~std::uint32_t{0};

    explicit SwapchainImages(const XrSwapchainCreateInfo& info);

    std::uint32_t Acquire();

    /// The image that a wait is for: the oldest acquired one. Waited says that the wait succeeded.
    std::uint32_t NextToWait() const;
    void Waited() { mWaited = true; }

    /// The image that a release is for, and that layers show from then on.
    std::uint32_t NextToRelease() const;
    void Release();

    /// The most recently released image; NONE before.
    std::uint32_t Newest() const { return mNewest; }

    std::uint32_t Count() const { return mCount; }

private:
    const std::uint32_t mCount;
    const bool mIsStatic;
    std::deque<std::uint32_t> mAcquired; // oldest first
    bool mWaited = false;                // the oldest of them
    std::uint32_t mNext = 0;
    std::uint32_t mNewest = NONE;
};

} // namespace qltxr
