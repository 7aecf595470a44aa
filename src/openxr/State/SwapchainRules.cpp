#include "State/SwapchainRules.h"

#include <algorithm>

namespace qltxr
{

namespace
{

constexpr XrSwapchainCreateFlags CREATE_FLAGS =
    XR_SWAPCHAIN_CREATE_PROTECTED_CONTENT_BIT | XR_SWAPCHAIN_CREATE_STATIC_IMAGE_BIT;
constexpr XrSwapchainUsageFlags USAGE_FLAGS =
    XR_SWAPCHAIN_USAGE_COLOR_ATTACHMENT_BIT | XR_SWAPCHAIN_USAGE_DEPTH_STENCIL_ATTACHMENT_BIT |
    XR_SWAPCHAIN_USAGE_UNORDERED_ACCESS_BIT | XR_SWAPCHAIN_USAGE_TRANSFER_SRC_BIT |
    XR_SWAPCHAIN_USAGE_TRANSFER_DST_BIT | XR_SWAPCHAIN_USAGE_SAMPLED_BIT |
    XR_SWAPCHAIN_USAGE_MUTABLE_FORMAT_BIT;

bool IsStatic(const XrSwapchainCreateInfo& info)
{
    return (info.createFlags & XR_SWAPCHAIN_CREATE_STATIC_IMAGE_BIT) != 0;
}

std::uint32_t FullMipCount(const XrSwapchainCreateInfo& info)
{
    std::uint32_t count = 0;
    for (std::uint32_t size = std::max(info.width, info.height); size > 0; size /= 2)
    {
        ++count;
    }
    return count;
}

} // namespace

void RequireCreateInfo(const XrSwapchainCreateInfo& info, const std::vector<std::int64_t>& formats)
{
    const auto isSize = [](std::uint32_t size) { return size > 0 && size <= MAX_SWAPCHAIN_SIZE; };
    Require((info.createFlags & ~CREATE_FLAGS) == 0 && (info.usageFlags & ~USAGE_FLAGS) == 0 &&
                isSize(info.width) && isSize(info.height) && info.sampleCount > 0 &&
                info.arraySize > 0 && info.mipCount > 0 &&
                (info.faceCount == 1 || info.faceCount == 6),
            XR_ERROR_VALIDATION_FAILURE);
    Require(std::find(formats.begin(), formats.end(), info.format) != formats.end(),
            XR_ERROR_SWAPCHAIN_FORMAT_UNSUPPORTED);
    const bool isProtected = (info.createFlags & XR_SWAPCHAIN_CREATE_PROTECTED_CONTENT_BIT) != 0;
    Require(!isProtected && info.faceCount == 1 && info.sampleCount == 1 &&
                info.arraySize <= MAX_SWAPCHAIN_LAYERS && info.mipCount <= FullMipCount(info),
            XR_ERROR_FEATURE_UNSUPPORTED);
}

std::uint32_t ImageCount(const XrSwapchainCreateInfo& info)
{
    return IsStatic(info) ? 1 : SWAPCHAIN_IMAGES;
}

SwapchainImages::SwapchainImages(const XrSwapchainCreateInfo& info)
    : mCount(ImageCount(info))
    , mIsStatic(IsStatic(info))
{
}

std::uint32_t SwapchainImages::Acquire()
{
    const bool used = mIsStatic && mNewest != NONE;
    Require(mAcquired.size() < mCount && !used, XR_ERROR_CALL_ORDER_INVALID);
    const std::uint32_t image = mNext;
    mAcquired.push_back(image);
    mNext = (mNext + 1) % mCount;
    return image;
}

std::uint32_t SwapchainImages::NextToWait() const
{
    Require(!mAcquired.empty() && !mWaited, XR_ERROR_CALL_ORDER_INVALID);
    return mAcquired.front();
}

std::uint32_t SwapchainImages::NextToRelease() const
{
    Require(mWaited, XR_ERROR_CALL_ORDER_INVALID);
    return mAcquired.front();
}

void SwapchainImages::Release()
{
    mNewest = NextToRelease();
    mAcquired.pop_front();
    mWaited = false;
}

} // namespace qltxr
