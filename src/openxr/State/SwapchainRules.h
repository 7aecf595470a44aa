// The rules for the creation of a swapchain, and the order in which a program uses the images. The
// caller serialises all operations.
#pragma once

#include "State/Failure.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace qltxr
{

constexpr std::uint32_t MAX_SWAPCHAIN_SIZE = 4096; // the largest width and height in pixels
constexpr std::uint32_t MAX_SWAPCHAIN_LAYERS = 256;
constexpr std::uint32_t SWAPCHAIN_IMAGES = 3;

void RequireCreateInfo(const XrSwapchainCreateInfo& info, const std::vector<std::int64_t>& formats);

/// Returns 1 for a static image, and otherwise SWAPCHAIN_IMAGES.
std::uint32_t ImageCount(const XrSwapchainCreateInfo& info);

/// The images that the program holds. The program acquires them in a circle. It waits for them and
/// releases them in the same order.
class SwapchainImages
{
public:
    static constexpr std::uint32_t NONE = ~std::uint32_t{0};

    explicit SwapchainImages(const XrSwapchainCreateInfo& info);

    std::uint32_t Acquire();

    /// The image of the next wait, which is the oldest acquired image. Call Waited when the wait
    /// has succeeded.
    std::uint32_t NextToWait() const;
    void Waited() { mWaited = true; }

    /// The image of the next release. After the release, layers show this image.
    std::uint32_t NextToRelease() const;
    void Release();

    /// The image that was released last, or NONE.
    std::uint32_t Newest() const { return mNewest; }

    std::uint32_t Count() const { return mCount; }

private:
    const std::uint32_t mCount;
    const bool mIsStatic;
    std::deque<std::uint32_t> mAcquired; // the oldest first
    bool mWaited = false;                // the program has waited for the oldest image
    std::uint32_t mNext = 0;
    std::uint32_t mNewest = NONE;
};

} // namespace qltxr
